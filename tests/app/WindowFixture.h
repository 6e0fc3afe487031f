#pragma once

#include "ScriptedPrompts.h"
#include "app/MainWindow.h"
#include "control/TextEditorCtrl.h"
#include "platform/qt/QtPlatform.h"
#include "platform/qt/widget/XmlEditorWidget.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QKeyEvent>
#include <QPointer>
#include <QSettings>
#include <QTemporaryDir>
#include <gtest/gtest.h>

/// A window of the program in a folder of its own, with files and somebody who types.
class WindowFixture : public testing::Test {
  protected:
    ~WindowFixture() override { qDeleteAll(tavrin::app::MainWindow::all()); }

    [[nodiscard]] QString path(const QString& name) const { return folder.filePath(name); }
    QString write(const QString& name, const QByteArray& bytes) const {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(bytes), bytes.size());
        return path(name);
    }
    [[nodiscard]] QByteArray read(const QString& name) const {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
        return file.readAll();
    }
    void opened(const QString& file) { ASSERT_TRUE(window->openFile(file)); }
    static void type(tavrin::app::MainWindow& into, const QString& text) {
        for (const QChar ch : text) {
            QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(ch));
            QApplication::sendEvent(into.editor().focusProxy(), &press);
        }
    }
    void type(const QString& text) { type(*window, text); }
    [[nodiscard]] tavrin::qt::XmlEditorWidget& editor() { return window->editor(); }
    [[nodiscard]] QString text() const { return window->editor().text(); }
    /// What every window shares; journals and backups lie below "state".
    [[nodiscard]] tavrin::app::Services services() {
        return {platform,
                settings,
                prompts,
                nullptr,
                path("state/journals").toStdString(),
                path("state/backups").toStdString(),
                path("state/open").toStdString()};
    }

    QTemporaryDir folder;
    tavrin::qt::QtPlatform platform{folder.filePath("settings.ini")};
    QSettings settings{folder.filePath("window.ini"), QSettings::IniFormat};
    ScriptedPrompts prompts;
    QPointer<tavrin::app::MainWindow> window = new tavrin::app::MainWindow(services());
};
