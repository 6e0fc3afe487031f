#include "EditorFixture.h"
#include "platform/ui/CPrintInfo.h"

namespace tavrin::test {
namespace {

/// `count` lines: 1, 2, 3 and so on.
std::u16string numbered(int count) {
    std::string text;
    for (int i = 1; i <= count; ++i)
        text += std::to_string(i) + (i < count ? "\n" : "");
    return {text.begin(), text.end()};
}

class Printing : public Editor {
  protected:
    void setPaper(CSize paper, CPoint offset, CSize cell) {
        printer().device.cell = cell;
        printer().device.caps = {paper.cx - 2 * offset.x,
                                 paper.cy - 2 * offset.y,
                                 254,
                                 254,
                                 offset.x,
                                 offset.y,
                                 paper.cx,
                                 paper.cy};
    }
    void setOption(std::string_view key) { platform_.settings().setBoolValue("Xml Editor", key, true); }

    HeadlessPrinter& printer() { return platform_.printer(); }
    const PrintedJob& print(UINT command = ID_FILE_PRINT) {
        ctrl_->SendCommand(command);
        return printer().jobs().back();
    }
    /// The rows of each page, each as its texts joined.
    std::vector<std::vector<std::u16string>> rows() {
        std::vector<std::vector<std::u16string>> result;
        for (const PrintedPage& page : print().pages) {
            std::vector<std::u16string>& lines = result.emplace_back();
            int y = -1;
            for (const DrawnText& text : page.texts()) {
                if (text.y != y)
                    lines.emplace_back();
                y = text.y;
                lines.back() += text.text;
            }
        }
        return result;
    }
    std::vector<UINT> pageNumbers(const PrintedJob& job) {
        std::vector<UINT> numbers;
        for (const PrintedPage& page : job.pages)
            numbers.push_back(page.number);
        return numbers;
    }
};

using Pages = std::vector<std::vector<std::u16string>>;

TEST_F(Printing, countsPagesByWholeLines) {
    struct Case {
        int lines;
        CSize paper;
        CPoint offset;
        int lineHeight;
        std::size_t pages;
        std::size_t onLastPage;
    };
    const Case cases[] = {
        {0, {2100, 1000}, {0, 0}, 20, 1, 0},     {1, {2100, 1000}, {0, 0}, 20, 1, 1},
        {50, {2100, 1000}, {0, 0}, 20, 1, 50},   {51, {2100, 1000}, {0, 0}, 20, 2, 1},
        {100, {2100, 1000}, {0, 0}, 20, 2, 50},  {101, {2100, 1000}, {0, 0}, 20, 3, 1},
        {101, {2100, 1019}, {0, 0}, 20, 3, 1},   // a line that does not fit whole
        {101, {2100, 1060}, {30, 20}, 20, 3, 1}, // the offset counts thrice
        {3, {2100, 1000}, {0, 0}, 1000, 3, 1},   // one line a page
        {3, {2100, 1000}, {0, 0}, 1001, 1, 0},   // a font taller than the paper
        {3, {2100, 1000}, {900, 400}, 20, 1, 0}, // offsets that leave less than nothing
        {3, {-2100, -1000}, {0, 0}, 20, 1, 0},   // a driver's nonsense
        {3, {2100, 1000}, {0, 0}, 0, 1, 3},
    };
    for (const Case& c : cases) {
        setPaper(c.paper, c.offset, {10, c.lineHeight});
        setText(numbered(c.lines));
        if (c.lines == 0)
            ctrl_->getBuffer().reset();
        const PrintedJob& job = print();
        ASSERT_EQ(job.pages.size(), c.pages) << c.lines << " lines of " << c.lineHeight;
        EXPECT_TRUE(job.finished);
        const std::vector<DrawnText> last = job.pages.back().texts();
        EXPECT_EQ(last.size(), c.onLastPage) << c.lines << " lines of " << c.lineHeight;
        for (std::size_t i = 0; i < last.size(); ++i) {
            EXPECT_EQ(last[i].y, static_cast<int>(i) * std::max(1, c.lineHeight));
            EXPECT_EQ(last[i].x, 0);
        }
    }
}

TEST_F(Printing, countsFromTheContextsOrigin) {
    setPaper({2100, 1000}, {0, 0}, {10, 20});
    RecordingDC dc(printer().device);
    dc.SetViewportOrg({30, 40});
    EXPECT_EQ(ctrl_->getContentPrintRect(dc), (CRect{-30, -40, 2070, 960}));
}

TEST_F(Printing, runsPrepareBeginPagesEnd) {
    setPaper({2100, 40}, {0, 0}, {10, 20});
    setText(numbered(7));
    ctrl_->SetDocumentTitle(u"seven.xml");
    const PrintedJob& all = print();
    EXPECT_EQ(all.title, u"seven.xml");
    EXPECT_EQ(all.announced, 4U);
    EXPECT_EQ(pageNumbers(all), (std::vector<UINT>{1, 2, 3, 4}));
    EXPECT_FALSE(all.direct);
    EXPECT_TRUE(print(ID_FILE_PRINT_DIRECT).direct);
    const PrintedJob& shown = print(ID_FILE_PRINT_PREVIEW);
    EXPECT_TRUE(shown.preview);
    EXPECT_EQ(shown.pages.size(), 4U);

    printer().wanted = {{9, 3, 2, 0}};
    const PrintedJob& some = print();
    EXPECT_EQ(pageNumbers(some), (std::vector<UINT>{3, 2})) << "those that exist, in the order asked for";
    EXPECT_EQ(some.pages[0].texts().at(0).text, u"5");
    EXPECT_EQ(print(ID_FILE_PRINT_PREVIEW).pages.size(), 4U) << "a preview shows everything";
    printer().wanted.reset();

    printer().cancelAfter = 2;
    const PrintedJob& cancelled = print();
    EXPECT_EQ(cancelled.pages.size(), 2U);
    EXPECT_FALSE(cancelled.finished);
    printer().cancelAfter = -1;

    const std::size_t before = printer().jobs().size();
    printer().accepts = false;
    EXPECT_TRUE(ctrl_->SendCommand(ID_FILE_PRINT));
    EXPECT_EQ(printer().jobs().size(), before) << "a cancelled dialog prints nothing";
    CPrintInfo cancelledInfo;
    EXPECT_FALSE(ctrl_->OnPreparePrinting(&cancelledInfo));

    printer().accepts = true;
    printer().hasPrinter = false;
    CPrintInfo info;
    EXPECT_TRUE(ctrl_->OnPreparePrinting(&info)) << "no printer, and the count of pages is left alone";
    EXPECT_EQ(info.GetMaxPage(), CPrintInfo::defaultMaxPage);
    EXPECT_TRUE(print().pages.empty());
}

TEST_F(Printing, aPageNeedsNoPreparation) {
    setPaper({2100, 40}, {0, 0}, {10, 20});
    setText(numbered(5));
    RecordingDC dc(printer().device);
    CPrintInfo info;
    info.m_nCurPage = 3;
    ctrl_->OnPrint(&dc, &info);
    ASSERT_EQ(dc.texts().size(), 1U);
    EXPECT_EQ(dc.texts()[0].text, u"5");
    info.m_nCurPage = 4;
    ctrl_->OnPrint(&dc, &info);
    info.m_nCurPage = ~0U;
    ctrl_->OnPrint(&dc, &info);
    EXPECT_EQ(dc.texts().size(), 1U);
}

TEST_F(Printing, wrapsLongLinesWithAMark) {
    setPaper({100, 60}, {0, 0}, {10, 20}); // ten cells, three rows
    setOption("Print Wrapped Lines");
    struct Case {
        std::u16string text;
        Pages pages;
    };
    const Case cases[] = {
        {u"0123456789", {{u"0123456789"}}},
        {u"0123456789a", {{u"\u00BB012345678", u"9a"}}},
        // A tab goes on to where it would on a line of any length, and may be cut.
        {u"01234567\tb\tc", {{u"\u00BB01234567", u"    b    c"}}},
        {u"012345678\tb", {{u"\u00BB012345678", u"    b"}}},
        // No pair is parted, an overlong last row begins the next page.
        {u"01234567\U0001F600"
         u"9",
         {{u"\u00BB01234567", u"\U0001F600"
                              u"9"}}},
        {std::u16string(28, u'x') + u"\ny",
         {{u"\u00BBxxxxxxxxx", u"\u00BBxxxxxxxxx", u"xxxxxxxxxx"}, {u"y"}}},
        {std::u16string(29, u'x'), {{u"\u00BBxxxxxxxxx", u"\u00BBxxxxxxxxx", u"\u00BBxxxxxxxxx"}, {u"xx"}}},
    };
    for (const Case& c : cases) {
        setText(c.text);
        EXPECT_EQ(rows(), c.pages);
    }
    setText(u"<a>" + std::u16string(20, u'x') + u"</a>");
    const std::vector<DrawnText> texts = print().pages.at(0).texts();
    EXPECT_EQ(texts[0].x, 90) << "the mark stands at the edge";
    EXPECT_EQ(texts.back().text, u">");
    EXPECT_EQ(texts.back().fore, ctrl_->getTextColor(10)) << "colours go on in the next row";
    EXPECT_EQ(texts.back().y, 40);

    setText(u"012345678\tb");
    EXPECT_EQ(print().pages.at(0).texts().back().x, 30) << "a tab stop counts from the line's first row";

    setPaper({5, 60}, {0, 0}, {10, 20}); // narrower than a character
    setText(u"abcd");
    EXPECT_EQ(rows().size(), 2U) << "one character a row at least";
}

TEST_F(Printing, wrappingAVeryLongLineCutsItLikeShortPieces) {
    setPaper({100, 2000}, {0, 0}, {10, 20});
    setOption("Print Wrapped Lines");
    setText({});
    ctrl_->insert(0, 0, std::u16string(10'000, u'x')); // one line, as pasted
    const Pages pages = rows();
    ASSERT_EQ(pages.size(), 12U);
    EXPECT_EQ(pages[5].size(), 100U);
    EXPECT_EQ(pages[11].back(), u"xxxxxxxxxx") << "1110 rows of nine, and the rest without a mark";
}

TEST_F(Printing, numbersLinesAndHeadsPagesOnRequest) {
    setPaper({200, 100}, {0, 0}, {10, 20}); // twenty cells, five rows
    setOption("Print Line Numbers");
    setOption("Print Header");
    ctrl_->SetDocumentTitle(u"a-name-that-is-too-long.xml\n");
    setText(numbered(10) + u"\n\tten");
    const PrintedJob& job = print();
    ASSERT_EQ(job.pages.size(), 4U) << "the header takes two rows of five";
    const std::vector<DrawnText> texts = job.pages[3].texts();
    struct Expected {
        int x;
        int y;
        std::u16string text;
    };
    const Expected expected[] = {{0, 0, u"a-name-tha..."}, {150, 0, u"4 / 4"}, {0, 40, u"10"},
                                 {40, 40, u"10"},          {0, 60, u"11"},     {40, 60, u"    "},
                                 {80, 60, u"ten"}};
    ASSERT_EQ(texts.size(), std::size(expected));
    for (std::size_t i = 0; i < texts.size(); ++i) {
        EXPECT_EQ(texts[i].x, expected[i].x) << i;
        EXPECT_EQ(texts[i].y, expected[i].y) << i;
        EXPECT_EQ(texts[i].text, expected[i].text);
        EXPECT_EQ(texts[i].fore, ctrl_->getTextColor(0)) << "the gutter's colour would not show on paper";
        EXPECT_EQ(texts[i].back, std::nullopt);
    }
    setOption("Print Wrapped Lines");
    setText(std::u16string(40, u'w'));
    EXPECT_EQ(rows().at(0), (std::vector<std::u16string>{u"a-name-tha...1 / 1", u"1\u00BBwwwwwwwwwwwwwwww",
                                                         u"\u00BBwwwwwwwwwwwwwwww", u"wwwwwwww"}));
}

} // namespace
} // namespace tavrin::test
