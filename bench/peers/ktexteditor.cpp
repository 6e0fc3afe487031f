// KTextEditor with line numbers; folding, minimap, swap files and completion while typing are off.

#include "Editor.h"

#include <QAction>
#include <QApplication>
#include <QUrl>

#include <KActionCollection>
#include <KTextEditor/CodeCompletionInterface>
#include <KTextEditor/ConfigInterface>
#include <KTextEditor/Document>
#include <KTextEditor/Editor>
#include <KTextEditor/View>
#include <cstdlib>
#include <ktexteditor_version.h>

namespace tavrin::bench {

namespace {

class KText final : public Editor {
  public:
    KText()
        : document_(KTextEditor::Editor::instance()->createDocument(nullptr)),
          view_(document_->createView(nullptr)) {
        auto* config = qobject_cast<KTextEditor::ConfigInterface*>(view_);
        config->setConfigValue("font", editorFont());
        config->setConfigValue("line-numbers", true);
        config->setConfigValue("folding-bar", false);
        config->setConfigValue("scrollbar-minimap", false);
        config->setConfigValue("dynamic-word-wrap", false);
        qobject_cast<KTextEditor::CodeCompletionInterface*>(view_)->setAutomaticInvocationEnabled(false);
    }

    QWidget& widget() override { return *view_; }
    QWidget& page() override { return *view_->focusProxy(); }
    QWidget& keyboard() override { return *view_->focusProxy(); }

    void load(const QString& path) override {
        if (!document_->openUrl(QUrl::fromLocalFile(path)))
            std::abort();
        document_->setHighlightingMode("XML");
    }
    void colourAll() override { (void)document_->defaultStyleAt(document_->documentEnd()); }
    int lineCount() override { return document_->lines(); }
    void goTo(int line, int column) override { view_->setCursorPosition({line, column}); }
    void goToEnd() override { view_->setCursorPosition(document_->documentEnd()); }
    void pageDown() override { view_->actionCollection()->action("scroll_page_down")->trigger(); }
    bool find(const QString& text, bool matchCase) override {
        return next(text, {0, 0}, matchCase).isValid();
    }
    void replaceAll(const QString& text, const QString& with) override {
        const KTextEditor::Document::EditingTransaction transaction(document_);
        for (KTextEditor::Range at = next(text, {0, 0}, true); at.isValid();) {
            document_->replaceText(at, with);
            at = next(text, {at.start().line(), at.start().column() + static_cast<int>(with.size())}, true);
        }
    }
    void undo() override { view_->action("edit_undo")->trigger(); }
    void save(const QString& path) override {
        if (!document_->saveAs(QUrl::fromLocalFile(path)))
            std::abort();
    }

  private:
    KTextEditor::Range next(const QString& text, KTextEditor::Cursor from, bool matchCase) const {
        return document_
            ->searchText({from, document_->documentEnd()}, text,
                         matchCase ? KTextEditor::SearchOptions(KTextEditor::Default)
                                   : KTextEditor::SearchOptions(KTextEditor::CaseInsensitive))
            .value(0, KTextEditor::Range::invalid());
    }

    KTextEditor::Document* document_;
    KTextEditor::View* view_;
};

} // namespace

} // namespace tavrin::bench

int main(int argc, char** argv) {
    using namespace tavrin::bench;
    return runRows(
        argc, argv, "KTextEditor",
        QStringLiteral("KTextEditor %1 on Qt %2").arg(QLatin1String(KTEXTEDITOR_VERSION_STRING), qVersion()),
        [] { return std::make_unique<KText>(); });
}
