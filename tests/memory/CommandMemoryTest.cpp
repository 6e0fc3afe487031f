// Every command with every allocation failing in turn: it is done, or nothing has happened.

#include "document/ReloadAction.h"
#include "memory/MemorySession.h"

#include <functional>
#include <iostream>

namespace tavrin {
namespace {

using Session = test::MemorySession;
using test::Shape;

struct Command {
    const char* name;
    std::function<void(Session&, const Shape&)> place; ///< the caret and what the command needs
    std::function<void(Session&)> run;
};

/// Selects from column 2 of one line to column 3 of another.
auto across(int lines) {
    return [=](Session& session, const Shape& shape) {
        const int first = std::min(shape.lines / 2, 5);
        session.select(first, 2, std::min(first + lines, shape.lines - 1), 3);
    };
}

auto onClipboard(int lines, std::u16string text) {
    return [=](Session& session, const Shape& shape) {
        across(2)(session, shape);
        std::u16string all;
        for (int i = 0; i < lines; ++i)
            all += text;
        session.platform_.clipboard().setText(all);
    };
}

/// Selects so many characters in the middle of a line that a paste has made long.
auto inALongLine(int selected) {
    return [=](Session& session, const Shape& shape) {
        std::u16string text;
        while (text.size() < 2 * BufferLine::longLine)
            text += u"<a b='c'>word</a> ";
        onClipboard(1, text)(session, shape);
        session.ctrl_->SendCommand(ID_EDIT_PASTE);
        static_cast<void>(session.paint());
        const int line = session.ctrl_->getCurrentLine();
        session.select(line, BufferLine::longLine, line, BufferLine::longLine + selected);
    };
}

auto pressing(UINT key, bool ctrl = false, bool shift = false) {
    return [=](Session& session) { session.key(key, ctrl, shift); };
}

auto typing(char16_t c) {
    return [=](Session& session) { session.platform_.typeCharacter(*session.ctrl_, c); };
}

auto command(UINT id) {
    return [=](Session& session) { session.ctrl_->SendCommand(id); };
}

auto requesting(UINT flags, std::u16string what, std::u16string with) {
    return [=](Session& session) {
        FINDREPLACE request;
        request.Flags = flags | FR_DOWN;
        request.lpstrFindWhat = what;
        request.lpstrReplaceWith = with;
        MSG message{.message = test::TestedCtrl::findMessage()};
        message.data = &request;
        session.ctrl_->SendMessage(message);
    };
}

/// Another program has written the file, in a form of its own, with a byte that is not valid in one line.
void reload(Session& session) {
    std::string bytes = "<?xml version='1.0' encoding='windows-1251'?>\r\n";
    for (int i = 0; i < 700; ++i)
        bytes += i % 5 == 0 ? "\t<a b='c'>word</a>\r\n" : i == 301 ? "\x98\r\n" : "<!-- \xE4 -->\r\n";
    const SmartPtr<ReloadAction> action(new ReloadAction(test::blockOf(bytes)));
    session.ctrl_->reload(*action);
}

/// Before an undo or a redo: a reload, an edit of it, and so many steps back.
auto reloaded(int undone) {
    return [=](Session& session, const Shape&) {
        reload(session);
        session.select(2, 1, 2, 1);
        session.type(u"x");
        for (int i = 0; i < undone; ++i)
            session.ctrl_->SendCommand(ID_EDIT_UNDO);
    };
}

const Command commands[] = {
    {"type", across(0), typing(u'x')},
    {"type over lines", across(3), typing(u'x')},
    {"type over pages", across(600), typing(u'x')},
    {"type into a long line", inALongLine(0), typing(u'<')},
    {"type over a part of a long line", inALongLine(100), typing(u'"')},
    {"delete most of a long line", inALongLine(3000), pressing(VK_DELETE)},
    {"return", across(0), pressing(VK_RETURN)},
    {"return over lines", across(2), pressing(VK_RETURN)},
    {"backspace", across(1), pressing(VK_BACK)},
    {"delete pages", across(800), pressing(VK_DELETE)},
    {"indent", across(3), typing(VK_TAB)},
    {"unindent", across(3), [](Session& session) { session.ctrl_->OnUnindentSelection(); }},
    {"paste a line", onClipboard(1, u"<pasted/>"), command(ID_EDIT_PASTE)},
    {"paste lines", onClipboard(700, u"<p>\r\n"), command(ID_EDIT_PASTE)},
    {"cut", across(3), command(ID_EDIT_CUT)},
    {"upper case", across(300), [](Session& session) { session.ctrl_->OnMakeSelectionUppercase(); }},
    {"undo", across(0), command(ID_EDIT_UNDO)},
    {"redo", across(0), command(ID_EDIT_REDO)},
    {"undo a replace all",
     [](Session& session, const Shape&) { requesting(FR_REPLACEALL, u"word", u"another")(session); },
     command(ID_EDIT_UNDO)},
    {"undo a paste",
     [](Session& session, const Shape& shape) {
         onClipboard(700, u"<p>\r\n")(session, shape);
         session.ctrl_->SendCommand(ID_EDIT_PASTE);
     },
     command(ID_EDIT_UNDO)},
    {"replace", [](Session& session, const Shape&) { requesting(FR_FINDNEXT, u"word", u"")(session); },
     requesting(FR_REPLACE, u"word", u"longer word")},
    {"replace all", across(0), requesting(FR_REPLACEALL, u"word", u"another")},
    {"replace all by lines", across(0), requesting(FR_REPLACEALL, u"open", u"1\n2")},
    {"find", across(0), requesting(FR_FINDNEXT, u"WORD", u"")},
    {"end of document", across(0), pressing(VK_END, true, true)},
    {"reload", across(2), reload},
    {"undo a reload", reloaded(1), command(ID_EDIT_UNDO)},
    {"redo a reload", reloaded(2), command(ID_EDIT_REDO)},
    {"select all", across(2), command(ID_EDIT_SELECT_ALL)},
};

/// Runs the command with its allocations failing in turn; how many did.
long failEverywhere(const Shape& shape, const Command& command, bool stays) {
    const auto start = [&](Session& session) {
        open(session, shape);
        command.place(session, shape);
    };
    Session untouched;
    start(untouched);
    const Session::State before = untouched.state();
    Session done;
    start(done);
    command.run(done);
    const Session::State after = done.state();
    const std::string written = done.written();
    const auto history = done.history();
    const auto colours = done.colours();
    long points = 0;
    for (long point = 0;; point = test::nextPoint(point), ++points) {
        SCOPED_TRACE(point);
        Session session;
        start(session);
        const bool hasFailed = test::failing(point, stays, [&] { command.run(session); });
        EXPECT_NO_THROW(session.checkInvariants());
        if (session.state() == before && hasFailed)
            command.run(session);
        EXPECT_TRUE(session.state() == after) << "the command was done in part";
        EXPECT_NO_THROW(session.checkInvariants());
        EXPECT_TRUE(session.history() == history);
        EXPECT_TRUE(session.written() == written);
        EXPECT_TRUE(session.colours() == colours);
        if (!hasFailed || testing::Test::HasFailure())
            return points;
    }
}

class CommandMemory : public testing::TestWithParam<Command> {};

TEST_P(CommandMemory, isDoneOrLeavesEverythingAsItWas) {
    long points = 0;
    for (const Shape& shape : test::shapes)
        for (const bool stays : {false, true}) {
            SCOPED_TRACE(shape.name);
            points += failEverywhere(shape, GetParam(), stays);
            if (HasFailure())
                return;
        }
    EXPECT_GT(points, 0);
    std::cout << GetParam().name << ": " << points << " failures\n";
}

TEST(MemoryMessage, tellsTheUserAndTheScreenIsMadeUp) {
    Session session;
    open(session, test::shapes[0]);
    const auto text = session.state().text;
    ASSERT_TRUE(test::failing(0, false, [&] { session.type(u"x"); }));
    EXPECT_EQ(session.state().text, text);
    EXPECT_EQ(HeadlessPlatform::windowOf(*session.ctrl_->getFrame()).statusText(),
              u"There is not enough memory for this.");
    session.window().clearRecord();
    session.key(VK_RIGHT);
    EXPECT_FALSE(session.window().invalidated().empty());
    session.type(u"x");
    EXPECT_NE(session.state().text, text);
}

INSTANTIATE_TEST_SUITE_P(Every, CommandMemory, testing::ValuesIn(commands), [](const auto& tested) {
    std::string name = tested.param.name;
    std::ranges::replace(name, ' ', '_');
    return name;
});

} // namespace
} // namespace tavrin
