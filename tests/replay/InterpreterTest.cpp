#include "replay/Interpreter.h"

#include "support.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace tavrin::replay {
namespace {

using Lines = std::vector<std::string>;

/// What the script prints, then its error if it has one.
Lines outcome(const std::string& script) {
    ReplaySession session;
    Lines lines;
    Interpreter interpreter(session, [&](int, const std::string& json) { lines.push_back(json); });
    std::istringstream in(script);
    try {
        interpreter.run(in);
    } catch (const ReplayError& error) {
        lines.emplace_back(error.what());
    }
    return lines;
}

TEST(Interpreter, countsLinesFromOneAndStopsAtTheFirstBadOne) {
    EXPECT_EQ(outcome("# one\r\n\r\n\t print  lines \r\nprint nothing\nprint lines\n"),
              (Lines{"0", "line 4: unknown word after print 'nothing'"}));
    EXPECT_EQ(outcome("print lines"), Lines{"0"}) << "the last line needs no line feed";
}

TEST(Interpreter, saysWhatIsWrongWithALine) {
    struct Case {
        std::string_view line;
        std::string_view reason;
    };
    for (const Case& c : {
             Case{"Text \"a\"", "unknown command 'Text'"},
             Case{"print", "what to print is missing"},
             Case{"print line", "the line is missing (usage: print line N)"},
             Case{"print line 1", "the text has no line 1"},
             Case{"print line -1", "the text has no line -1"},
             Case{"print text 1", "nothing expected at '1' (usage: print text)"},
             Case{"caret 0", "the column is missing (usage: caret L C)"},
             Case{"caret 0 4", "line 0 has no column 4"},
             Case{"caret 0 -1", "line 0 has no column -1"},
             Case{"select 0 0 1 0", "the text has no line 1"},
             Case{"key Foo", "unknown key 'Foo'"},
             Case{"key", "the key's name is missing (usage: key NAME)"},
             Case{"type abc", "the text: a JSON string is needed (usage: type STRING)"},
             Case{"type \"abc\"d", "a blank is missing before 'd' (usage: type STRING)"},
             Case{"wheel 1.5", "the number of notches must be an integer, not '1.5' (usage: wheel N)"},
             Case{"press 1 2 Ctrl", "only Shift may follow the point, not 'Ctrl' (usage: press X Y [Shift])"},
             Case{"resize 1 -1", "the height must lie between 0 and 1000000 (usage: resize W H)"},
             Case{"focus yes", "on or off is needed, not 'yes' (usage: focus on|off)"},
             Case{"open no/such/file", "can't open 'no/such/file': No such file or directory"},
             Case{"save no/such/file", "can't save 'no/such/file': No such file or directory"},
             Case{"setting K", "the setting's value is missing (usage: setting KEY VALUE)"},
             Case{"call", "the operation's name is missing"},
             Case{"call handleLeft", "unknown operation 'handleLeft'"},
             Case{"call setCaret 0 0 yes",
                  "whether to scroll must be true or false, not 'yes' (usage: call setCaret L C true|false)"},
             Case{"call split 9 9", "the text has no line 9"},
             Case{"options save", "the options page is not open"},
             Case{"options", "what to do is missing (usage: options open|item NAME|fore COLOUR|back COLOUR|"
                             "font NAME|size N|numbers on|off|scheme NAME|save|cancel)"},
         }) {
        EXPECT_EQ(outcome("text \"abc\"\n" + std::string(c.line)), Lines{"line 2: " + std::string(c.reason)});
    }
}

TEST(Interpreter, aBadLineChangesNothing) {
    ReplaySession session;
    Interpreter interpreter(session, [](int, const std::string&) {});
    for (const char* line : {"text \"abc\"", "caret 0 2"}) {
        std::istringstream in(line);
        interpreter.run(in);
    }
    for (const char* line : {"text \"x\" y", "type \"x\" y", "key Left y", "select 0 1 0 9", "update y",
                             "command 57642 y", "print invalid y", "call OnEditSelectAll y"}) {
        std::istringstream in(line);
        EXPECT_THROW(interpreter.run(in), ReplayError) << line;
    }
    EXPECT_EQ(session.editor().getText(), u"abc");
    EXPECT_EQ(session.editor().getCurrentColoumn(), 2);
    EXPECT_FALSE(session.editor().hasSelection());
    EXPECT_FALSE(session.window().invalidated().empty());
}

/// The names of a table that the manual does not mention as code.
template <class Entry>
Lines undocumented(std::span<const Entry> table, std::string_view before, const std::string& manual) {
    Lines missing;
    for (const Entry& entry : table) {
        std::string heading = "`" + std::string(before) + std::string(entry.name);
        if (!entry.arguments.empty())
            heading += " " + std::string(entry.arguments);
        for (std::size_t bar = 0; (bar = heading.find('|', bar)) != std::string::npos; bar += 2)
            heading.insert(bar, "\\"); // as tables of the manual need it
        if (manual.find(heading + "`") == std::string::npos)
            missing.push_back(heading);
    }
    return missing;
}

TEST(Interpreter, everyWordIsInTheManualWithItsArguments) {
    std::ostringstream text;
    text << std::ifstream(TAVRIN_REPLAY_MANUAL).rdbuf();
    ASSERT_FALSE(text.str().empty());
    EXPECT_EQ(undocumented(commands(), "", text.str()), Lines{});
    EXPECT_EQ(undocumented(questions(), "print ", text.str()), Lines{});
    EXPECT_EQ(undocumented(operations(), "call ", text.str()), Lines{});
}

/// Lines of any commands but those that touch files, most of them with arguments that make sense.
class RandomScript {
  public:
    explicit RandomScript(unsigned seed) : random_(seed) {}

    std::string line() {
        switch (random_.below(4)) {
        case 0:
            return "key " + modifiers() +
                   pick({"Left",     "Right",  "Up",        "Down",   "Home",  "End",   "PageUp",
                         "PageDown", "Return", "Backspace", "Delete", "Tab",   "Z",     "Y",
                         "A",        "C",      "X",         "V",      "Space", "Escape"});
        case 1:
            return "type " + pick({R"("<a b='")", R"("\"c\">")", R"("<!--")", R"("-->\t")", R"("]]>")",
                                   R"("\ud800")", R"("<![CDATA[")"});
        case 2:
            return fill(random_.pick(commands()));
        default:
            return "call " + fill(random_.pick(operations()));
        }
    }

  private:
    std::string pick(std::initializer_list<const char*> words) {
        return *(words.begin() + random_.below(static_cast<int>(words.size())));
    }
    std::string modifiers() { return pick({"", "", "Shift+", "Ctrl+", "Ctrl+Shift+"}); }

    /// Arguments by the words of the grammar.
    std::string fill(const Command& command) {
        if (command.name == "open" || command.name == "save")
            return "update";
        if (command.name == "options")
            return "options " + pick({"open", "open", "item String", "item Normal", "fore 255",
                                      "back 33554432", "font Courier", "size 12", "size 0", "size \"\"",
                                      "numbers off", "scheme Dark", "save", "cancel"});
        std::string line(command.name);
        std::istringstream words{std::string(command.arguments)};
        for (std::string word; words >> word;)
            line += " " + argument(word);
        return line;
    }
    std::string argument(const std::string& word) {
        if (word == "STRING")
            return pick(
                {R"("")", R"("x")", R"("<a>\n\t<b/>\n</a>")", R"("\r\n\r\n<!--")", R"("\ud83d\ude00")"});
        if (word == "true|false")
            return pick({"true", "false"});
        if (word == "on|off")
            return pick({"on", "off"});
        if (word.front() == '[' && word.back() == ']') // a word that may be left out
            return random_.below(2) ? word.substr(1, word.size() - 2) : "";
        if (word == "NAME")
            return pick({"a", "F5", "Insert"});
        if (word == "KEY")
            return pick({"\"Font Size\"", "\"Display Line Numbers\"", "\"Fore Color Normal\""});
        if (word == "VALUE")
            return pick({"-1", "0", "12", "true", "false", "\"x\"", "33554432"});
        if (word == "ID")
            return std::to_string(57634 + random_.below(12));
        if (word == "W" || word == "H")
            return std::to_string(random_.below(300));
        return std::to_string(random_.below(5) ? random_.below(4) : random_.below(400) - 100);
    }

    test::Random random_;
};

TEST(Interpreter, noSequenceOfCommandsBreaksTheEditor) {
    constexpr unsigned scripts = 100;
    constexpr int linesOfAScript = 120;
    for (unsigned seed = 1; seed <= scripts; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomScript random(seed);
        ReplaySession session;
        Interpreter interpreter(session, [](int, const std::string&) {});
        for (int i = 0; i < linesOfAScript; ++i) {
            const std::string line = random.line();
            SCOPED_TRACE(line);
            std::istringstream in(line + "\nprint frame\nkey Shift+Left\n");
            try {
                interpreter.run(in);
            } catch (const ReplayError&) {
                continue; // a position outside the text
            }
            ASSERT_NO_THROW(session.buffer().checkInvariants());
            if (session.editor().isDragging())
                continue; // a drag discards the key, which would have limited caret and pivot
            ASSERT_NO_THROW(session.editor().checkInvariants());
        }
    }
}

} // namespace
} // namespace tavrin::replay
