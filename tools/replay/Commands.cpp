#include "platform/ui/CFindReplaceDialog.h"
#include "replay/Interpreter.h"
#include "replay/KeyNames.h"
#include "replay/OptionsCommands.h"
#include "replay/SchemaCommands.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace tavrin::replay {

namespace {

/// Of pixels and notches: far beyond any screen, and safe to reckon with.
constexpr int largest = 1'000'000;

[[noreturn]] void fileFailed(std::string_view what, std::u16string_view path, int error) {
    const std::string reason = error ? std::string(": ") + std::strerror(error) : std::string();
    throw BadLine("can't " + std::string(what) + " '" + json::toUtf8(path) + "'" + reason);
}

// Files and text

void openFile(ReplaySession& session, Arguments& arguments) {
    const std::u16string path = arguments.stringOrWord("the path");
    arguments.finish();
    std::error_code ignored;
    if (std::filesystem::is_directory(std::filesystem::path(json::toUtf8(path)), ignored))
        fileFailed("open", path, EISDIR);
    errno = 0;
    if (!session.buffer().loadFile(path.c_str()))
        fileFailed("open", path, errno);
    session.editor().OnOpenDocument(path.c_str());
    session.schemas().setPath(std::filesystem::path(path));
}

void saveFile(ReplaySession& session, Arguments& arguments) {
    const std::u16string path = arguments.stringOrWord("the path");
    arguments.finish();
    errno = 0;
    if (!session.buffer().saveToFile(path.c_str()))
        fileFailed("save", path, errno);
    session.editor().OnSaveDocument(path.c_str());
}

void setText(ReplaySession& session, Arguments& arguments) {
    const std::u16string text = arguments.string("the text");
    arguments.finish();
    session.editor().setText(text);
}

// Keyboard and caret

void type(ReplaySession& session, Arguments& arguments) {
    const std::u16string text = arguments.string("the text");
    arguments.finish();
    session.type(text);
}

void pressKey(ReplaySession& session, Arguments& arguments) {
    const std::string name = json::toUtf8(arguments.keyName("the key's name"));
    arguments.finish();
    const auto stroke = parseKey(name);
    if (!stroke)
        throw BadLine("unknown key '" + name + "'");
    session.platform().pressKey(session.editor(), *stroke);
}

void placeCaret(ReplaySession& session, Arguments& arguments) {
    const int line = arguments.integer("the line");
    const int col = arguments.integer("the column");
    arguments.finish();
    requirePosition(session, line, col);
    session.editor().gotoLineCol(line, col);
}

void select(ReplaySession& session, Arguments& arguments) {
    const int pivotLine = arguments.integer("the pivot's line");
    const int pivotCol = arguments.integer("the pivot's column");
    const int caretLine = arguments.integer("the caret's line");
    const int caretCol = arguments.integer("the caret's column");
    arguments.finish();
    requirePosition(session, pivotLine, pivotCol);
    requirePosition(session, caretLine, caretCol);
    TextEditorCtrl& editor = session.editor();
    editor.setCaret(pivotLine, pivotCol, false);
    editor.updatePivot();
    editor.setCaret(caretLine, caretCol, false);
}

// Mouse and window

CPoint takePoint(Arguments& arguments) {
    const int x = arguments.integer("x", -largest, largest);
    return {x, arguments.integer("y", -largest, largest)};
}

template <UINT message>
void mouse(ReplaySession& session, Arguments& arguments) {
    const CPoint point = takePoint(arguments);
    arguments.finish();
    session.platform().sendMouse(session.editor(), message, point);
}

void pressMouse(ReplaySession& session, Arguments& arguments) {
    const CPoint point = takePoint(arguments);
    UINT flags = 0;
    if (!arguments.atEnd()) {
        const std::string_view modifier = arguments.word();
        if (modifier != "Shift")
            throw BadArguments("only Shift may follow the point, not '" + std::string(modifier) + "'");
        flags = MK_SHIFT;
    }
    arguments.finish();
    session.platform().sendMouse(session.editor(), WM_LBUTTONDOWN, point, flags);
}

void turnWheel(ReplaySession& session, Arguments& arguments) {
    int notches = arguments.integer("the number of notches", -largest, largest);
    arguments.finish();
    constexpr int atOnce = 100; // a message carries 16 bits of rotation
    while (notches != 0) {
        const int now = std::clamp(notches, -atOnce, atOnce);
        session.platform().turnWheel(session.editor(), now * WHEEL_DELTA);
        notches -= now;
    }
}

void resize(ReplaySession& session, Arguments& arguments) {
    const int width = arguments.integer("the width", 0, largest);
    const int height = arguments.integer("the height", 0, largest);
    arguments.finish();
    session.resize({width, height});
}

void moveFocus(ReplaySession& session, Arguments& arguments) {
    const bool on = arguments.onOrOff();
    arguments.finish();
    session.platform().setFocus(on ? &session.window() : nullptr);
}

// Commands and state

void sendCommand(ReplaySession& session, Arguments& arguments) {
    const int id = arguments.integer("the command's number");
    arguments.finish();
    session.editor().SendCommand(
        static_cast<UINT>(id)); // one that nobody handles does nothing, as in a window
}

void setClipboard(ReplaySession& session, Arguments& arguments) {
    std::u16string text = arguments.string("the text");
    arguments.finish();
    session.platform().headlessClipboard().setContent(std::move(text));
}

void setSetting(ReplaySession& session, Arguments& arguments) {
    constexpr std::string_view section = "Xml Editor";
    const std::string key = json::toUtf8(arguments.stringOrWord("the setting's key"));
    const json::Scalar value = arguments.scalar("the setting's value");
    arguments.finish();
    UserSettings& settings = session.platform().settings();
    if (const auto* text = std::get_if<std::u16string>(&value))
        settings.setStringValue(section, key, *text);
    else if (const auto* number = std::get_if<int>(&value))
        settings.setIntValue(section, key, *number);
    else
        settings.setBoolValue(section, key, std::get<bool>(value));
}

void update(ReplaySession& session, Arguments& arguments) {
    arguments.finish();
    session.editor().OnUpdate();
}

// Search

/// The words after the texts of a search, each at most once and in any order.
UINT takeOptions(Arguments& arguments, bool mayGoUp) {
    UINT flags = FR_DOWN;
    while (!arguments.atEnd()) {
        const std::string_view word = arguments.word();
        if (mayGoUp && word == "up" && flags & FR_DOWN)
            flags &= ~UINT{FR_DOWN};
        else if (word == "case" && !(flags & FR_MATCHCASE))
            flags |= FR_MATCHCASE;
        else if (word == "word" && !(flags & FR_WHOLEWORD))
            flags |= FR_WHOLEWORD;
        else
            throw BadArguments("'" + std::string(word) + "' is no option, or a second one of its kind");
    }
    return flags;
}

/// A request as the find dialog sends it.
template <UINT action>
void requestSearch(ReplaySession& session, Arguments& arguments) {
    const std::u16string what = arguments.string("the text to find");
    std::u16string with;
    if (action != FR_FINDNEXT)
        with = arguments.string("the replacement");
    const UINT options = takeOptions(arguments, action != FR_REPLACEALL);
    CFindReplaceDialog::send(session.editor(), {options | action, what, with});
}

void startIncrementalSearch(ReplaySession& session, Arguments& arguments) {
    const int line = arguments.integer("the line");
    const int col = arguments.integer("the column");
    arguments.finish();
    requirePosition(session, line, col);
    session.editor().startIncrementalSearch(line, col);
}

void closeFindDialog(ReplaySession& session, Arguments& arguments) {
    arguments.finish();
    const auto open = session.platform().findDialogs();
    if (open.empty())
        throw BadLine("no find dialog is open");
    open.back()->close();
}

void stopTask(ReplaySession& session, Arguments& arguments) {
    const int report = arguments.integer("the number of the report", 1, largest);
    arguments.finish();
    session.platform().stopNextTaskAt(report);
}

constexpr Command table[] = {
    {"open", "PATH", openFile},
    {"save", "PATH", saveFile},
    {"schema", "PATH", bindSchema},
    {"text", "STRING", setText},
    {"type", "STRING", type, OnPopup::Feeds},
    {"key", "NAME", pressKey, OnPopup::Feeds},
    {"caret", "L C", placeCaret},
    {"select", "PL PC CL CC", select},
    {"press", "X Y [Shift]", pressMouse, OnPopup::AtPoint},
    {"move", "X Y", mouse<WM_MOUSEMOVE>, OnPopup::AtPoint},
    {"release", "X Y", mouse<WM_LBUTTONUP>, OnPopup::AtPoint},
    {"double", "X Y", mouse<WM_LBUTTONDBLCLK>, OnPopup::AtPoint},
    {"wheel", "N", turnWheel},
    {"resize", "W H", resize},
    {"focus", "on|off", moveFocus},
    {"command", "ID", sendCommand},
    {"clipboard", "STRING", setClipboard},
    {"setting", "KEY VALUE", setSetting},
    {"find", "STRING [up] [case] [word]", requestSearch<FR_FINDNEXT>},
    {"replace", "STRING STRING [up] [case] [word]", requestSearch<FR_REPLACE>},
    {"replaceall", "STRING STRING [case] [word]", requestSearch<FR_REPLACEALL>},
    {"incsearch", "L C", startIncrementalSearch},
    {"closefind", "", closeFindDialog},
    {"stoptask", "N", stopTask},
    {"update", "", update},
    {"options",
     "open|item NAME|fore COLOUR|back COLOUR|font NAME|size N|numbers on|off|scheme NAME|save|cancel",
     runOptions},
};

} // namespace

std::span<const Command> commands() {
    return table;
}

} // namespace tavrin::replay
