#include "AppIcon.h"
#include "CommandLine.h"
#include "DialogPrompts.h"
#include "EditorApplication.h"
#include "Encodings.h"
#include "FileDocument.h"
#include "MainWindow.h"
#include "SchemaService.h"
#include "TerminalPrompts.h"
#include "control/TextEditorCtrl.h"
#include "platform/qt/PageSetup.h"
#include "platform/qt/QtPlatform.h"
#include "platform/qt/QtPrintJob.h"
#include "platform/qt/widget/XmlEditorWidget.h"
#include "view/EditorSettings.h"

#include <QDir>
#include <QPixmap>
#include <QPointer>
#include <QSettings>
#include <QTemporaryDir>

#include <cstdio>
#include <filesystem>
#include <memory>

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
    bool opened = line.files.isEmpty() || window->openFile(line.files.front());
    while (window->isLoading())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    opened = opened && window->document().path().isEmpty() == line.files.isEmpty();
    QApplication::processEvents();
    const bool saved = opened && window->grab().save(line.output, "PNG");
    if (opened && !saved)
        print(stderr, QString("“%1” could not be written.\n").arg(line.output));
    window->close();
    return saved ? 0 : 1;
}

/// As the program's own Print would, with this user's colours and page setup.
int printFile(const CommandLine& line) {
    qt::QtPlatform platform;
    qt::XmlEditorWidget editor(platform);
    FileDocument document(editor.control().getBuffer());
    const FileDocument::LoadResult result = document.load(line.files.front());
    if (result.status != FileDocument::LoadResult::Done) {
        print(stderr, result.error + "\n");
        return 1;
    }
    if (result.decoded.invalidCount > 0)
        print(stderr,
              QString("“%1” holds bytes that are not valid %2; they are printed as �.\n")
                  .arg(document.displayName(), encodingLabel(editor.control().getBuffer().getEncoding())));
    editor.setDocumentTitle(document.displayName());
    const auto job =
        std::make_shared<qt::PdfJob>(platform, line.output, qt::readPageLayout(platform.settings()));
    const bool printed = editor.control().Print(job);
    if (!printed)
        print(stderr, job->error() + "\n");
    return printed ? 0 : 1;
}

/// What belongs to this user and machine and must survive a crash.
std::filesystem::path stateFolder() {
    const QString set = qEnvironmentVariable("XDG_STATE_HOME");
    const QString base = QDir::isAbsolutePath(set) ? set : QDir::home().filePath(".local/state");
    return (base + "/tavrin-xml-editor").toStdString();
}

int edit(const CommandLine& line) {
    qt::QtPlatform platform;
    platform.registry().createKey(settings::findKey);
    QSettings settings(platform.settingsStore().fileName(), platform.settingsStore().format());
    DialogPrompts prompts;
    SchemaService schemas(platform.settings());
    auto* window = new MainWindow({platform, settings, prompts, &schemas, stateFolder() / "journals",
                                   stateFolder() / "backups", stateFolder() / "open"});
    window->show();
    platform.setSettingsReporter(
        [&](const QString& problem) { prompts.showError(QApplication::activeWindow(), problem); });
    window->openFiles(line.files);
    window->offerBackups();
    window->offerRecovery();
    const int result = QApplication::exec();
    platform.setSettingsReporter({});
    // Windows that are still there (the session ended) go before what they share.
    qDeleteAll(MainWindow::all());
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
    if (given.contains("--screenshot") || given.contains("--print"))
        qputenv("QT_QPA_PLATFORM", "offscreen");

    const EditorApplication application(argc, argv);
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
    case CommandLine::Print:
        return printFile(line);
    default:
        return edit(line);
    }
}
