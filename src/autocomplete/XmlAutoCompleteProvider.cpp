#include "autocomplete/XmlAutoCompleteProvider.h"

#include "autocomplete/AutoCompleteList.h"
#include "autocomplete/AutofillText.h"
#include "autocomplete/CompletionService.h"
#include "autocomplete/PopupEdits.h"
#include "autocomplete/XmlAutocompleteItemsCollection.h"
#include "buffer/Buffer.h"
#include "document/EditAction.h"
#include "document/TextUndoScope.h"
#include "parsers/XmlLangParser.h"
#include "view/CTextEditorView.h"
#include "view/EditCommand.h"
#include "view/EditorSettings.h"

namespace tavrin {

namespace {

/// The caret must not disappear while the popup is up.
class ShownPopup {
  public:
    explicit ShownPopup(CTextEditorView& view) : view_(view), watch_(view) {
        view_.setAutoCompleteShown(true);
    }
    ShownPopup(const ShownPopup&) = delete;
    ShownPopup& operator=(const ShownPopup&) = delete;
    ~ShownPopup() {
        if (watch_.isAlive())
            view_.setAutoCompleteShown(false);
    }

  private:
    CTextEditorView& view_;
    CWnd::Watch watch_;
};

constexpr CSize popupSize{30, 200};
constexpr int popupShift = 3; ///< pixels right of the caret

bool isInMainWindow(const CTextEditorView& view) {
    const CWnd* main = view.platform().mainWindow();
    const CWnd* window = &view;
    while (window->GetParent())
        window = window->GetParent();
    return main && window == main;
}

/// A single character would join the step of what was typed before it; a completion is a step of its own.
void keepApart(CTextEditorView& view, std::u16string_view text) {
    if (text.size() != 1)
        return;
    const int line = view.getCurrentLine();
    const int col = view.getCurrentColoumn();
    view.getDocument().AddUndoAction(
        &view, new EditAction(EditActionKind::CaretMove, line, col, line, col, {}, line, col, line, col));
}

/// What was written is there; the caret goes behind it.
void finish(CTextEditorView& view, EditCommand& command, int line, int col) {
    view.setCaret(line, col, true);
    view.updatePivot();
    command.finish([&] {
        view.updateScrollbars();
        view.redraw();
    });
}

} // namespace

// What was typed

void XmlAutoCompleteProvider::onChar(CTextEditorView* view, unsigned character) {
    if (!isValidBuffer(view))
        return; // the character did something else than being typed
    switch (character) {
    case u'<':
        AutoCompleteSetTagName(view);
        break;
    case u'>':
        AutoCompleteAddEndTag(view);
        break;
    case u'=':
    case u'"':
        AutoCompleteSetAttributeValue(view);
        break;
    case u' ':
        // With Ctrl the view has asked for completion already; a second list after it would be in the way.
        if (!view->platform().GetKeyState(VK_CONTROL) &&
            getParser(view)->isTag(view->getCurrentLine(), view->getCurrentColoumn()))
            AutoCompleteListMembers(view);
        break;
    default:
        break;
    }
}

void XmlAutoCompleteProvider::onKeyDown(CTextEditorView*, unsigned) {}

void XmlAutoCompleteProvider::autoCompleteAtCrtPosition(CTextEditorView* view) {
    if (!isValidBuffer(view))
        return;
    const CWnd::Watch watch(*view);
    XmlLangParser* parser = getParser(view);
    if (parser->isTagStart(view->getCurrentLine(), view->getCurrentColoumn()))
        AutoCompleteSetTagName(view);
    if (!watch.isAlive() || !isValidBuffer(view))
        return;
    if (parser->isAttribute(view->getCurrentLine(), view->getCurrentColoumn()))
        AutoCompleteListMembers(view);
    else if (parser->isAttributeValue(view->getCurrentLine(), view->getCurrentColoumn()))
        AutoCompleteSetAttributeValue(view);
}

// The view's side

XmlLangParser* XmlAutoCompleteProvider::getParser(CTextEditorView* view) {
    return static_cast<XmlLangParser*>(view->getDocument().getBuffer().getParser());
}

bool XmlAutoCompleteProvider::isValidBuffer(CTextEditorView* view) {
    if (!view)
        return false;
    const Buffer& buffer = view->getDocument().getBuffer();
    const int lines = buffer.getLineCount();
    return lines > 1 || (lines == 1 && buffer.getLineLength(0) > 0);
}

CPoint XmlAutoCompleteProvider::getAutocompleteTrackPos(CTextEditorView* view) {
    const CPoint caret = view->getCaretPoint();
    const CPoint middle{caret.x + popupShift, caret.y + view->getLineHeight() / 2};
    return view->peer() ? view->peer()->clientToScreen(middle) : middle;
}

void XmlAutoCompleteProvider::insertAutoText(CTextEditorView* view, std::u16string_view text) {
    int line = 0;
    int col = 0;
    insertAutoText(view, text, line, col);
}

void XmlAutoCompleteProvider::insertAutoText(CTextEditorView* view, std::u16string_view text, int& outLine,
                                             int& outCol) {
    EditCommand command(*view);
    keepApart(*view, text);
    view->insert(view->getCurrentLine(), view->getCurrentColoumn(), text, outLine, outCol);
    finish(*view, command, outLine, outCol);
}

void XmlAutoCompleteProvider::replaceWithAutoText(CTextEditorView* view, int startCol, int endCol,
                                                  std::u16string_view text, int& outLine, int& outCol) {
    const int line = view->getCurrentLine();
    EditCommand command(*view);
    keepApart(*view, text);
    view->erase(line, startCol, line, endCol);
    view->insert(line, startCol, text, outLine, outCol);
    finish(*view, command, outLine, outCol);
}

void XmlAutoCompleteProvider::insertAutofillText(CTextEditorView* view, std::u16string_view text) {
    if (!text.empty())
        AutofillText(*view).insert(text);
}

XmlAutoCompleteProvider::Choice XmlAutoCompleteProvider::choose(CTextEditorView* view,
                                                                const XmlAutocompleteItemsCollection& items,
                                                                const std::u16string& prefix) {
    if (items.getCount() == 0)
        return {};
    PopupEdits edits(*view, !prefix.empty());
    AutoCompleteList list(view, &items, prefix, isInMainWindow(*view));
    list.setDetails(&items);
    {
        const ShownPopup shown(*view);
        list.Track(getAutocompleteTrackPos(view), popupSize, view->getLineHeight(), false);
    }
    if (!edits.isViewAlive())
        return {.isOpen = false};
    const bool stillThere = list.getSelIdx() == -1 || edits.takeBack();
    return {true, stillThere ? list.getSelIdx() : -1, list.getAcceptChangesChar()};
}

// The completions

void XmlAutoCompleteProvider::AutoCompleteSetTagName(CTextEditorView* view) {
    TextUndoScope scope(view->getDocument());
    std::u16string localName;
    std::u16string qualifiedName;
    std::u16string namespaceUri;
    bool topLevel = true;
    int tagLine = 0;
    int tagCol = 0;
    if (!getParser(view)->findParentTag(view->getCurrentLine(), view->getCurrentColoumn(), localName,
                                        qualifiedName, namespaceUri, topLevel, tagLine, tagCol))
        return;
    const CompletionService service(*view, CompletionService::Place::Element);
    if (!service.isThere())
        return;
    XmlAutocompleteItemsCollection items;
    if (topLevel)
        items.fillRootElements();
    else
        items.fillChildElements(localName.c_str(), namespaceUri.c_str());
    if (view->platform().settings().getBoolValue(settings::section, settings::hideNotAllowedHere,
                                                 settings::defaultHideNotAllowedHere))
        items.removeNotAllowedHere();

    const Choice choice = choose(view, items, {});
    if (!choice.isOpen) {
        scope.abandon();
        return;
    }
    if (choice.selected == -1) {
        if (choice.character != 0)
            view->OnChar(choice.character, 1, 0);
        return;
    }
    EditCommand command(*view);
    insertAutoText(view, items.getItemText(choice.selected));
    if (choice.character == 0 || choice.character == u'>')
        insertAutofillText(view, items.getAutofillText(choice.selected));
    command.commit();
}

void XmlAutoCompleteProvider::AutoCompleteListMembers(CTextEditorView* view) {
    TextUndoScope scope(view->getDocument());
    const int line = view->getCurrentLine();
    const int col = view->getCurrentColoumn();
    std::u16string localName;
    std::u16string qualifiedName;
    std::u16string rawName;
    std::u16string namespaceUri;
    if (!getParser(view)->findOpenTag(line, col, localName, qualifiedName, rawName, namespaceUri) ||
        rawName.starts_with(u'/'))
        return;
    XmlAttrEditInfo info;
    if (!getParser(view)->findAttribute(line, col, info))
        return;
    const CompletionService service(*view, CompletionService::Place::Attribute);
    if (!service.isThere())
        return;
    XmlAutocompleteItemsCollection items;
    items.fillAttributes(localName, namespaceUri);

    const Choice choice = choose(view, items, info.name);
    if (!choice.isOpen) {
        scope.abandon();
        return;
    }
    if (choice.selected != -1) {
        int endLine = 0;
        int endCol = 0;
        replaceWithAutoText(view, info.nameStart, info.nameEnd, items.getItemText(choice.selected), endLine,
                            endCol);
    }
    if (choice.character != 0)
        view->OnChar(choice.character, 1, 0);
}

void XmlAutoCompleteProvider::AutoCompleteSetAttributeValue(CTextEditorView* view) {
    TextUndoScope scope(view->getDocument());
    XmlAttrEditInfo info;
    if (!getParser(view)->findAttribute(view->getCurrentLine(), view->getCurrentColoumn(), info))
        return;
    const CompletionService service(*view, CompletionService::Place::Attribute);
    if (!service.isThere())
        return;
    XmlAutocompleteItemsCollection items;
    items.fillAttributeValues(info.elementNamespace, info.name);

    const Choice choice = choose(view, items, info.value);
    if (!choice.isOpen) {
        scope.abandon();
        return;
    }
    if (choice.selected != -1)
        writeValue(view, info, items.getItemText(choice.selected));
    else if (choice.character != 0)
        view->OnChar(choice.character, 1, 0);
}

void XmlAutoCompleteProvider::writeValue(CTextEditorView* view, const XmlAttrEditInfo& info,
                                         const std::u16string& value) {
    int line = 0;
    int col = 0;
    if (!info.hasOpenQuote) {
        insertAutoText(view, u'"' + value + u'"');
    } else if (!info.hasCloseQuote) {
        replaceWithAutoText(view, info.valueStart, info.valueEnd, value + info.quote, line, col);
    } else {
        replaceWithAutoText(view, info.valueStart, info.valueEnd, value, line, col);
        view->setCaret(line, col + 1, true);
        view->updatePivot();
    }
}

void XmlAutoCompleteProvider::AutoCompleteAddEndTag(CTextEditorView* view) {
    const int line = view->getCurrentLine();
    const int col = view->getCurrentColoumn();
    const std::u16string_view text = view->getDocument().getBuffer().getLineText(line);
    if (col < 2 || text[static_cast<std::size_t>(col) - 2] == u'/')
        return;
    std::u16string localName;
    std::u16string qualifiedName;
    std::u16string rawName;
    std::u16string namespaceUri;
    if (!getParser(view)->findOpenTag(line, col - 1, localName, qualifiedName, rawName, namespaceUri) ||
        rawName.starts_with(u'/'))
        return;
    EditCommand command(*view);
    insertAutoText(view, u"</" + rawName + u">");
    view->setCaret(line, col, true);
    view->updatePivot();
    command.commit();
}

} // namespace tavrin
