#pragma once

#include "platform/qt/QtDC.h"
#include "platform/qt/TextBatch.h"

#include <QRegion>

#include <optional>
#include <vector>

namespace tavrin::qt {

/// What the rows of a view looked like when they were last painted, so that only those are painted again that
/// look otherwise, however much of the view is said to be invalid.
class RowMemory {
  public:
    /// True when nothing is known, as of a view that does not draw in rows.
    [[nodiscard]] bool isEmpty() const { return rows_.empty(); }
    /// The pixels are no longer where they were.
    void clear() { rows_.clear(); }

  private:
    friend class RowPainter;
    friend class RowComparison;
    struct Row {
        QRect rect;
        RowLook look;
    };
    /// The row at just this place, if its pixels are known.
    [[nodiscard]] const Row* find(const QRect& rect) const;
    /// The part of a row that has to be painted for it to have this look.
    [[nodiscard]] static QRect stale(const QRect& rect, const Row* known, const RowLook& look);

    std::vector<Row> rows_; ///< from the top down, without overlap
};

/// Paints, in batches, and notes how rows look from now on.
class RowPainter final : public QtDC {
  public:
    RowPainter(QPainter& painter, const QRegion& exposed, const QtFont& defaultFont, RowMemory& memory)
        : QtDC(painter, exposed, defaultFont),
          painter_(painter),
          exposed_(exposed),
          memory_(memory),
          batch_(painter, exposed.boundingRect()) {}
    /// Draws what waits. Rows that were not named this time have gone.
    ~RowPainter() override;

    const CFont* SelectObject(const CFont* font) override;
    void SelectClipRect(const CRect& rect) override;
    void TextOut(int x, int y, std::u16string_view text) override;
    void FillSolidRect(const CRect& rect, COLORREF colour) override;
    void DrawImage(const CImageList& images, int index, CPoint at) override;
    [[nodiscard]] bool WantsRow(const CRect& rect, const RowLook& look) override;

  private:
    struct Fill {
        QRect rect;
        COLORREF colour;
    };

    [[nodiscard]] bool isWhollyExposed(const QRect& rect) const;
    /// The colour of all that text in these cells is drawn on; nothing when it is not known.
    [[nodiscard]] std::optional<QColor> groundOf(const QRect& cells) const;

    QPainter& painter_;
    const QRegion exposed_;
    RowMemory& memory_;
    std::vector<RowMemory::Row> rows_;
    TextBatch batch_;
    std::vector<Fill> ground_; ///< what was filled before anything else was drawn
    QRect drawn_;              ///< holds all that has been drawn since
};

/// Draws nothing, and finds out which rows look as they did.
class RowComparison final : public QtDC {
  public:
    RowComparison(const QtFont& defaultFont, const RowMemory& memory) : QtDC(defaultFont), memory_(memory) {}

    [[nodiscard]] bool WantsRow(const CRect& rect, const RowLook& look) override;
    /// A part of the area that holds all rows that look otherwise, and what lies outside of rows.
    [[nodiscard]] QRegion changed(const QRegion& area) const;

  private:
    const RowMemory& memory_;
    // Neighbouring rows as one.
    std::vector<QRect> unchanged_;
    std::vector<QRect> changed_;
    int changedRight_ = -1; ///< what lies beyond it is as it was in all rows
};

} // namespace tavrin::qt
