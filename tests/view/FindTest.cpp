#include "EditorFixture.h"
#include "buffer/RecordingParser.h"
#include "files/TextFileContents.h"
#include "platform/ui/CFindReplaceDialog.h"
#include "support.h"

#include <algorithm>
#include <optional>

namespace tavrin::test {
namespace {

class FindAndReplace : public Editor {
  protected:
    void request(UINT flags, std::u16string_view what, std::u16string_view with = {}) {
        CFindReplaceDialog::send(*ctrl_, {flags, what, with});
    }
    void load(std::string_view bytes) {
        const SmartPtr<ByteBuffer> block = ByteBuffer::allocate(bytes.size());
        std::ranges::copy(bytes, block->data());
        ctrl_->getBuffer().loadBytes(block);
        ctrl_->OnNewDocument();
    }
    [[nodiscard]] const std::u16string& status() const { return ctrl_->getFrame()->GetMessageText(); }
    [[nodiscard]] std::string text() { return joined(ctrl_->getBuffer()); }

    /// Position as the number of code units before it, a line break counting as one; cuts count nothing.
    [[nodiscard]] int offset(int line, int col) {
        const Buffer& buffer = ctrl_->getBuffer();
        int units = col;
        for (int l = 0; l < line; ++l)
            units += buffer.getLineLength(l) + (buffer.getContinuesPrevious(l + 1) ? 0 : 1);
        return units;
    }
};

/// The same text without cuts, searched and changed step by step by the buffer's own operations.
class PlainText {
  public:
    explicit PlainText(std::u16string_view text) {
        buffer_.setParser(&parser_);
        int line = 0;
        int col = 0;
        buffer_.insertText(0, 0, text, line, col);
    }

    /// The offset of the next match, or nothing.
    std::optional<int> find(int from, std::u16string_view what, int flags) const {
        int line = 0;
        for (; from > buffer_.getLineLength(line); ++line)
            from -= buffer_.getLineLength(line) + 1;
        int col = 0;
        if (!buffer_.find(line, from, what, flags, line, col))
            return {};
        for (int l = 0; l < line; ++l)
            col += buffer_.getLineLength(l) + 1;
        return col;
    }

    int replaceAll(std::u16string_view what, std::u16string_view with, int flags) {
        int count = 0;
        int line = 0;
        int col = 0;
        while (buffer_.find(line, col, what, FIND_DOWN | flags, line, col)) {
            buffer_.erase(line, col, line, col + static_cast<int>(what.size()));
            buffer_.insertText(line, col, with, line, col);
            ++count;
        }
        return count;
    }

    [[nodiscard]] std::u16string text() const {
        std::u16string out;
        const int last = buffer_.getLineCount() - 1;
        buffer_.getText(0, 0, last, buffer_.getLineLength(last), out);
        return out;
    }

  private:
    RecordingParser parser_;
    Buffer buffer_;
};

std::u16string withLineFeeds(std::u16string text) {
    std::erase(text, u'\r');
    return text;
}

std::u16string randomText(Random& random, bool longLines) {
    std::u16string text;
    for (int lines = 1 + random.below(4); lines > 0; --lines) {
        const int length = longLines ? random.below(1400) : random.below(12);
        for (int i = 0; i < length; ++i)
            text += random.pick(std::u16string_view(u"aaAbB."));
        if (lines > 1)
            text += u'\n';
    }
    return text;
}

// Long lines are loaded in cut pieces; nobody who finds and replaces should notice.
TEST_F(FindAndReplace, actsOnRandomTextAsIfLinesWereNeverCut) {
    for (unsigned seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const bool longLines = seed % 3 != 0;
        const std::u16string text = randomText(random, longLines) + u"a"; // no empty last line
        const PlainText plain(text);
        setText(text);
        ASSERT_EQ(withLineFeeds(ctrl_->getText()), text);

        std::u16string what;
        if (longLines && random.oneIn(8))
            what =
                text.substr(0, text.find(u'\n')).substr(0, static_cast<std::size_t>(random.below(1200)) + 1);
        while (what.size() < 1 + static_cast<std::size_t>(random.below(5)))
            what += random.pick(std::u16string_view(u"aAb."));
        // Which occurrence a rejected word ends depends on what a line is.
        const int word = longLines ? 0 : random.below(2) * FIND_WHOLE_WORD;
        for (int i = 0; i < 12; ++i) {
            const bool up = random.oneIn(3);
            const bool exact = random.oneIn(2);
            const int flags = (up ? FIND_UP : FIND_DOWN) | FIND_WRAP | (exact ? FIND_MATCH_CASE : 0) | word;
            const int start = offset(ctrl_->getCurrentLine(), ctrl_->getCurrentColoumn());
            request(FR_FINDNEXT | (up ? 0U : FR_DOWN) | (exact ? FR_MATCHCASE : 0U) |
                        (word ? FR_WHOLEWORD : 0U),
                    what);
            const auto expected = plain.find(start, what, flags);
            const bool found = ctrl_->hasSelection();
            ASSERT_EQ(found, expected.has_value()) << i;
            if (!found)
                continue;
            const auto [caretLine, caretCol] = caret();
            const int ends[] = {offset(caretLine, caretCol),
                                offset(ctrl_->getPivotLine(), ctrl_->getPivotCol())};
            ASSERT_EQ(ends[up ? 0 : 1], *expected) << i;
            ASSERT_EQ(ends[up ? 1 : 0], *expected + static_cast<int>(what.size())) << i;
            if (random.oneIn(4))
                ctrl_->gotoLineCol(random.below(ctrl_->getBuffer().getLineCount()), 0);
            else if (ctrl_->getCurrentLine() == ctrl_->getPivotLine())
                ctrl_->updatePivot();
        }

        const std::u16string with =
            random.pick(std::vector<std::u16string>{u"", u"x", u"aab", u"\n", u"a\nb."});
        const bool exact = random.oneIn(2);
        PlainText changed(text);
        const int count = changed.replaceAll(what, with, (exact ? FIND_MATCH_CASE : 0) | word);
        const bool modified = ctrl_->isModified();
        request(FR_REPLACEALL | (exact ? FR_MATCHCASE : 0U) | (word ? FR_WHOLEWORD : 0U), what, with);
        ASSERT_EQ(withLineFeeds(ctrl_->getText()), changed.text());
        const std::string number = std::to_string(count);
        ASSERT_EQ(status(),
                  count == 0 ? u"No occurences of the text found"
                             : u"Replaced " + std::u16string(number.begin(), number.end()) + u" occurences");
        ctrl_->getBuffer().checkInvariants();
        ctrl_->checkInvariants();
        ctrl_->OnEditUndo();
        ASSERT_EQ(withLineFeeds(ctrl_->getText()), text);
        ASSERT_EQ(ctrl_->isModified(), modified);
        ASSERT_FALSE(ctrl_->CanUndo()) << "one step";
        ctrl_->OnEditRedo();
        ASSERT_EQ(withLineFeeds(ctrl_->getText()), changed.text());
        ctrl_->OnNewDocument();
    }
}

// In a line that was cut on load, whose bytes nobody has read: inside pieces, over cuts, and over the edges
// of what the buffer keeps together.
TEST_F(FindAndReplace, findsOverCutsInUnreadBytes) {
    constexpr int piece = Buffer::maxLoadedLineLength;
    constexpr int page = piece * LineStore::pageLines;
    const std::u16string_view what = u"Needle";
    for (const int at : {0, 100, piece - 3, page - 600, page - 6, page - 5, page - 1, page, 2 * page - 2,
                         2 * page + 100, 3 * page - 20})
        for (const bool isEdited : {false, true}) {
            SCOPED_TRACE(std::to_string(at) + (isEdited ? ", edited" : ""));
            std::string bytes(static_cast<std::size_t>(3 * page), '-');
            std::ranges::copy(what, bytes.begin() + at);
            ctrl_->getBuffer().loadBytes(blockOf(bytes));
            const int last = ctrl_->getBuffer().getLineCount() - 1;
            if (isEdited) // the page is no longer that of the bytes
                ctrl_->insert(LineStore::pageLines, piece, u"x");
            for (const bool exact : {false, true})
                for (const bool up : {false, true}) {
                    ctrl_->gotoLineCol(up ? last : 0, up ? ctrl_->getBuffer().getLineLength(last) : 0);
                    request(FR_FINDNEXT | (up ? 0U : FR_DOWN) | (exact ? FR_MATCHCASE : 0U),
                            exact ? what : u"nEEdle");
                    const auto [line, col] = caret();
                    const int ends[] = {offset(line, col),
                                        offset(ctrl_->getPivotLine(), ctrl_->getPivotCol())};
                    const bool isBehindEdit = isEdited && at > page + piece;
                    ASSERT_EQ(std::min(ends[0], ends[1]), at + isBehindEdit);
                    ASSERT_EQ(std::max(ends[0], ends[1]), at + isBehindEdit + static_cast<int>(what.size()));
                }
            ctrl_->OnNewDocument();
        }
}

// Whole pages are searched and changed by their bytes.
TEST_F(FindAndReplace, replaceInManyLinesAsOneAfterTheOther) {
    for (unsigned seed = 1; seed <= 80; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        static constexpr std::u16string_view alphabets[] = {u"aaAbB.", u"aAb.\u00E9\u00C9",
                                                            u"aAbk\u20AC\u212A"};
        const std::u16string_view alphabet = alphabets[seed % 3];
        const bool isLatin1 = seed % 3 == 1 && random.oneIn(2);
        const UINT word = random.oneIn(4) ? UINT{FR_WHOLEWORD} : 0; // then no line is cut, see above
        std::u16string text = isLatin1 ? u"<?xml version='1.0' encoding='iso-8859-1'?>\n" : u"";
        for (int line = 300 + random.below(600); line > 0; --line) {
            for (int i = random.below(word == 0 && random.oneIn(150) ? 900 : 12); i > 0; --i)
                text += random.oneIn(3) ? random.pick(alphabet) : u'a';
            text += u'\n';
        }
        text += u'a';
        PlainText changed(text);
        setText(text);
        if (!random.oneIn(3)) {
            TextEncoder encoder(isLatin1 ? ENCODING_LATIN1 : ENCODING_UTF8);
            std::string bytes;
            encoder.encode(text, bytes);
            load(bytes);
        }
        constexpr int rounds = 4; // most of them on pages that were changed before
        for (int i = 0; i < rounds; ++i) {
            std::u16string what(1, random.pick(alphabet));
            if (random.oneIn(2))
                what += random.pick(alphabet);
            const auto with = random.pick(std::vector<std::u16string>{u"", u"x", u"aab", u"A", u"\u00E9",
                                                                      i + 1 == rounds ? u"a\nb" : u"ab"});
            const bool exact = random.oneIn(2);
            const int count =
                changed.replaceAll(what, with, (exact ? FIND_MATCH_CASE : 0) | (word ? FIND_WHOLE_WORD : 0));
            request(FR_REPLACEALL | (exact ? FR_MATCHCASE : 0U) | word, what, with);
            ASSERT_TRUE(withLineFeeds(ctrl_->getText()) == changed.text()) << i;
            const std::string number = std::to_string(count);
            ASSERT_EQ(count > 0, status() == u"Replaced " + std::u16string(number.begin(), number.end()) +
                                                 u" occurences");
            ctrl_->getBuffer().checkInvariants();
        }
        while (ctrl_->CanUndo())
            ctrl_->OnEditUndo();
        ASSERT_TRUE(withLineFeeds(ctrl_->getText()) == text);
        while (ctrl_->CanRedo())
            ctrl_->OnEditRedo();
        ASSERT_TRUE(withLineFeeds(ctrl_->getText()) == changed.text());
        ctrl_->getBuffer().checkInvariants();
        ctrl_->OnNewDocument();
    }
}

std::string asciiLower(std::string text) {
    for (char& c : text)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    return text;
}

std::string replacedInText(const std::string& text, const std::string& what, std::string_view with,
                           bool exact) {
    const std::string searched = exact ? text : asciiLower(text);
    const std::string folded = exact ? what : asciiLower(what);
    std::string out;
    std::size_t done = 0;
    for (std::size_t at = searched.find(folded); at != searched.npos; at = searched.find(folded, done)) {
        out.append(text, done, at - done).append(with);
        done = at + what.size();
    }
    return out.append(text, done);
}

// Unread pages of cut lines are changed by their bytes. Lines end up where they do in pages that keep their
// lines in memory, and all together are the text replaced as a whole.
TEST_F(FindAndReplace, replaceInCutLinesByTheirBytes) {
    struct Line {
        std::u16string text;
        bool continues;
        LineEnd end;
        bool operator==(const Line&) const = default;
    };
    const auto lines = [this] {
        const Buffer& buffer = ctrl_->getBuffer();
        std::vector<Line> all;
        for (int line = 0; line < buffer.getLineCount(); ++line)
            all.push_back({std::u16string(buffer.getLineText(line)), buffer.getContinuesPrevious(line),
                           buffer.getLineEnd(line)});
        return all;
    };
    const auto written = [this] {
        std::string bytes;
        textFileContents(ctrl_->getBuffer())([&](std::string_view piece) {
            bytes += piece;
            return true;
        });
        return bytes;
    };
    int pagesInBytes = 0;
    for (unsigned seed = 1; seed <= 12; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        static const std::vector<std::string> lineBreaks = {"\n", "\r\n", "\r"};
        std::string text;
        while (text.size() < 300'000) {
            for (int i = random.below(random.oneIn(3) ? 1200 : 400'000); i > 0; --i)
                text += random.pick(std::string_view("aaaaaabB.\t"));
            text += random.pick(lineBreaks);
        }
        text += "a";
        std::vector<std::vector<Line>> states[2];
        for (const bool isChanged : {false, true}) {
            Random steps(seed);
            load(text);
            Buffer& buffer = ctrl_->getBuffer();
            for (int line = 0; isChanged && line < buffer.getLineCount(); line = buffer.chunkAt(line).end) {
                buffer.insert(line, 0, u'!');
                buffer.erase(line, 0, line, 1);
            }
            std::vector<std::string> texts = {text};
            for (int i = 0; i < 3; ++i) { // the second and third on what was replaced before
                const std::string what =
                    steps.pick(std::vector<std::string>{"ab", "bB.", "aaaaaaaaaa", "\t", "B"});
                const std::string with = steps.pick(std::vector<std::string>{"", "x", "longer", "abab"});
                const bool exact = steps.oneIn(2);
                const auto wide = [](const std::string& s) { return std::u16string(s.begin(), s.end()); };
                request(FR_REPLACEALL | (exact ? FR_MATCHCASE : 0U), wide(what), wide(with));
                ctrl_->checkInvariants();
                buffer.checkInvariants();
                for (int line = 0; line < buffer.getLineCount(); line = buffer.chunkAt(line).end)
                    if (const auto stored = buffer.getStoredLines(line))
                        pagesInBytes += stored->isPatched && stored->hasCuts;
                std::string expected = replacedInText(texts.back(), what, with, exact);
                if (expected != texts.back())
                    texts.push_back(std::move(expected));
                ASSERT_TRUE(written() == texts.back()) << what << " by " << with;
                states[isChanged].push_back(lines());
            }
            for (; ctrl_->CanUndo(); texts.pop_back()) {
                ASSERT_TRUE(written() == texts.back());
                ctrl_->OnEditUndo();
                states[isChanged].push_back(lines());
            }
            while (ctrl_->CanRedo())
                ctrl_->OnEditRedo();
            states[isChanged].push_back(lines());
            buffer.checkInvariants();
            ctrl_->OnNewDocument();
        }
        ASSERT_TRUE(states[0] == states[1]);
    }
    EXPECT_GT(pagesInBytes, 100);
}

struct Encoded {
    const char* name;
    std::string_view encoding;   ///< as the declaration names it; empty: UTF-16
    std::string_view characters; ///< of the text, beside words
    bool isValid = true;
};

constexpr Encoded encodings[] = {
    {"ASCII", "utf-8", "e"},
    {"UTF-8", "utf-8", "\xF0\x9F\x98\x80\xC3\xA9"},
    {"invalid", "utf-8", "\xFF", false},
    {"ISO-8859-1", "iso-8859-1", "\xE9"},
    {"converted", "windows-1251", "\xE6"},
    {"UTF-16", "", "e"},
};

/// Everything that was not replaced is saved as it was, and everything again after undo.
TEST_F(FindAndReplace, keepTheBytesOfAllElseInTheFile) {
    for (const Encoded& encoded : encodings)
        for (unsigned seed = 1; seed <= 12; ++seed) {
            SCOPED_TRACE(std::string(encoded.name) + ", seed " + std::to_string(seed));
            const auto fileOf = [&](std::string_view word) {
                Random same(seed);
                static constexpr std::string_view ends[] = {"\n", "\r\n", "\r"};
                const std::string_view usual = same.pick(ends);
                std::string file =
                    encoded.encoding == "utf-8" && seed % 3 == 0 ? "\xEF\xBB\xBF\xEF\xBB\xBF" : "";
                file += "<?xml version='1.0' encoding='" + std::string(encoded.encoding) + "'?>\n";
                for (int line = 600 + same.below(600); line > 0; --line) {
                    // A changed line would lose what is not valid.
                    const bool hasWords = same.oneIn(2);
                    const std::string_view beside = hasWords && !encoded.isValid ? "e" : encoded.characters;
                    for (int part = same.below(same.oneIn(300) ? 400 : 5); part > 0; --part)
                        file.append(same.oneIn(3) ? "WORD " : hasWords && same.oneIn(2) ? word : beside);
                    file += same.oneIn(200) ? same.pick(ends) : usual;
                }
                if (!encoded.encoding.empty())
                    return file;
                std::string units = "\xFF\xFE";
                for (const char c : file)
                    units.append({c, '\0'});
                return units;
            };
            const std::string before = fileOf("word");
            const std::string after = fileOf("another word");
            load(before);
            const Buffer& buffer = ctrl_->getBuffer();
            const auto written = [&] {
                buffer.checkInvariants();
                std::string bytes;
                textFileContents(buffer)([&](std::string_view piece) {
                    bytes += piece;
                    return true;
                });
                return bytes;
            };
            ctrl_->gotoLineCol(Random(seed).below(buffer.getLineCount()), 0);
            static_cast<void>(paint());
            request(FR_REPLACEALL | FR_MATCHCASE, u"word", u"another word");
            ASSERT_TRUE(written() == after);
            request(FR_REPLACEALL | FR_MATCHCASE, u"another ", u"");
            ASSERT_TRUE(written() == before);
            ctrl_->OnEditUndo();
            ASSERT_TRUE(written() == after);
            ctrl_->OnEditUndo();
            ASSERT_TRUE(written() == before);
            ctrl_->OnEditRedo();
            ASSERT_TRUE(written() == after);
            request(FR_REPLACEALL, u"ANOTHER", u"\u20AC");
            ctrl_->OnEditUndo();
            ASSERT_TRUE(written() == after);
        }
}

TEST_F(FindAndReplace, findsUpwardsWhatRunsOverACutIntoTheStartingLine) {
    setText(std::u16string(511, u'x') + u"ab" + std::u16string(600, u'y'));
    for (const auto& [line, col] : {std::pair(1, 0), std::pair(1, 1), std::pair(2, 5)}) {
        ctrl_->gotoLineCol(line, col);
        request(FR_FINDNEXT, u"ab");
        EXPECT_EQ(caret(), std::pair(0, 511)) << line << ' ' << col;
        EXPECT_TRUE(ctrl_->hasSelection());
    }
}

TEST_F(FindAndReplace, replacesOneAfterTheOtherOverCuts) {
    const std::u16string text = std::u16string(511, u'x') + u"ab" + std::u16string(600, u'y') + u"ab";
    setText(text);
    for (int i = 0; i < 3; ++i)
        request(FR_REPLACE | FR_DOWN, u"ab", u"1234");
    EXPECT_EQ(ctrl_->getText(), std::u16string(511, u'x') + u"1234" + std::u16string(600, u'y') + u"1234");
    EXPECT_EQ(ctrl_->getBuffer().getLineCount(), 3) << "cut as before";
    ctrl_->OnEditUndo();
    ctrl_->OnEditUndo();
    EXPECT_EQ(ctrl_->getText(), text);
    EXPECT_EQ(ctrl_->getBuffer().getLineCount(), 3);
}

TEST_F(FindAndReplace, stoppedByTheUserKeepWhatWasDone) {
    constexpr int lines = 100'000;
    std::u16string text;
    for (int i = 0; i < lines; ++i)
        text += u"<a/>\n";
    setText(text);

    platform_.stopNextTaskAt(2);
    request(FR_FINDNEXT | FR_DOWN, u"none");
    EXPECT_EQ(platform_.reports(), 2);
    EXPECT_EQ(status(), u"") << "not: not found";
    EXPECT_EQ(platform_.beeps(), 0);

    platform_.stopNextTaskAt(2);
    request(FR_REPLACEALL | FR_DOWN, u"a", u"bc");
    EXPECT_EQ(platform_.reports(), 2);
    EXPECT_EQ(status(), u"Replaced 65536 occurences");
    EXPECT_EQ(ctrl_->getBuffer().getLineText(65'535), u"<bc/>");
    EXPECT_EQ(ctrl_->getBuffer().getLineText(65'536), u"<a/>");
    EXPECT_EQ(platform_.waitCursors(), 0);

    request(FR_REPLACEALL | FR_DOWN, u"<", u"");
    EXPECT_EQ(status(), u"Replaced 100000 occurences");
    ctrl_->OnEditUndo();
    ctrl_->OnEditUndo();
    EXPECT_FALSE(ctrl_->CanUndo());
    text.pop_back();
    EXPECT_EQ(withLineFeeds(ctrl_->getText()), text);
    EXPECT_EQ(ctrl_->getBuffer().getCharFormat(0, 1), 7) << "and coloured again";
    EXPECT_EQ(ctrl_->getBuffer().getCharFormat(lines - 1, 1), 7);
}

TEST_F(FindAndReplace, historyUnderAnotherTextStaysInside) {
    setText(u"abc abc\nabc\nabc");
    request(FR_REPLACEALL | FR_DOWN, u"abc", u"defgh");
    ctrl_->setText(u"x abc");
    ctrl_->OnEditUndo();
    ctrl_->checkInvariants();
    ctrl_->OnEditRedo();
    ctrl_->setText(u"");
    ctrl_->OnEditUndo();
    ctrl_->checkInvariants();
    EXPECT_EQ(ctrl_->getText(), u"");
}

TEST_F(FindAndReplace, dialogsAskTheirViewAndEndWithIt) {
    setText(u"one two");
    ctrl_->OnEditReplace();
    ctrl_->OnEditFind();
    ASSERT_EQ(platform_.findDialogs().size(), 2U);
    HeadlessFindDialog& dialog = *platform_.findDialogs().front();
    dialog.findWhat = u"one";
    dialog.replaceWith = u"1";
    dialog.press(FR_FINDNEXT);
    EXPECT_EQ(ctrl_->getSelectedText(), u"one");
    dialog.press(FR_REPLACE);
    EXPECT_EQ(text(), "1 two");
    EXPECT_EQ(ctrl_->getSelectedText(), u"1");
    dialog.press(FR_REPLACEALL);
    EXPECT_EQ(status(), u"No occurences of the text found");
    dialog.close();
    EXPECT_EQ(status(), u"Ready");
    EXPECT_EQ(platform_.findDialogs().size(), 1U);
    ctrl_.reset();
    EXPECT_TRUE(platform_.findDialogs().empty()) << "without a request to a view that is gone";
    EXPECT_FALSE(platform_.createFindReplaceDialog()->Create(true, {}, {}, 0, nullptr));
    EXPECT_TRUE(platform_.findDialogs().empty());
}

TEST_F(FindAndReplace, searchTextIsSharedButOptionsAndReplacementAreNot) {
    setText(u"ab AB");
    TestedCtrl other(platform_);
    other.Create(host_.get(), {0, 0, 100, 100});
    CFindReplaceDialog::send(other, {FR_REPLACE | FR_MATCHCASE, u"AB", u"x"});
    ctrl_->OnEditFindNext();
    EXPECT_EQ(ctrl_->getSelectedText(), u"ab") << "any case, as this view's own options say";
    ctrl_->OnEditReplace();
    const HeadlessFindDialog& dialog = *platform_.findDialogs().back();
    EXPECT_EQ(dialog.replaceWith, u"");
    EXPECT_EQ(dialog.options, FR_DOWN);
}

TEST_F(FindAndReplace, startedAtTheCaretIncrementalSearchBeginsThere) {
    setText(u"ab ab ab");
    select(0, 8, 0, 3);
    ctrl_->startIncrementalSearch();
    EXPECT_EQ(status(), u"Search for: ");
    type(u"a");
    EXPECT_EQ(caret(), std::pair(0, 4));
    ctrl_->startIncrementalSearch(); // another one ends the first
    EXPECT_EQ(TestedCtrl::findText(), u"a");
    type(u"a");
    EXPECT_EQ(caret(), std::pair(0, 7));
    ctrl_->endIncrementalSearch();
    EXPECT_EQ(status(), u"Ready");
    EXPECT_EQ(ctrl_->getSelectedText(), u"a");
}

/// A frame as the program's main window may be, around the control's own.
TEST_F(FindAndReplace, statusGoesToTheFrameAroundTheControl) {
    auto* frame = new CFrameWnd(platform_); // deletes itself with its window
    frame->CreateWindowIn(nullptr, {.rect = {0, 0, 300, 300}});
    {
        TestedCtrl inside(platform_);
        inside.Create(frame, {0, 0, 100, 100});
        CFindReplaceDialog::send(inside, {FR_FINDNEXT, u"x", {}});
        EXPECT_EQ(frame->GetMessageText(), u"Searched to the top of page, text not found");
        EXPECT_EQ(platform_.beeps(), 1);
    }
    frame->DestroyWindow();
}

} // namespace
} // namespace tavrin::test
