#include "platform/qt/QtPlatform.h"
#include "platform/qt/widget/XmlEditorWidget.h"

#include <QApplication>

#include <cstdio>

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    tavrin::qt::QtPlatform platform("host-settings.ini");
    tavrin::qt::XmlEditorWidget editor(platform);
    editor.setText("<greeting>hello</greeting>");
    editor.show();
    QApplication::processEvents();
    std::puts(qPrintable(editor.text()));
}
