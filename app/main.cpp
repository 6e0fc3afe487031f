#include "AppIcon.h"
#include "CommandLine.h"
#include "DialogPrompts.h"
#include "MainWindow.h"
#include "TerminalPrompts.h"
#include "platform/qt/QtPlatform.h"
#include "platform/qt/widget/XmlEditorWidget.h"

#include <QApplication>
#include <QPixmap>
#include <QSettings>
#include <QTemporaryDir>

#include <cstdio>

using namespace tavrin;
using namespace tavrin::app;

namespace {

void print(std::FILE* stream, const QString& text) {
    std::fputs(text.toLocal8Bit().constData(), stream);
}

/// The window as a new user would see it: with the settings' defaults, whatever this user chose.
int takeScreenshot(const CommandLine& line) {
    const QTemporaryDir folder;
    qt::QtPlatform platform(folder.filePath("settings.ini"));
    QSettings settings(folder.filePath("window.ini"), QSettings::IniFormat);
    TerminalPrompts prompts;
    auto* window = new MainWindow({platform, settings, prompts});
    window->show();
    const bool opened = line.files.isEmpty() || window->openFile(line.files.front());
    QApplication::processEvents();
    const bool saved = opened && window->grab().save(line.picture, "PNG");
    if (opened && !saved)
        print(stderr, QString("“%1” could not be written.\n").arg(line.picture));
    window->close();
    return saved ? 0 : 1;
}

int edit(const CommandLine& line) {
    qt::QtPlatform platform;
    QSettings settings(platform.settingsStore().fileName(), platform.settingsStore().format());
    DialogPrompts prompts;
    auto* window = new MainWindow({platform, settings, prompts});
    window->show();
    platform.setSettingsReporter(
        [&](const QString& problem) { prompts.showError(QApplication::activeWindow(), problem); });
    window->openFiles(line.files);
    const int result = QApplication::exec();
    platform.setSettingsReporter({});
    // Windows that are still there (the session ended) go before what they share.
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (qobject_cast<MainWindow*>(widget))
            delete widget;
    return result;
}

} // namespace

int main(int argc, char** argv) {
    QStringList given;
    for (int i = 1; i < argc; ++i)
        given += QString::fromLocal8Bit(argv[i]);
    // What needs no display must not fail for want of one.
    switch (parseCommandLine(given).task) {
    case CommandLine::Help:
        print(stdout, usage());
        return 0;
    case CommandLine::Version:
        print(stdout, "tavrin-xml-editor " TAVRIN_VERSION "\n");
        return 0;
    default:
        break;
    }
    if (given.contains("--screenshot"))
        qputenv("QT_QPA_PLATFORM", "offscreen");

    QApplication application(argc, argv);
    QApplication::setApplicationName("tavrin-xml-editor");
    QApplication::setApplicationDisplayName("Tavrin XML Editor");
    QApplication::setApplicationVersion(TAVRIN_VERSION);
    QApplication::setDesktopFileName("tavrin-xml-editor");
    QApplication::setWindowIcon(appIcon());

    // Qt has taken its own options out by now.
    const CommandLine line = parseCommandLine(QApplication::arguments().mid(1));
    switch (line.task) {
    case CommandLine::Error:
        print(stderr, line.error + "\n\n" + usage());
        return 2;
    case CommandLine::Screenshot:
        return takeScreenshot(line);
    default:
        return edit(line);
    }
}
