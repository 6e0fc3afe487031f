#include "replay/CompletionQuestions.h"
#include "replay/Interpreter.h"
#include "replay/OptionsCommands.h"

#include <array>
#include <limits>
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

void beeps(ReplaySession& session, json::Writer& out) {
    out.value(session.platform().beeps());
}

void findDialogs(ReplaySession& session, json::Writer& out) {
    out.beginArray();
    for (const HeadlessFindDialog* dialog : session.platform().findDialogs()) {
        out.beginObject();
        out.key("find").value(dialog->findWhat);
        out.key("replace");
        if (dialog->isFindOnly())
            out.null();
        else
            out.value(dialog->replaceWith);
        out.key("up").value((dialog->options & FR_DOWN) == 0);
        out.key("case").value((dialog->options & FR_MATCHCASE) != 0);
        out.key("word").value((dialog->options & FR_WHOLEWORD) != 0);
        out.endObject();
    }
    out.endArray();
}

void incrementalSearch(ReplaySession& session, json::Writer& out) {
    out.value(session.editor().isIncSearchActive());
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

void writeTexts(const std::vector<DrawnText>& texts, json::Writer& out) {
    out.beginArray();
    for (const DrawnText& drawn : texts) {
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

void frame(ReplaySession& session, json::Writer& out) {
    RecordingDC dc;
    session.window().paint(dc);
    writeTexts(dc.texts(), out);
}

// The printer

/// Prepares a job, as a print command does.
CPrintInfo preparedPrinting(ReplaySession& session) {
    CPrintInfo info;
    info.m_bDirect = true;
    if (!session.editor().OnPreparePrinting(&info))
        throw BadLine("the printer is not ready");
    return info;
}

void page(ReplaySession& session, Arguments& arguments, json::Writer& out) {
    const int number = arguments.integer("the page", 1, std::numeric_limits<int>::max());
    arguments.finish();
    CPrintInfo info = preparedPrinting(session);
    info.m_nCurPage = static_cast<UINT>(number);
    auto& dc = static_cast<RecordingDC&>(*info.printerDC());
    session.editor().OnPrint(&dc, &info);
    writeTexts(dc.texts(), out);
}

void pages(ReplaySession& session, json::Writer& out) {
    out.value(static_cast<int>(preparedPrinting(session).GetMaxPage()));
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
    {"beeps", "", plain<beeps>},
    {"finddialogs", "", plain<findDialogs>},
    {"incsearch", "", plain<incrementalSearch>},
    {"scroll", "", plain<scroll>},
    {"scrollsize", "", plain<scrollSize>},
    {"caretpixel", "", plain<caretPixel>},
    {"gutter", "", plain<gutter>},
    {"visible", "", plain<visible>},
    {"invalid", "", plain<invalid>},
    {"frame", "", plain<frame>},
    {"popup", "", printPopup},
    {"parent", "L C", printParent},
    {"opentag", "L C", printOpenTag},
    {"attribute", "L C", printAttribute},
    {"istag", "L C", printIsTag},
    {"istagstart", "L C", printIsTagStart},
    {"isattribute", "L C", printIsAttribute},
    {"isattributevalue", "L C", printIsAttributeValue},
    {"page", "N", page},
    {"pages", "", plain<pages>},
    {"options", "", plain<printOptions>},
    {"preview", "", plain<printPreview>},
};

} // namespace

std::span<const Question> questions() {
    return table;
}

} // namespace tavrin::replay
