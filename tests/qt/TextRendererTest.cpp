#include "platform/qt/TextRenderer.h"

#include "QtFixture.h"

#include <QPainter>

namespace tavrin::qt {
namespace {

constexpr int left = 60;
constexpr int top = 30;

class TextRendererTest : public QtFixture {
  protected:
    TextRenderer& renderer(const char16_t* family = u"Courier New", int tenths = 100) {
        font_ = platform_.createPointFont(tenths, family);
        return static_cast<const QtFont*>(font_.get())->renderer();
    }

    /// The texts drawn one after the other on white.
    static QImage drawn(TextRenderer& renderer, std::initializer_list<std::u16string_view> texts,
                        qreal scale = 1) {
        QImage image(static_cast<int>(900 * scale), static_cast<int>(90 * scale), QImage::Format_RGB32);
        image.setDevicePixelRatio(scale);
        image.fill(Qt::white);
        QPainter painter(&image);
        painter.setPen(Qt::black);
        int x = left;
        for (const std::u16string_view text : texts) {
            renderer.draw(painter, x, top, text);
            x += renderer.width(text);
        }
        return image;
    }

    /// The columns and rows that differ from white.
    static QRect ink(const QImage& image) {
        QRect found;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (image.pixel(x, y) != 0xFFFFFFFF)
                    found |= QRect(x, y, 1, 1);
        return found;
    }

    std::unique_ptr<CFont> font_;
};

const std::u16string samples[] = {
    u"<element attribute=\"value\">",
    u"na\u00EFve caf\u00E9 \u0159e\u0161en\u00ED",
    u"e\u0301 o\u0308\u0323 q\u0301 \u0301 \u0915\u094D\u0937",
    u"\u6F22\u5B57\u304B\u306A mixed \u4E2D\u6587",
    u"\u0645\u0631\u062D\u0628\u0627 \u05E9\u05DC\u05D5\u05DD 12",
    u"\U0001F600\U0001F469\u200D\U0001F467 \u2764\uFE0F 1\uFE0F\u20E3",
    u"a\u0001\u001Bb\u007F\u200D\u200B\uFEFF\u00AD\u202E\u2028",
    std::u16string({u'a', char16_t(0xD83D), u'b', char16_t(0xDE00)}),
    std::u16string({char16_t(0xFFFF), char16_t(0xFFFE), char16_t(0xE000)}),
};

TEST_F(TextRendererTest, widthsNeverFallAndEndAtTheExtent) {
    for (const char16_t* family : {u"Courier New", u"Liberation Sans", u"No Such Family"}) {
        TextRenderer& text = renderer(family);
        for (const std::u16string& sample : samples) {
            std::vector<int> widths(sample.size());
            text.widths(sample, widths);
            EXPECT_GT(widths.front(), 0);
            EXPECT_TRUE(std::ranges::is_sorted(widths));
            EXPECT_EQ(widths.back(), text.width(sample));
        }
    }
}

TEST_F(TextRendererTest, everyCharacterAloneIsWide) {
    TextRenderer& text = renderer();
    for (int unit = 0; unit <= 0xFFFF; unit += 7) {
        const auto c = static_cast<char16_t>(unit);
        EXPECT_GT(text.width({&c, 1}), 0) << std::hex << unit;
    }
}

TEST_F(TextRendererTest, inkStaysInTheMeasuredCells) {
    for (const int tenths : {75, 90, 105, 130}) {
        TextRenderer& text = renderer(u"Courier New", tenths);
        for (const std::u16string& sample : samples) {
            for (const qreal scale : {1.0, 1.25, 2.0}) {
                const QRect found = ink(drawn(text, {sample}, scale));
                ASSERT_FALSE(found.isEmpty());
                const int slack = 2; // smoothing, and glyphs that lean out of their cell
                EXPECT_GE(found.left(), (left - slack) * scale);
                EXPECT_LE(found.right(), (left + text.width(sample) + slack) * scale);
                EXPECT_GE(found.top(), (top - 1) * scale);
                EXPECT_LE(found.bottom(), (top + text.metrics().tmHeight) * scale + 1);
            }
        }
    }
}

TEST_F(TextRendererTest, piecesOfARunLookLikeTheRun) {
    TextRenderer& text = renderer();
    const std::u16string whole = u"<!-- caf\u00E9 \u6F22\u5B57 \U0001F600 e\u0301 \u0001 end -->";
    const QImage expected = drawn(text, {whole});
    for (std::size_t cut = 1; cut < whole.size(); ++cut) {
        if (QChar::isLowSurrogate(whole[cut]) || whole[cut] == u'\u0301')
            continue; // inside a character
        const std::u16string_view head = std::u16string_view(whole).substr(0, cut);
        const std::u16string_view tail = std::u16string_view(whole).substr(cut);
        EXPECT_EQ(text.width(head) + text.width(tail), text.width(whole)) << cut;
        EXPECT_EQ(drawn(text, {head, tail}), expected) << cut;
    }
}

TEST_F(TextRendererTest, fixedPitchCellsAreWholeAndEqual) {
    for (const int tenths : {60, 75, 90, 100, 110, 127, 240}) {
        TextRenderer& text = renderer(u"Courier New", tenths);
        const int cell = text.width(u"x");
        EXPECT_EQ(text.width(u"iW.@ ~"), 6 * cell) << tenths;
        EXPECT_EQ(text.metrics().tmMaxCharWidth, cell) << tenths;
        EXPECT_EQ(text.metrics().tmAveCharWidth, cell) << tenths;
    }
}

TEST_F(TextRendererTest, proportionalFontsMeasureTabsByTheirBlank) {
    TextRenderer& text = renderer(u"Liberation Sans");
    EXPECT_EQ(text.metrics().tmAveCharWidth, text.width(u" "));
    EXPECT_GE(text.metrics().tmMaxCharWidth, text.width(u"W"));
    EXPECT_LT(text.metrics().tmMaxCharWidth, 20 * text.width(u" "));
}

TEST_F(TextRendererTest, unknownFamilyIsReplacedByAFixedPitchOne) {
    TextRenderer& text = renderer(u"No Such Family");
    EXPECT_EQ(text.width(u"iiii"), text.width(u"WWWW"));
}

TEST_F(TextRendererTest, marksStandOverTheirLetter) {
    TextRenderer& text = renderer();
    // The font has the composed letter, but no mark of its own.
    EXPECT_EQ(drawn(text, {u"e\u0301"}), drawn(text, {u"\u00E9"}));
    // No composed letter: the accent is ink above the letter's, inside its cell.
    const QRect plain = ink(drawn(text, {u"q"}));
    const QRect accented = ink(drawn(text, {u"q\u0301"}));
    EXPECT_LT(accented.top(), plain.top());
    EXPECT_LE(accented.right(), left + text.width(u"q\u0301"));
    EXPECT_EQ(text.width(u"q\u0301"), text.width(u"q"));
}

TEST_F(TextRendererTest, halvesOfAPairAreStepsOfTheCaret) {
    TextRenderer& text = renderer();
    const std::u16string emoji = u"\U0001F600";
    std::vector<int> widths(emoji.size());
    text.widths(emoji, widths);
    EXPECT_GT(widths[0], 0);
    EXPECT_GT(widths[1], widths[0]);
    EXPECT_EQ(widths[0], text.width(std::u16string_view(emoji).substr(0, 1)));
}

TEST_F(TextRendererTest, invisibleCharactersAreDrawn) {
    TextRenderer& text = renderer();
    for (const char16_t c :
         std::u16string_view(u"\u0000\u0001\u007F\u0085\u200B\u200D\uFEFF\u00AD\u202E\u2028", 10))
        EXPECT_FALSE(ink(drawn(text, {std::u16string_view(&c, 1)})).isEmpty()) << std::hex << int(c);
    EXPECT_NE(drawn(text, {u"\u0001"}), drawn(text, {u"^A"}))
        << "the sign differs from what it is written with";
}

TEST_F(TextRendererTest, cacheGivesTheSameAnswerAfterItHasForgotten) {
    TextRenderer& text = renderer();
    const std::u16string sample = u"\u6F22\u5B57 \u0645\u0631\u062D\u0628\u0627";
    const int width = text.width(sample);
    const QImage before = drawn(text, {sample});
    for (int i = 0; i < 6000; ++i) { // more different words than are kept
        const char16_t word[] = {static_cast<char16_t>(0x4E00 + i % 3000),
                                 static_cast<char16_t>(0x5000 + i / 3000)};
        EXPECT_GT(text.width({word, 2}), 0);
    }
    EXPECT_EQ(text.width(sample), width);
    EXPECT_EQ(drawn(text, {sample}), before);
}

} // namespace
} // namespace tavrin::qt
