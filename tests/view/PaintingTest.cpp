#include "EditorFixture.h"
#include "support.h"

#include <algorithm>

namespace tavrin::test {
namespace {

/// Which pixels of a client area were painted.
class Canvas {
  public:
    explicit Canvas(CSize size)
        : size_(size), painted_(static_cast<std::size_t>(size.cx) * static_cast<std::size_t>(size.cy)) {}

    void fill(CRect rect, const std::optional<CRect>& clip) {
        rect = rect.intersect({0, 0, size_.cx, size_.cy});
        if (clip)
            rect = rect.intersect(*clip);
        for (int y = rect.top; y < rect.bottom; ++y)
            for (int x = rect.left; x < rect.right; ++x)
                painted_[static_cast<std::size_t>(y * size_.cx + x)] = true;
    }

    [[nodiscard]] bool complete() const {
        return std::ranges::all_of(painted_, [](bool painted) { return painted; });
    }

  private:
    CSize size_;
    std::vector<bool> painted_;
};

class Painting : public Editor {
  protected:
    [[nodiscard]] bool paintsEveryPixel() const {
        Canvas canvas(window().clientSize());
        RecordingDC dc;
        window().paint(dc);
        for (const Drawing& drawing : dc.drawings()) {
            if (const auto* fill = std::get_if<DrawnFill>(&drawing)) {
                canvas.fill(fill->rect, fill->clip);
                continue;
            }
            const auto& text = std::get<DrawnText>(drawing);
            if (text.back)
                canvas.fill({text.x, text.y, text.x + static_cast<int>(text.text.size()) * 8, text.y + 16},
                            text.clip);
        }
        return canvas.complete();
    }
};

TEST_F(Painting, coversEveryPixelWithoutAnErase) {
    RecordingDC dc;
    MSG erase{.message = WM_ERASEBKGND};
    erase.dc = &dc;
    EXPECT_EQ(ctrl_->SendMessage(erase), 0);
    EXPECT_TRUE(dc.drawings().empty());

    const std::u16string texts[] = {
        u"",
        u"x",
        u"<a b=\"c\">\t\tx\ty</a>\n\n<!--\n\t\n-->\n\t<b/>\ttail " + std::u16string(80, u'w'),
        u"0\n1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n11\n12\n13\n14\n15",
    };
    for (const std::u16string& text : texts)
        for (const CSize size : {CSize{400, 160}, CSize{397, 155}, CSize{30, 7}, CSize{24, 160}}) {
            ctrl_->getFrame()->MoveWindow({0, 0, size.cx, size.cy});
            setText(text);
            ctrl_->OnEditSelectAll();
            for (const CSize by : {CSize{0, 0}, CSize{13, 5}, CSize{700, 29}}) {
                ctrl_->OnScrollBy(by, true);
                EXPECT_TRUE(paintsEveryPixel()) << text.size() << " characters, " << size.cx << "x" << size.cy
                                                << " scrolled by " << by.cx << "," << by.cy;
            }
        }
}

TEST_F(Painting, clipsTheTextToItsArea) {
    setText(u"abcdefgh");
    RecordingDC dc;
    window().paint(dc);
    for (const DrawnText& text : dc.texts()) {
        if (text.back)
            EXPECT_EQ(text.clip, ctrl_->getEditArea());
        else
            EXPECT_EQ(text.clip, std::nullopt) << "line numbers";
    }
}

TEST_F(Painting, readsOnlyTheLinesOnScreen) {
    std::u16string text;
    for (int i = 0; i < 1000; ++i)
        text += u"<a/>\n";
    setText(text);
    (void)paint();
    EXPECT_NE(ctrl_->getBuffer().getLineFlags(5), 0);
    EXPECT_EQ(ctrl_->getBuffer().getLineFlags(500), 0);
    EXPECT_EQ(paint().size(), 11U + 11U * 3U) << "numbers, and three runs a line, of eleven lines";
}

TEST_F(Painting, longLineIsDrawnFromNearWhatIsOnScreen) {
    std::u16string plain;
    for (int i = 0; i < 400; ++i)
        plain += u"<item id=\"" + std::u16string(1, static_cast<char16_t>(u'a' + i % 26)) + u"\">text</>";
    std::u16string tabbed = plain;
    for (std::size_t at = 100; at < tabbed.size(); at += 700)
        tabbed[at] = u'\t';
    std::u16string mixed = plain;
    mixed[4500] = u'\u0301';
    const struct {
        std::u16string text;
        std::size_t mostDrawn; ///< code units
    } lines[] = {{plain, 1200}, {tabbed, 1200}, {mixed, 4500}};
    for (const auto& [text, mostDrawn] : lines) {
        setText({});
        ctrl_->insert(0, 0, text); // not cut, as what is loaded is
        ctrl_->updateScrollbars();
        std::vector<int> lefts;
        for (int col = 0; col < static_cast<int>(text.size()); ++col)
            lefts.push_back(ctrl_->getTabbedStringWidth(text, col, 4));
        for (const int col : {0, 900, 1100, 4000, 8000}) {
            ctrl_->gotoLineCol(0, col);
            ASSERT_TRUE(paintsEveryPixel()) << col;
            RecordingDC dc;
            window().paint(dc);
            std::size_t drawn = 0;
            for (const DrawnText& piece : dc.texts()) {
                if (!piece.clip || piece.text.find_first_not_of(u' ') == piece.text.npos)
                    continue; // a line number, the gap of a tab
                drawn += piece.text.size();
                const int left = piece.x - ctrl_->getEditArea().left + ctrl_->GetScrollPos(SB_HORZ);
                const auto at = std::ranges::find(lefts, left) - lefts.begin();
                EXPECT_EQ(text.substr(static_cast<std::size_t>(at), piece.text.size()), piece.text) << col;
            }
            EXPECT_LE(drawn, mostDrawn) << col;
        }
    }
}

TEST_F(Painting, columnsOfLongLinesStandWhereMeasuringFromTheStartPutsThem) {
    test::Random random(20261123);
    std::u16string text;
    for (int i = 0; i < 6000; ++i)
        text += random.oneIn(90) ? u'\t' : static_cast<char16_t>(random.oneIn(9) ? 0xE4 : u'a' + i % 26);
    setText(u"first\nlast");
    for (int line = 0; line < 2; ++line)
        ctrl_->insert(line, 0, text);
    Buffer& buffer = ctrl_->getBuffer();
    const auto check = [&](int line) {
        const std::u16string_view now = buffer.getLineText(line);
        const int col = random.below(static_cast<int>(now.size()) + 1);
        const int x = ctrl_->getTabbedStringWidth(now, col, 4);
        const CPoint point = ctrl_->getPoint(line, col);
        ASSERT_EQ(point.x, ctrl_->getEditArea().left - ctrl_->GetScrollPos(SB_HORZ) + x) << col;
        ASSERT_EQ(ctrl_->getPositionAt({point.x, point.y}).col, col);
    };
    for (int step = 0; step < 400; ++step) {
        SCOPED_TRACE(step);
        const int line = random.below(2);
        const int length = buffer.getLineLength(line);
        const int col = random.below(length + 1);
        switch (random.below(8)) {
        case 0:
            ctrl_->erase(line, col, line, std::min(length, col + random.below(40)));
            break;
        case 1:
            ctrl_->SendCommand(random.oneIn(2) ? ID_EDIT_UNDO : ID_EDIT_REDO);
            break;
        case 2: {
            const Buffer::Transaction takenBack(buffer);
            buffer.insert(line, col, u'\t');
            break;
        }
        case 3:
            ctrl_->split(0, 0);
            check(1);
            ctrl_->erase(0, 0, 1, 0);
            break;
        default:
            ctrl_->insert(line, col, random.oneIn(2) ? u"\t" : u"xyz");
            break;
        }
        if (buffer.getLineCount() < 2)
            break;
        check(line);
        if (random.oneIn(2))
            check(1 - line);
    }
}

TEST_F(Painting, hugeSelectionAsksForTheLinesOnScreenOnly) {
    setText(std::u16string(5000, u'\n') + u"end");
    select(10, 0, 4990, 0);
    ctrl_->OnScrollBy({0, 16 * 100 + 3}, true);
    window().clearRecord();
    ctrl_->invalidateSelection();
    const std::vector<CRect>& asked = window().invalidated();
    ASSERT_EQ(asked.size(), 2U + 11U) << "both ends, and eleven lines of which two are cut";
    EXPECT_EQ(asked[1].top, -3);
    EXPECT_EQ(asked[11].top, 160 - 3);
}

TEST_F(Painting, onPaperNothingIsHighlightedOrFilledAndNoEdgeCutsTheLine) {
    setText(u"<tag>" + std::u16string(100, u'x') + u"<end>");
    select(0, 1, 0, 3);
    RecordingDevice printer;
    printer.printing = true;
    RecordingDC dc(printer);
    ctrl_->OnDraw(&dc);
    std::vector<DrawnText> texts = dc.texts();
    texts.erase(texts.begin()); // the line number
    ASSERT_EQ(texts.size(), 8U);
    EXPECT_EQ(texts[1].text, u"ta");
    EXPECT_EQ(texts[1].fore, ctrl_->getTextColor(0)) << "selected text loses its colour";
    EXPECT_EQ(texts[2].text, u"g");
    EXPECT_EQ(texts[2].fore, ctrl_->getTextColor(7));
    EXPECT_EQ(texts[7].text, u">");
    for (const DrawnText& text : texts)
        EXPECT_EQ(text.back, std::nullopt);
}

TEST_F(Painting, stalePositionsSelectNoMoreThanThereIs) {
    setText(u"one\ntwo\nthree");
    select(0, 2, 2, 4);
    ctrl_->setText(u"a\nb");
    const std::vector<DrawnText> texts = paint();
    ASSERT_EQ(texts.size(), 4U);
    EXPECT_EQ(texts[2].back, ctrl_->getBackgroundColor(0)) << "it begins behind the line's end";
    EXPECT_EQ(texts[3].back, ctrl_->getBackgroundColor(1));
}

} // namespace
} // namespace tavrin::test
