#include "platform/qt/TemplateLayout.h"

#include <QFontMetrics>
#include <QGridLayout>
#include <QWidget>

#include <algorithm>
#include <cstdlib>
#include <optional>

namespace tavrin::qt {

namespace {

using Widgets = std::vector<std::pair<const DialogItem*, QWidget*>>;

/// Edges so near to each other (dialog units) are meant to be one.
constexpr int sameEdge = 2;
/// The height of a drop-down list while it is closed.
constexpr int closedListHeight = 12;

/// Where an item begins and ends in one direction. Texts end where they happen to.
struct Extent {
    int begin;
    int end;
    bool endsOnLine;
};

bool isText(const DialogItem& item) {
    return item.kind == ControlKind::Label || item.kind == ControlKind::CheckBox;
}

Extent horizontal(const DialogItem& item) {
    return {item.place.x, item.place.x + item.size.cx, !isText(item)};
}

Extent vertical(const DialogItem& item) {
    const bool dropsDown = item.kind == ControlKind::FontBox || item.kind == ControlKind::ColourBox;
    const int height = dropsDown ? closedListHeight : item.size.cy;
    return {item.place.y, item.place.y + height, !isText(item)};
}

/// The grid's lines in one direction.
class Lines {
  public:
    Lines(const Widgets& widgets, Extent (*extentOf)(const DialogItem&)) {
        std::vector<int> edges;
        int last = 0;
        for (const auto& [item, widget] : widgets) {
            const Extent extent = extentOf(*item);
            edges.push_back(extent.begin);
            if (extent.endsOnLine)
                edges.push_back(extent.end);
            last = std::max(last, extent.end);
        }
        edges.push_back(last);
        std::ranges::sort(edges);
        for (const int edge : edges)
            if (at_.empty() || edge - at_.back() > sameEdge)
                at_.push_back(edge);
    }

    [[nodiscard]] int cells() const { return static_cast<int>(at_.size()) - 1; }
    [[nodiscard]] int width(int cell) const { return at_[index(cell + 1)] - at_[index(cell)]; }
    [[nodiscard]] int beginOf(const Extent& extent) const {
        const auto line = std::ranges::lower_bound(at_, extent.begin - sameEdge);
        return static_cast<int>(line - at_.begin());
    }
    /// Behind the last cell of the extent, which has one at least.
    [[nodiscard]] int endOf(const Extent& extent) const {
        const auto line = std::ranges::lower_bound(at_, extent.end - sameEdge);
        const int found = static_cast<int>(std::min(line, at_.end() - 1) - at_.begin());
        return std::max(found, beginOf(extent) + 1);
    }

  private:
    static std::size_t index(int i) { return static_cast<std::size_t>(i); }

    std::vector<int> at_;
};

/// Columns grow that begin a control and hold neither a label nor an edit box alone.
std::vector<int> columnStretches(const Widgets& widgets, const Lines& columns) {
    std::vector<int> stretches(static_cast<std::size_t>(columns.cells()), 0);
    for (const auto& [item, widget] : widgets)
        stretches[static_cast<std::size_t>(columns.beginOf(horizontal(*item)))] =
            columns.width(columns.beginOf(horizontal(*item)));
    for (const auto& [item, widget] : widgets) {
        const int begin = columns.beginOf(horizontal(*item));
        const bool keepsSize = item->kind == ControlKind::Label || item->kind == ControlKind::EditBox;
        if (keepsSize && columns.endOf(horizontal(*item)) == begin + 1)
            stretches[static_cast<std::size_t>(begin)] = 0;
    }
    return stretches;
}

} // namespace

void arrangeByTemplate(QWidget& page, const Widgets& widgets) {
    const Lines columns(widgets, horizontal);
    const Lines rows(widgets, vertical);
    auto* grid = new QGridLayout(&page);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(0); // the template has its own
    const QFontMetrics metrics(page.font());
    const std::vector<int> stretches = columnStretches(widgets, columns);
    for (int i = 0; i < columns.cells(); ++i) {
        grid->setColumnMinimumWidth(i, columns.width(i) * metrics.averageCharWidth() / 4);
        grid->setColumnStretch(i, stretches[static_cast<std::size_t>(i)]);
    }
    for (int i = 0; i < rows.cells(); ++i)
        grid->setRowMinimumHeight(i, rows.width(i) * metrics.height() / 8);
    for (const auto& [item, widget] : widgets) {
        const Extent across = horizontal(*item);
        const Extent down = vertical(*item);
        const int row = rows.beginOf(down);
        const int column = columns.beginOf(across);
        const int lastRow = rows.endOf(down) - 1;
        grid->addWidget(widget, row, column, lastRow - row + 1, columns.endOf(across) - column);
        if (item->kind == ControlKind::ListBox || item->kind == ControlKind::TextPanel)
            grid->setRowStretch(lastRow, 1);
    }
}

} // namespace tavrin::qt
