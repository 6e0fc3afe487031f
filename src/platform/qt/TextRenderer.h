#pragma once

#include "platform/ui/CDC.h"

#include <QFont>
#include <QRawFont>
#include <QTextLayout>

#include <array>
#include <list>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

class QPainter;

namespace tavrin::qt {

class AsciiPictures;

/// Measures and draws runs of text in one font; nothing else measures or draws text, so the two agree to the
/// pixel.
///
/// Every character advances by whole pixels, rounded up, so a run's width is the sum of its pieces' widths
/// wherever it is cut (but for text whose letters join). ASCII goes through a table of glyphs, other text
/// through layouts that are kept for the next time. Characters that show nothing (controls, zero-width and
/// bidirectional controls, lone surrogates) get a sign that is one cell wide, so that the caret can be seen
/// to step over them.
class TextRenderer {
  public:
    explicit TextRenderer(const QFont& font);
    ~TextRenderer();

    [[nodiscard]] const QFont& font() const { return font_; }
    [[nodiscard]] const TEXTMETRIC& metrics() const { return metrics_; }

    /// The width of the whole run.
    [[nodiscard]] int width(std::u16string_view text);
    /// widths[i] becomes the width of the first i + 1 code units. What joins the character before it adds
    /// nothing; the halves of a surrogate pair share its width. REQUIRES: widths.size() == text.size().
    void widths(std::u16string_view text, std::span<int> widths);
    /// Draws with the painter's pen; (x, y) is the top left corner of the first cell.
    void draw(QPainter& painter, int x, int y, std::u16string_view text);

    /// Glyphs at their baselines.
    struct GlyphList {
        std::vector<quint32> glyphs;
        std::vector<QPointF> positions;
    };
    /// Adds a run's glyphs for a later drawGlyphs; (x, y) as for draw. False when the run holds more than
    /// ASCII.
    bool addAscii(GlyphList& list, int x, int y, std::u16string_view text) const;
    void drawGlyphs(QPainter& painter, const GlyphList& list) const;
    /// Whether all ASCII glyphs lie within the height of a row.
    [[nodiscard]] bool glyphsFitRow() const { return glyphsFitRow_; }

    static constexpr char16_t firstAscii = 0x20;
    static constexpr char16_t lastAscii = 0x7E;
    /// Whether the text is what addAscii takes.
    [[nodiscard]] static bool isAscii(std::u16string_view text);
    /// Of an ASCII character.
    [[nodiscard]] int advance(char16_t c) const { return advances_[c]; }
    [[nodiscard]] int widestAdvance() const { return widestAdvance_; }
    /// Pictures of the ASCII characters; `scale` is the number of device pixels a pixel has in each
    /// direction. Valid until the next call.
    [[nodiscard]] const AsciiPictures& pictures(const QColor& text, const QColor& back, int scale);

  private:
    /// Text as it was shaped: one layout, or one for each cluster when the font does not advance by whole
    /// pixels.
    struct Shaped {
        struct Part {
            int x;
            std::unique_ptr<QTextLayout> layout;
        };
        std::vector<Part> parts;
        std::vector<int> widths; ///< by code unit, as widths() reports them
        bool overflows = false;  ///< taller than a cell
    };
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::u16string_view text) const {
            return std::hash<std::u16string_view>{}(text);
        }
    };
    struct Entry {
        std::u16string text;
        Shaped shaped;
    };
    struct Cluster {
        int start;
        int end;
        qreal advance;
    };

    [[nodiscard]] const Shaped& shaped(std::u16string_view text);
    [[nodiscard]] Shaped shape(std::u16string_view text) const;
    [[nodiscard]] static std::unique_ptr<QTextLayout> layOut(const QString& text, const QFont& font);
    [[nodiscard]] std::unique_ptr<QTextLayout> layOutCluster(const QString& cluster) const;
    void addClusters(Shaped& shaped, const QString& text) const;
    void addClusterWidths(std::vector<int>& widths, const QString& cluster, int advance) const;
    [[nodiscard]] std::vector<int> joinedWidths(const QTextLayout& layout) const;
    [[nodiscard]] int markerWidth(char16_t marker) const;
    [[nodiscard]] int asciiWidth(std::u16string_view ascii) const;
    void drawAscii(QPainter& painter, int x, int y, std::u16string_view text);
    void addGlyphs(GlyphList& list, int x, int y, std::u16string_view ascii) const;
    /// As drawAscii, into a picture.
    void recordAscii(QPainter& painter, int x, int y, std::u16string_view text) const;
    void drawShaped(QPainter& painter, int x, int y, const Shaped& shaped);
    void drawMarker(QPainter& painter, int x, int y, char16_t marker);

    QFont font_;
    QRawFont rawFont_;
    TEXTMETRIC metrics_;
    int ascent_ = 0;
    int cell_ = 1; ///< width of a character that has no width of its own
    std::array<int, lastAscii + 1> advances_{};
    int widestAdvance_ = 1;
    bool hasEqualAdvances_ = false;
    bool hasWholeAdvances_ = true; ///< those of the font itself
    std::array<quint32, lastAscii + 1> glyphs_{};
    bool glyphsFitRow_ = false;
    GlyphList scratch_;
    std::vector<std::unique_ptr<AsciiPictures>> pictures_; ///< oldest first

    /// Most recently used first.
    std::list<Entry> entries_;
    std::unordered_map<std::u16string_view, std::list<Entry>::iterator, Hash, std::equal_to<>> index_;
    std::size_t cachedUnits_ = 0;
};

} // namespace tavrin::qt
