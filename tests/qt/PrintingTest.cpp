#include "QtFixture.h"
#include "control/TextEditorCtrl.h"
#include "platform/qt/PageSetup.h"
#include "platform/qt/QtPrintJob.h"
#include "platform/qt/widget/XmlEditorWidget.h"

#include <QFile>
#include <QFontMetricsF>
#include <QPageLayout>
#include <QPicture>

namespace tavrin::qt {
namespace {

class PrintingOnQt : public QtFixture {
  protected:
    [[nodiscard]] QString path() const { return folder_.filePath("out.pdf"); }
    void setLines(int count) {
        QStringList lines;
        for (int i = 0; i < count; ++i)
            lines += QString("<line n=\"%1\"/>").arg(i);
        editor_.setText(lines.join('\n'));
    }
    /// Pages of the file printed last.
    [[nodiscard]] qsizetype pages() const {
        QFile file(path());
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll().count("/Type /Page\n");
    }
    [[nodiscard]] QPageLayout layout() { return readPageLayout(platform_.settings()); }

    XmlEditorWidget editor_{platform_};
};

TEST_F(PrintingOnQt, pagesFollowFromPaperMarginsAndTheFontsHeight) {
    for (const int margin : {0, 5, 10, 40, 98, 100}) {
        QPageLayout page(QPageSize(QPageSize::A4), QPageLayout::Portrait,
                         QMarginsF(margin, margin, margin, margin), QPageLayout::Millimeter);
        const auto job = std::make_shared<PdfJob>(platform_, path(), page);
        CDC& dc = *job->printerDC();
        const auto font = platform_.createPrinterFont(dc, 90, u"Courier New");
        dc.SelectObject(font.get());
        const int lineHeight = dc.GetTextMetrics().tmHeight;
        dc.SelectObject(nullptr);
        const double unit = dc.GetDeviceCaps(DeviceCap::LogPixelsY) / 25.4;
        EXPECT_NEAR(lineHeight, 9 / 72.0 * 25.4 * unit * 1.14, 3) << "9 points, and the leading of the face";
        const int offset = dc.GetDeviceCaps(DeviceCap::PhysicalOffsetY);
        EXPECT_NEAR(offset, margin * unit, unit / 2);
        const int content = dc.GetDeviceCaps(DeviceCap::PhysicalHeight) - 3 * offset;
        const int lines = std::max(0, content / lineHeight);
        setLines(2000);
        ASSERT_TRUE(editor_.control().Print(job)) << job->error().toStdString();
        EXPECT_EQ(pages(), lines == 0 ? 1 : (2000 + lines - 1) / lines) << margin << " mm";
    }
}

TEST_F(PrintingOnQt, printsThePagesThatWereAskedFor) {
    const struct {
        PageChoice choice;
        std::vector<UINT> pages;
    } cases[] = {
        {{}, {1, 2, 3, 4}},          {{{}, true}, {4, 3, 2, 1}},
        {{{{2, 3}}, false}, {2, 3}}, {{{{4, 9}, {1, 1}}, true}, {4, 1}},
        {{{{5, 9}}, false}, {}},     {{{{3, 2}}, false}, {}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.choice.pages(4), c.pages);

    setLines(300);
    const auto some =
        std::make_shared<PdfJob>(platform_, path(), layout(), nullptr, PageChoice{{{2, 3}}, false});
    EXPECT_TRUE(editor_.control().Print(some));
    EXPECT_EQ(pages(), 2);
    const auto none =
        std::make_shared<PdfJob>(platform_, path(), layout(), nullptr, PageChoice{{{7, 9}}, false});
    EXPECT_FALSE(editor_.control().Print(none));
    EXPECT_FALSE(none->error().isEmpty());
    EXPECT_EQ(pages(), 2) << "the file of before stays";
}

TEST_F(PrintingOnQt, pageSetUpIsRememberedAndNonsenseIsNot) {
    const QPageLayout standard = layout();
    const QPageLayout own(QPageSize(QPageSize::B5), QPageLayout::Landscape, QMarginsF(1, 2.5, 30, 100),
                          QPageLayout::Millimeter);
    writePageLayout(platform_.settings(), own);
    EXPECT_EQ(layout().pageSize().id(), QPageSize::B5);
    EXPECT_EQ(layout().orientation(), QPageLayout::Landscape);
    EXPECT_EQ(layout().margins(), own.margins());

    UserSettings& settings = platform_.settings();
    settings.setStringValue("Page Setup", "Paper", u"Papyrus");
    settings.setIntValue("Page Setup", "Left Margin", -1);
    settings.setIntValue("Page Setup", "Top Margin", 10'001);
    settings.setStringValue("Page Setup", "Landscape", u"perhaps");
    EXPECT_EQ(layout().pageSize(), standard.pageSize());
    EXPECT_EQ(layout().margins().left(), standard.margins().left());
    EXPECT_EQ(layout().margins().top(), standard.margins().top());
    EXPECT_EQ(layout().orientation(), QPageLayout::Portrait);
}

TEST_F(PrintingOnQt, textInAPreviewIsKeptAsText) {
    const auto font = platform_.createPointFont(400, u"Courier New");
    TextRenderer& renderer = static_cast<const QtFont&>(*font).renderer();
    const std::u16string text(2000, u'g');
    QPicture picture;
    QPainter painter(&picture);
    renderer.draw(painter, 0, 0, text);
    painter.end();
    EXPECT_LT(picture.size(), 10'000) << "outlines of the glyphs take a hundred times as much";
}

} // namespace
} // namespace tavrin::qt
