#pragma once

#include "document/IAutoCompleteProvider.h"
#include "platform/ui/Geometry.h"

#include <string>
#include <string_view>

namespace tavrin {

class CTextEditorView;
class XmlAutocompleteItemsCollection;
class XmlLangParser;

/// Completion in XML: element names after "<", attribute names after a space in a start tag, attribute values
/// after "=" and a double quote, the end tag after ">", each from the schema service of the view's document.
/// Has no state; every operation works on the view that it is given, whose buffer has an XmlLangParser.
///
/// A completion is one undo step. It runs while its popup list is up; the view may be deleted meanwhile.
class XmlAutoCompleteProvider : public IAutoCompleteProvider {
  public:
    /// The view has handled the character already.
    void onChar(CTextEditorView* view, unsigned character) override;
    /// Does nothing.
    void onKeyDown(CTextEditorView* view, unsigned key) override;
    void autoCompleteAtCrtPosition(CTextEditorView* view) override;

  private:
    /// What came of a popup list.
    struct Choice {
        bool isOpen = true;           ///< false: the view is gone, nothing of it may be touched
        int selected = -1;            ///< the candidate; -1 for none
        unsigned short character = 0; ///< that closed the list; 0 for none
    };

    [[nodiscard]] static XmlLangParser* getParser(CTextEditorView* view);
    /// Whether there is any text.
    [[nodiscard]] static bool isValidBuffer(CTextEditorView* view);
    /// The middle of the caret's line, on the screen.
    [[nodiscard]] static CPoint getAutocompleteTrackPos(CTextEditorView* view);

    /// Inserts at the caret, which goes to the end of the text.
    void insertAutoText(CTextEditorView* view, std::u16string_view text);
    void insertAutoText(CTextEditorView* view, std::u16string_view text, int& outLine, int& outCol);
    /// The same for a stretch of the caret's line that is replaced.
    void replaceWithAutoText(CTextEditorView* view, int startCol, int endCol, std::u16string_view text,
                             int& outLine, int& outCol);
    /// Inserts the rest of an element by its template: "*" is where the caret goes, a line feed a new line
    /// with the indentation of the caret's, "_" a tab.
    void insertAutofillText(CTextEditorView* view, std::u16string_view text);

    void AutoCompleteSetTagName(CTextEditorView* view);
    void AutoCompleteListMembers(CTextEditorView* view);
    void AutoCompleteSetAttributeValue(CTextEditorView* view);
    void AutoCompleteAddEndTag(CTextEditorView* view);

    /// Shows the candidates and takes back what was typed meanwhile if one was chosen.
    [[nodiscard]] Choice choose(CTextEditorView* view, const XmlAutocompleteItemsCollection& items,
                                const std::u16string& prefix);
    /// Writes a value where the attribute has its own.
    void writeValue(CTextEditorView* view, const struct XmlAttrEditInfo& info, const std::u16string& value);
};

} // namespace tavrin
