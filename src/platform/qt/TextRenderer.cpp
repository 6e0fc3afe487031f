#include "platform/qt/TextRenderer.h"

#include "platform/core/TextScan.h"
#include "platform/qt/AsciiPictures.h"
#include "platform/qt/Conversions.h"
#include "platform/qt/TextSegments.h"

#include <QFontInfo>
#include <QFontMetricsF>
#include <QGlyphRun>
#include <QPaintEngine>
#include <QPainter>
#include <QTextOption>

#include <algorithm>
#include <cmath>

namespace tavrin::qt {

namespace {

/// Bounds of what is kept shaped: a few screens of text without a repetition.
constexpr std::size_t maxCachedEntries = 4096;
constexpr std::size_t maxCachedUnits = 128 * 1024;

/// What most runs are no longer than; longer ones are looked at many characters at a time.
constexpr std::size_t shortRun = 32;

/// Pairs of colours that are kept as pictures: more than a scheme has.
constexpr std::size_t maxPictures = 64;

constexpr char16_t dottedCircle = 0x25CC;

/// Advances come in 64ths of a pixel; what is within one of them of a whole number is that number.
constexpr qreal fractionTolerance = 1.0 / 64;

int roundedUp(qreal advance) {
    return static_cast<int>(std::ceil(advance - fractionTolerance));
}

bool isWhole(qreal advance) {
    return std::abs(advance - std::round(advance)) <= fractionTolerance;
}

/// The letter that stands for an ASCII control in caret notation ("^A" for U+0001); 0 for any other
/// character.
char16_t controlLetter(char16_t c) {
    return c < 0x20 || c == 0x7F ? static_cast<char16_t>(c ^ 0x40) : char16_t{0};
}

/// False for Qt's stand-in for characters that no font has, which has no family name to ask for.
bool isRealFont(const QRawFont& font) {
    return !font.fontTable("head").isEmpty();
}

/// A mark that goes with any script's letters.
bool isDiacritic(QChar c) {
    return c.isMark() && c.script() == QChar::Script_Inherited;
}

bool isRightToLeft(QChar c) {
    // The halves of a pair tell nothing: the pairs with right-to-left letters are those from U+10800 and
    // U+1E800 on.
    const char16_t unit = c.unicode();
    return c.direction() == QChar::DirR || c.direction() == QChar::DirAL || unit == 0xD802 ||
           unit == 0xD803 || unit == 0xD83A || unit == 0xD83B;
}

/// Calls visit(segment kind, its text) for each segment of a run, in order.
template <class Visitor>
void forEachSegment(std::u16string_view text, Visitor&& visit) {
    while (!text.empty()) {
        const Segment segment = firstSegment(text);
        visit(segment.kind, text.substr(0, segment.length));
        text.remove_prefix(segment.length);
    }
}

} // namespace

TextRenderer::TextRenderer(const QFont& font) : font_(font), rawFont_(QRawFont::fromFont(font)) {
    const QFontMetricsF metrics(font_);
    ascent_ = roundedUp(metrics.ascent());
    metrics_.tmHeight = std::max(1, ascent_ + roundedUp(metrics.descent()));

    QString ascii;
    for (char16_t c = firstAscii; c <= lastAscii; ++c)
        ascii += QChar(c);
    const QList<quint32> glyphs = rawFont_.glyphIndexesForString(ascii);
    for (char16_t c = firstAscii; c <= lastAscii; ++c) {
        const qreal advance = metrics.horizontalAdvance(QChar(c));
        advances_[c] = std::max(1, roundedUp(advance));
        hasWholeAdvances_ &= isWhole(advance);
        glyphs_[c] = glyphs.value(c - firstAscii);
    }
    cell_ = advances_[u'x'];
    const QRectF drawn = metrics.tightBoundingRect(ascii);
    glyphsFitRow_ = -drawn.top() <= ascent_ && drawn.bottom() <= metrics_.tmHeight - ascent_;

    // Tab stops are multiples of the average width when measured and of a blank's width when drawn: they must
    // agree.
    metrics_.tmAveCharWidth = advances_[u' '];
    // The horizontal scroll unit. A proportional font names the widest of all its glyphs, some of which span
    // a page.
    const auto [narrowest, widest] =
        std::minmax_element(advances_.begin() + firstAscii, advances_.begin() + lastAscii + 1);
    widestAdvance_ = *widest;
    hasEqualAdvances_ = *narrowest == *widest;
    metrics_.tmMaxCharWidth =
        QFontInfo(font_).fixedPitch()
            ? widestAdvance_
            : std::clamp(roundedUp(metrics.maxWidth()), widestAdvance_, 2 * metrics_.tmHeight);
}

TextRenderer::~TextRenderer() = default;

int TextRenderer::asciiWidth(std::u16string_view ascii) const {
    if (hasEqualAdvances_)
        return static_cast<int>(ascii.size()) * widestAdvance_;
    int width = 0;
    for (const char16_t c : ascii)
        width += advances_[c];
    return width;
}

int TextRenderer::width(std::u16string_view text) {
    if (text.size() <= shortRun && isAscii(text))
        return asciiWidth(text);
    int width = 0;
    forEachSegment(text, [&](SegmentKind kind, std::u16string_view segment) {
        switch (kind) {
        case SegmentKind::Ascii:
            width += asciiWidth(segment);
            break;
        case SegmentKind::Marker:
            width += markerWidth(segment[0]);
            break;
        case SegmentKind::Shaped:
            width += shaped(segment).widths.back();
            break;
        }
    });
    return width;
}

void TextRenderer::widths(std::u16string_view text, std::span<int> widths) {
    int width = 0;
    auto out = widths.begin();
    forEachSegment(text, [&](SegmentKind kind, std::u16string_view segment) {
        switch (kind) {
        case SegmentKind::Ascii:
            for (const char16_t c : segment)
                *out++ = width += advances_[c];
            break;
        case SegmentKind::Marker:
            *out++ = width += markerWidth(segment[0]);
            break;
        case SegmentKind::Shaped: {
            const Shaped& known = shaped(segment);
            for (const int within : known.widths)
                *out++ = width + within;
            width += known.widths.back();
            break;
        }
        }
    });
}

void TextRenderer::draw(QPainter& painter, int x, int y, std::u16string_view text) {
    forEachSegment(text, [&](SegmentKind kind, std::u16string_view segment) {
        switch (kind) {
        case SegmentKind::Ascii:
            drawAscii(painter, x, y, segment);
            for (const char16_t c : segment)
                x += advances_[c];
            break;
        case SegmentKind::Marker:
            drawMarker(painter, x, y, segment[0]);
            x += markerWidth(segment[0]);
            break;
        case SegmentKind::Shaped: {
            const Shaped& known = shaped(segment);
            drawShaped(painter, x, y, known);
            x += known.widths.back();
            break;
        }
        }
    });
}

void TextRenderer::drawAscii(QPainter& painter, int x, int y, std::u16string_view text) {
    if (painter.paintEngine()->type() == QPaintEngine::Picture) {
        recordAscii(painter, x, y, text);
        return;
    }
    scratch_.glyphs.clear();
    scratch_.positions.clear();
    addGlyphs(scratch_, x, y, text);
    if (!scratch_.glyphs.empty())
        drawGlyphs(painter, scratch_);
}

void TextRenderer::addGlyphs(GlyphList& list, int x, int y, std::u16string_view ascii) const {
    for (const char16_t c : ascii) {
        if (c != u' ') {
            list.glyphs.push_back(glyphs_[c]);
            list.positions.emplace_back(x, y + ascent_);
        }
        x += advances_[c];
    }
}

bool TextRenderer::isAscii(std::u16string_view text) {
    static_assert(firstAscii == u' ' && lastAscii == u'~');
    return scan::isPrintableAscii(text);
}

bool TextRenderer::addAscii(GlyphList& list, int x, int y, std::u16string_view text) const {
    if (!isAscii(text))
        return false;
    addGlyphs(list, x, y, text);
    return true;
}

void TextRenderer::drawGlyphs(QPainter& painter, const GlyphList& list) const {
    QGlyphRun run;
    run.setRawFont(rawFont_);
    run.setRawData(list.glyphs.data(), list.positions.data(), static_cast<int>(list.glyphs.size()));
    painter.drawGlyphRun(QPointF(), run);
}

const AsciiPictures& TextRenderer::pictures(const QColor& text, const QColor& back, int scale) {
    const auto known = std::ranges::find_if(
        pictures_, [&, textRgb = text.rgb(), backRgb = back.rgb()](const auto& pictures) {
            return pictures->isFor(textRgb, backRgb, scale);
        });
    if (known != pictures_.end())
        return **known;
    if (pictures_.size() == maxPictures)
        pictures_.erase(pictures_.begin());
    pictures_.push_back(std::make_unique<AsciiPictures>(*this, text, back, scale));
    return *pictures_.back();
}

void TextRenderer::recordAscii(QPainter& painter, int x, int y, std::u16string_view text) const {
    // A picture keeps glyphs as outlines, a hundred times the size of the text.
    painter.setFont(font_);
    if (hasWholeAdvances_) {
        painter.drawText(x, y + ascent_, viewAsQString(text));
        return;
    }
    for (const char16_t c : text) {
        painter.drawText(x, y + ascent_, QString(QChar(c)));
        x += advances_[c];
    }
}

void TextRenderer::drawShaped(QPainter& painter, int x, int y, const Shaped& shaped) {
    // A taller fallback font would leave traces on the neighbouring lines, which are not repainted with this
    // one.
    if (shaped.overflows) {
        painter.save();
        const int overhang = metrics_.tmHeight; // to the sides there is room
        painter.setClipRect(x - overhang, y, shaped.widths.back() + 2 * overhang, metrics_.tmHeight,
                            Qt::IntersectClip);
    }
    for (const Shaped::Part& part : shaped.parts) {
        const QTextLine line = part.layout->lineAt(0);
        part.layout->draw(&painter, QPointF(x + part.x, y + ascent_ - line.ascent()));
    }
    if (shaped.overflows)
        painter.restore();
}

int TextRenderer::markerWidth(char16_t marker) const {
    const char16_t letter = controlLetter(marker);
    return letter ? advances_[u'^'] + advances_[letter] : cell_;
}

void TextRenderer::drawMarker(QPainter& painter, int x, int y, char16_t marker) {
    if (const char16_t letter = controlLetter(marker)) {
        const char16_t notation[] = {u'^', letter};
        drawAscii(painter, x, y, {notation, 2});
        painter.fillRect(x + 1, y + metrics_.tmHeight - 1, markerWidth(marker) - 2, 1, painter.pen().color());
        return;
    }
    // A small hollow box on the baseline.
    const int side = std::max(2, cell_ - 3);
    painter.drawRect(x + 1, y + ascent_ - side, side, side - 1);
}

const TextRenderer::Shaped& TextRenderer::shaped(std::u16string_view text) {
    if (const auto known = index_.find(text); known != index_.end()) {
        entries_.splice(entries_.begin(), entries_, known->second);
        return known->second->shaped;
    }
    while (!entries_.empty() &&
           (entries_.size() >= maxCachedEntries || cachedUnits_ + text.size() > maxCachedUnits)) {
        cachedUnits_ -= entries_.back().text.size();
        index_.erase(entries_.back().text);
        entries_.pop_back();
    }
    entries_.push_front({std::u16string(text), shape(text)});
    cachedUnits_ += text.size();
    index_.emplace(entries_.front().text, entries_.begin());
    return entries_.front().shaped;
}

std::unique_ptr<QTextLayout> TextRenderer::layOut(const QString& text, const QFont& font) {
    QTextOption option;
    option.setTextDirection(Qt::LeftToRight);
    option.setWrapMode(QTextOption::NoWrap);
    auto layout = std::make_unique<QTextLayout>(text, font);
    layout->setTextOption(option);
    layout->setCacheEnabled(true);
    layout->beginLayout();
    layout->createLine().setPosition(QPointF());
    layout->endLayout();
    return layout;
}

TextRenderer::Shaped TextRenderer::shape(std::u16string_view text) const {
    const QString string = toQString(text);
    Shaped result;
    if (std::ranges::any_of(string, isRightToLeft)) {
        auto layout = layOut(string, font_);
        result.widths = joinedWidths(*layout);
        result.parts.push_back({0, std::move(layout)});
    } else {
        addClusters(result, string);
    }
    for (const Shaped::Part& part : result.parts) {
        const QTextLine line = part.layout->lineAt(0);
        result.overflows |= line.ascent() > ascent_ || line.descent() > metrics_.tmHeight - ascent_;
    }
    return result;
}

void TextRenderer::addClusters(Shaped& shaped, const QString& text) const {
    auto layout = layOut(text, font_);
    const QTextLine line = layout->lineAt(0);
    std::vector<Cluster> clusters;
    bool asOne = std::ranges::none_of(text, isDiacritic);
    for (int start = 0; start < text.size();) {
        const int end = std::max(start + 1, layout->nextCursorPosition(start));
        const qreal advance = line.cursorToX(end) - line.cursorToX(start);
        asOne &= advance >= 1 && isWhole(advance);
        clusters.push_back({start, end, advance});
        start = end;
    }
    if (asOne)
        shaped.parts.push_back({0, std::move(layout)});
    for (const Cluster& cluster : clusters) {
        const QString own = text.mid(cluster.start, cluster.end - cluster.start);
        qreal advance = cluster.advance;
        if (!asOne) {
            auto part = layOutCluster(own);
            advance = part->lineAt(0).naturalTextWidth();
            shaped.parts.push_back({shaped.widths.empty() ? 0 : shaped.widths.back(), std::move(part)});
        }
        addClusterWidths(shaped.widths, own, std::max(1, roundedUp(advance)));
    }
}

std::unique_ptr<QTextLayout> TextRenderer::layOutCluster(const QString& cluster) const {
    // Most fonts have the composed letter, and few the mark.
    QString shown = cluster.normalized(QString::NormalizationForm_C);
    if (shown[0].isMark())
        shown.prepend(QChar(dottedCircle));
    else if (shown[0] == u' ')
        shown[0] = QChar(dottedCircle); // on a blank the mark would stand over what follows
    auto layout = layOut(shown, font_);
    if (layout->lineAt(0).naturalTextWidth() < 1)
        return layOut(QChar(dottedCircle) + shown, font_);
    // A mark from another font than its base stands beside it: the font with the mark has the base too.
    const QList<QGlyphRun> runs = layout->glyphRuns();
    const auto other = std::ranges::find_if(runs, [this](const QGlyphRun& run) {
        return isRealFont(run.rawFont()) && run.rawFont().familyName() != rawFont_.familyName();
    });
    if (runs.size() < 2 || other == runs.end())
        return layout;
    QFont font = font_;
    font.setFamily(other->rawFont().familyName());
    return layOut(shown, font);
}

void TextRenderer::addClusterWidths(std::vector<int>& widths, const QString& cluster, int advance) const {
    const int start = widths.empty() ? 0 : widths.back();
    if (cluster.size() > 1 && cluster[0].isHighSurrogate())
        widths.push_back(start + std::min(cell_, advance)); // the width of a lone half
    else
        widths.push_back(start + advance);
    for (int unit = 1; unit < cluster.size(); ++unit)
        widths.push_back(start + advance);
}

std::vector<int> TextRenderer::joinedWidths(const QTextLayout& layout) const {
    const int length = static_cast<int>(layout.text().size());
    std::vector<qreal> sums;
    qreal sum = 0;
    for (int start = 0; start < length;) {
        const int end = std::max(start + 1, layout.nextCursorPosition(start));
        QRectF box;
        for (const QGlyphRun& run : layout.glyphRuns(start, end - start))
            box |= run.boundingRect();
        sum += box.width();
        sums.insert(sums.end(), end - start, sum);
        start = end;
    }
    // A ligature is seen by each of its letters: what the layout measures as a whole decides.
    const int total = std::max(cell_, roundedUp(layout.lineAt(0).naturalTextWidth()));
    std::vector<int> widths(sums.size());
    for (std::size_t i = 0; i < sums.size(); ++i)
        widths[i] = sum > 0 ? static_cast<int>(total * sums[i] / sum) : total;
    widths.back() = total;
    return widths;
}

} // namespace tavrin::qt
