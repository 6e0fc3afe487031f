#include "autocomplete/AutoCompleteList.h"
#include "autocomplete/IAutoCompleteListItemsCollection.h"
#include "parsers/XmlLangParser.h"
#include "replay/Interpreter.h"

#include <array>
#include <vector>

namespace tavrin::replay {

namespace {

/// An answer without arguments, written by a function of the session.
template <auto Answer>
void plain(ReplaySession& session, Arguments& arguments, json::Writer& out) {
    arguments.finish();
    Answer(session, out);
}

/// An answer about one line of the text.
template <auto Answer>
void ofLine(ReplaySession& session, Arguments& arguments, json::Writer& out) {
    const int line = arguments.integer("the line");
    arguments.finish();
    requireLine(session, line);
    Answer(session, line, out);
}

void pair(json::Writer& out, int first, int second) {
    out.value(std::array{first, second});
}

// The document

void text(ReplaySession& session, json::Writer& out) {
    out.value(session.editor().getText());
}

void lineText(ReplaySession& session, int line, json::Writer& out) {
    out.value(session.buffer().getLineText(line));
}

void lines(ReplaySession& session, json::Writer& out) {
    out.value(session.buffer().getLineCount());
}

void formats(ReplaySession& session, int line, json::Writer& out) {
    Buffer& buffer = session.buffer();
    std::vector<int> codes(static_cast<std::size_t>(buffer.getLineLength(line)));
    for (std::size_t col = 0; col < codes.size(); ++col)
        codes[col] = buffer.getCharFormat(line, static_cast<int>(col));
    out.value(codes);
}

void flags(ReplaySession& session, int line, json::Writer& out) {
    out.value(session.buffer().getLineFlags(line));
}

void encoding(ReplaySession& session, json::Writer& out) {
    out.value(session.buffer().getEncoding());
}
void modified(ReplaySession& session, json::Writer& out) {
    out.value(session.editor().isModified());
}
void canUndo(ReplaySession& session, json::Writer& out) {
    out.value(session.editor().CanUndo());
}
void canRedo(ReplaySession& session, json::Writer& out) {
    out.value(session.editor().CanRedo());
}

// Caret and selection

void caret(ReplaySession& session, json::Writer& out) {
    pair(out, session.editor().getCurrentLine(), session.editor().getCurrentColoumn());
}

void selection(ReplaySession& session, json::Writer& out) {
    TextEditorCtrl& editor = session.editor();
    out.beginObject();
    pair(out.key("pivot"), editor.getPivotLine(), editor.getPivotCol());
    pair(out.key("caret"), editor.getCurrentLine(), editor.getCurrentColoumn());
    out.key("text").value(editor.getSelectedText());
    out.endObject();
}

void caretPixel(ReplaySession& session, json::Writer& out) {
    const CPoint position = session.window().caretPosition();
    pair(out, position.x, position.y);
}

// The desktop

void clipboard(ReplaySession& session, json::Writer& out) {
    const auto& content = session.platform().headlessClipboard().content();
    if (content)
        out.value(*content);
    else
        out.null();
}

void status(ReplaySession& session, json::Writer& out) {
    out.value(session.frame().GetMessageText());
}

// The view's window

void scroll(ReplaySession& session, json::Writer& out) {
    pair(out, session.editor().GetScrollPos(SB_HORZ), session.editor().GetScrollPos(SB_VERT));
}

void scrollSize(ReplaySession& session, json::Writer& out) {
    const CSize total = session.editor().GetTotalSize();
    pair(out, total.cx, total.cy);
}

void gutter(ReplaySession& session, json::Writer& out) {
    out.value(session.editor().getLineNumbersArea().Width());
}

void visible(ReplaySession& session, json::Writer& out) {
    TextEditorCtrl& editor = session.editor();
    const int first = -editor.getLineIndexInPage(0); // how many lines lie above the first on screen
    out.value(std::array{first, editor.getFirstCompletellyVisibleLineIdx(),
                         editor.getLastCompletellyVisibleLineIdx(), editor.getLastVisibleLineIdx()});
}

void invalid(ReplaySession& session, json::Writer& out) {
    out.beginArray();
    for (const CRect& rect : session.window().invalidated())
        out.value(std::array{rect.left, rect.top, rect.Width(), rect.Height()});
    out.endArray();
    session.window().clearRecord();
}

void frame(ReplaySession& session, json::Writer& out) {
    RecordingDC dc;
    session.window().paint(dc);
    out.beginArray();
    for (const DrawnText& drawn : dc.texts()) {
        out.beginObject();
        out.key("x").value(drawn.x);
        out.key("y").value(drawn.y);
        out.key("text").value(drawn.text);
        out.key("fore").value(static_cast<int>(drawn.fore));
        out.key("back");
        if (drawn.back)
            out.value(static_cast<int>(*drawn.back));
        else
            out.null();
        out.endObject();
    }
    out.endArray();
}

// Completion

void popup(ReplaySession& session, json::Writer& out) {
    const HeadlessWindow* window = session.platform().popup();
    const auto* list = window ? dynamic_cast<const AutoCompleteList*>(&window->window()) : nullptr;
    if (!list) {
        out.null();
        return;
    }
    out.beginObject();
    out.key("items").beginArray();
    for (int i = 0; i < list->getItems().getCount(); ++i)
        out.value(list->getItems().getItemText(i));
    out.endArray();
    out.key("focused").value(list->GetFocusedItem());
    out.key("prefix").value(list->getPrefix());
    out.endObject();
}

// The structure around a position

XmlLangParser& parser(ReplaySession& session) {
    return static_cast<XmlLangParser&>(*session.buffer().getParser());
}

/// An answer about one position of the text.
template <auto Answer>
void at(ReplaySession& session, Arguments& arguments, json::Writer& out) {
    const int line = arguments.integer("the line");
    const int col = arguments.integer("the column");
    arguments.finish();
    requirePosition(session, line, col);
    if (session.buffer().getLineCount() == 0)
        out.null(); // there is no structure
    else
        Answer(session, line, col, out);
}

template <auto Query>
void truthAt(ReplaySession& session, Arguments& arguments, json::Writer& out) {
    const int line = arguments.integer("the line");
    const int col = arguments.integer("the column");
    arguments.finish();
    requirePosition(session, line, col);
    out.value(session.buffer().getLineCount() > 0 && (parser(session).*Query)(line, col));
}

void parent(ReplaySession& session, int line, int col, json::Writer& out) {
    std::u16string local;
    std::u16string qualified;
    std::u16string namespaceName;
    bool topLevel = false;
    int tagLine = 0;
    int tagCol = 0;
    if (!parser(session).findParentTag(line, col, local, qualified, namespaceName, topLevel, tagLine,
                                       tagCol)) {
        out.null();
        return;
    }
    out.beginObject();
    out.key("topLevel").value(topLevel);
    if (!topLevel) {
        out.key("local").value(local);
        out.key("qualified").value(qualified);
        out.key("namespace").value(namespaceName);
        pair(out.key("tag"), tagLine, tagCol);
    }
    out.endObject();
}

void openTag(ReplaySession& session, int line, int col, json::Writer& out) {
    std::u16string local;
    std::u16string qualified;
    std::u16string raw;
    std::u16string namespaceName;
    if (!parser(session).findOpenTag(line, col, local, qualified, raw, namespaceName)) {
        out.null();
        return;
    }
    out.beginObject();
    out.key("local").value(local);
    out.key("qualified").value(qualified);
    out.key("raw").value(raw);
    out.key("namespace").value(namespaceName);
    out.endObject();
}

void attribute(ReplaySession& session, int line, int col, json::Writer& out) {
    XmlAttrEditInfo info;
    if (!parser(session).findAttribute(line, col, info)) {
        out.null();
        return;
    }
    out.beginObject();
    out.key("elementNamespace").value(info.elementNamespace);
    out.key("name").value(info.name);
    out.key("value").value(info.value);
    out.key("quote").value(std::u16string(1, info.quote));
    out.key("hasOpenQuote").value(info.hasOpenQuote);
    out.key("hasCloseQuote").value(info.hasCloseQuote);
    out.key("valueStart").value(info.valueStart);
    out.key("valueEnd").value(info.valueEnd);
    out.key("nameStart").value(info.nameStart);
    out.key("nameEnd").value(info.nameEnd);
    out.endObject();
}

constexpr Question table[] = {
    {"text", "", plain<text>},
    {"line", "N", ofLine<lineText>},
    {"lines", "", plain<lines>},
    {"caret", "", plain<caret>},
    {"selection", "", plain<selection>},
    {"formats", "N", ofLine<formats>},
    {"flags", "N", ofLine<flags>},
    {"encoding", "", plain<encoding>},
    {"modified", "", plain<modified>},
    {"canundo", "", plain<canUndo>},
    {"canredo", "", plain<canRedo>},
    {"clipboard", "", plain<clipboard>},
    {"status", "", plain<status>},
    {"scroll", "", plain<scroll>},
    {"scrollsize", "", plain<scrollSize>},
    {"caretpixel", "", plain<caretPixel>},
    {"gutter", "", plain<gutter>},
    {"visible", "", plain<visible>},
    {"invalid", "", plain<invalid>},
    {"frame", "", plain<frame>},
    {"popup", "", plain<popup>},
    {"parent", "L C", at<parent>},
    {"opentag", "L C", at<openTag>},
    {"attribute", "L C", at<attribute>},
    {"istag", "L C", truthAt<&XmlLangParser::isTag>},
    {"istagstart", "L C", truthAt<&XmlLangParser::isTagStart>},
    {"isattribute", "L C", truthAt<&XmlLangParser::isAttribute>},
    {"isattributevalue", "L C", truthAt<&XmlLangParser::isAttributeValue>},
};

} // namespace

std::span<const Question> questions() {
    return table;
}

} // namespace tavrin::replay
