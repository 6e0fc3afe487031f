#include "Editor.h"
#include "Samples.h"
#include "control/SchemaDocument.h"
#include "control/TextEditorCtrl.h"
#include "files/FileReplacement.h"
#include "files/PosixFile.h"
#include "files/TextFileContents.h"
#include "platform/qt/QtPlatform.h"
#include "platform/qt/widget/XmlEditorWidget.h"
#include "platform/schema/SchemaSources.h"
#include "platform/ui/CFindReplaceDialog.h"
#include "view/EditorSettings.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>

namespace tavrin::bench {

namespace {

class OurEditor final : public Editor {
  public:
    OurEditor() {
        platform_.settings().setStringValue(settings::section, settings::fontFamily, u"Liberation Mono");
        platform_.settings().setIntValue(settings::section, settings::fontSize, 10);
        editor_.settingsChanged();
        schemas_.bind(TAVRIN_BENCH_SCHEMA);
        schemas_.update();
        while (!library_.isIdle())
            thread_.waitAndRun();
        control().setSchemaSource(&schemas_);
    }

    QWidget& widget() override { return editor_; }
    QWidget& page() override { return *static_cast<QAbstractScrollArea&>(keyboard()).viewport(); }
    QWidget& keyboard() override { return *editor_.focusProxy(); }

    void load(const QString& path) override {
        if (!buffer().loadFile(path.toStdU16String().c_str()))
            std::abort();
        editor_.documentLoaded();
    }
    void colourAll() override {
        for (int line = 0; line < lineCount(); ++line)
            (void)buffer().getLineFormats(line);
    }
    int lineCount() override { return buffer().getLineCount(); }
    void goTo(int line, int column) override { editor_.gotoLineCol(line, column); }
    void goToEnd() override { pressKey(keyboard(), Qt::Key_End, Qt::ControlModifier); }
    void pageDown() override { pressKey(keyboard(), Qt::Key_PageDown, Qt::NoModifier); }
    bool find(const QString& text, bool matchCase) override {
        control().gotoLineCol(0, 0);
        control().updatePivot();
        CFindReplaceDialog::send(
            control(), {FR_FINDNEXT | FR_DOWN | (matchCase ? FR_MATCHCASE : 0U), text.toStdU16String(), {}});
        return control().hasSelection();
    }
    void replaceAll(const QString& text, const QString& with) override {
        CFindReplaceDialog::send(
            control(), {FR_REPLACEALL | FR_MATCHCASE, text.toStdU16String(), with.toStdU16String()});
    }
    void undo() override { editor_.undo(); }
    bool write(const QString& path) override {
        PosixFile file;
        std::uint64_t size = 0;
        const auto put = [&](ByteSink::Parts parts) {
            const std::uint64_t from = size;
            for (const std::string_view part : parts)
                size += part.size();
            return !file.reserve(from, size - from) && !file.write(parts);
        };
        if (file.open(path.toStdString(), O_WRONLY | O_CREAT | O_TRUNC, 0666) ||
            !textFileContents(buffer())(put) || file.close())
            std::abort();
        return true;
    }
    void save(const QString& path) override {
        const std::filesystem::path file = path.toStdString();
        if (FileReplacement(file.parent_path() / "backups").replace(file, textFileContents(buffer())))
            std::abort();
    }

    std::optional<double> showCompletion() override {
        double time = 0;
        const auto start = std::chrono::steady_clock::now();
        // The list runs an event loop of its own, inside the key press.
        QTimer::singleShot(0, &editor_, [&] {
            for (QWidget* list : QApplication::topLevelWidgets()) {
                if (list == editor_.window() || !list->isVisible())
                    continue;
                list->repaint();
                time = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
                           .count();
            }
            pressKey(keyboard(), Qt::Key_Escape, Qt::NoModifier);
        });
        pressKey(keyboard(), Qt::Key_Less, Qt::NoModifier, "<");
        if (time == 0)
            std::fprintf(stderr, "no list appeared\n");
        return time == 0 ? std::nullopt : std::optional(time);
    }

  private:
    TextEditorCtrl& control() { return editor_.control(); }
    Buffer& buffer() { return control().getBuffer(); }

    qt::QtPlatform platform_;
    qt::XmlEditorWidget editor_{platform_};
    QueuedEditorThread thread_;
    SchemaLibrary library_{thread_, {.load = fileSchemaLoader(), .builtIn = builtInVocabularies()}};
    DocumentSchemas schemas_{schemaDocument(buffer(), [] { return std::filesystem::path("parts.xml"); }),
                             library_};
};

} // namespace

} // namespace tavrin::bench

int main(int argc, char** argv) {
    using namespace tavrin::bench;
    return runRows(argc, argv, "Tavrin", QStringLiteral("Tavrin on Qt %1").arg(qVersion()),
                   [] { return std::make_unique<OurEditor>(); });
}
