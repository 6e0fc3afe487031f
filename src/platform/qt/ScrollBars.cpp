#include "platform/qt/ScrollBars.h"

#include <QPaintEvent>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QStyle>
#include <QStyleOptionSlider>
#include <QTimer>

#include <algorithm>
#include <optional>
#include <utility>

namespace tavrin::qt {

namespace {

std::size_t index(ScrollBarKind bar) {
    return bar == SB_HORZ ? 0 : 1;
}

std::optional<ScrollCode> scrollCode(int action) {
    switch (action) {
    case QAbstractSlider::SliderSingleStepAdd:
        return SB_LINEDOWN;
    case QAbstractSlider::SliderSingleStepSub:
        return SB_LINEUP;
    case QAbstractSlider::SliderPageStepAdd:
        return SB_PAGEDOWN;
    case QAbstractSlider::SliderPageStepSub:
        return SB_PAGEUP;
    case QAbstractSlider::SliderToMinimum:
        return SB_TOP;
    case QAbstractSlider::SliderToMaximum:
        return SB_BOTTOM;
    case QAbstractSlider::SliderMove:
        return SB_THUMBTRACK;
    default:
        return std::nullopt;
    }
}

Qt::ScrollBarPolicy barPolicy(bool needed) {
    return needed ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff;
}

/// How long a thumb may lag behind a range that changes with every key, in milliseconds.
constexpr int rangeDelay = 100;

/// How far a style may draw around a thumb, in pixels.
constexpr int thumbShadow = 4;

/// A range of millions of pixels may change with every key, and painting a bar costs more than the key. This
/// bar paints itself again only when its thumb looks otherwise, and for a new range not at once.
class CalmScrollBar final : public QScrollBar {
  public:
    explicit CalmScrollBar(Qt::Orientation orientation) : QScrollBar(orientation) {
        rangeShown_.setSingleShot(true);
        QObject::connect(&rangeShown_, &QTimer::timeout, this, [this] { updateChanges(); });
    }

  protected:
    void sliderChange(SliderChange change) override {
        if (currentLook() == shown_)
            return;
        if (change == SliderValueChange)
            updateChanges();
        else if (change != SliderRangeChange)
            QScrollBar::sliderChange(change);
        else if (!rangeShown_.isActive())
            rangeShown_.start(rangeDelay);
    }
    void paintEvent(QPaintEvent* event) override {
        if (event->rect().contains(rect()))
            shown_ = currentLook();
        QScrollBar::paintEvent(event);
    }

  private:
    struct Look {
        QRect thumb;
        bool atMinimum = false;
        bool atMaximum = false;
        bool operator==(const Look&) const = default;
    };

    /// Only what a move of the thumb changes: Qt hands the painting of tall areas to other threads, piece by
    /// piece, and waits for each.
    void updateChanges() {
        rangeShown_.stop();
        const Look look = currentLook();
        const Look before = std::exchange(shown_, look);
        const QMargins shadow(thumbShadow, thumbShadow, thumbShadow, thumbShadow);
        const QRect from = before.thumb + shadow;
        const QRect to = look.thumb + shadow;
        // Other styles may show in between how far the thumb has come, and at the ends that it is there.
        if (style()->inherits("QFusionStyle"))
            update(QRegion(from) + to);
        else if (look.atMinimum == before.atMinimum && look.atMaximum == before.atMaximum)
            update(from | to);
        else
            update();
    }

    [[nodiscard]] Look currentLook() const {
        QStyleOptionSlider option;
        initStyleOption(&option);
        return {style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, this),
                sliderPosition() == minimum(), sliderPosition() == maximum()};
    }

    Look shown_; ///< or will be, when what is invalid has been painted
    QTimer rangeShown_;
};

} // namespace

ScrollBars::ScrollBars(QAbstractScrollArea& area, const CREATESTRUCT& create, Request request)
    : area_(area), request_(std::move(request)) {
    bars_[index(SB_HORZ)].wanted = create.horizontalScrollBar;
    bars_[index(SB_VERT)].wanted = create.verticalScrollBar;
    area_.setHorizontalScrollBar(new CalmScrollBar(Qt::Horizontal));
    area_.setVerticalScrollBar(new CalmScrollBar(Qt::Vertical));
    area_.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area_.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    connectBar(SB_HORZ);
    connectBar(SB_VERT);
}

QScrollBar& ScrollBars::widget(ScrollBarKind bar) const {
    return bar == SB_HORZ ? *area_.horizontalScrollBar() : *area_.verticalScrollBar();
}

void ScrollBars::connectBar(ScrollBarKind bar) {
    QObject::connect(&widget(bar), &QScrollBar::actionTriggered, &area_, [this, bar](int action) {
        const auto code = scrollCode(action);
        if (!code)
            return;
        request_(bar == SB_HORZ ? WM_HSCROLL : WM_VSCROLL, *code, trackPosition(bar));
        // What the view decided is shown, not what the bar expected.
        const QSignalBlocker silent(widget(bar));
        widget(bar).setSliderPosition(bars_[index(bar)].info.position);
    });
}

void ScrollBars::setInfo(ScrollBarKind bar, const ScrollInfo& info) {
    bars_[index(bar)].info = info;
    showNeededBars();
    showInfo(SB_HORZ);
    showInfo(SB_VERT);
}

void ScrollBars::showNeededBars() {
    // From the size without any bar, so that a bar never stands only because of the other.
    const QSize whole = area_.contentsRect().size();
    const Bar& horizontal = bars_[index(SB_HORZ)];
    const Bar& vertical = bars_[index(SB_VERT)];
    const int barHeight = area_.horizontalScrollBar()->sizeHint().height();
    const int barWidth = area_.verticalScrollBar()->sizeHint().width();
    bool needHorizontal = horizontal.wanted && horizontal.info.total > whole.width();
    const bool needVertical =
        vertical.wanted && vertical.info.total > whole.height() - (needHorizontal ? barHeight : 0);
    needHorizontal =
        horizontal.wanted && horizontal.info.total > whole.width() - (needVertical ? barWidth : 0);
    const bool needVerticalToo =
        vertical.wanted && vertical.info.total > whole.height() - (needHorizontal ? barHeight : 0);
    // Setting a policy lays the area out and raises the bars, which paints them, also when nothing changes.
    if (const auto policy = barPolicy(needHorizontal); policy != area_.horizontalScrollBarPolicy())
        area_.setHorizontalScrollBarPolicy(policy);
    if (const auto policy = barPolicy(needVerticalToo); policy != area_.verticalScrollBarPolicy())
        area_.setVerticalScrollBarPolicy(policy);
}

void ScrollBars::showInfo(ScrollBarKind bar) {
    const ScrollInfo& info = bars_[index(bar)].info;
    const QSize client = area_.viewport()->size();
    QScrollBar& shown = widget(bar);
    const QSignalBlocker silent(shown); // the view knows: the bar must not answer with a request
    shown.setRange(0, std::max(0, info.total - (bar == SB_HORZ ? client.width() : client.height())));
    shown.setPageStep(std::max(1, info.page));
    shown.setSingleStep(std::max(1, info.line));
    shown.setValue(info.position);
}

int ScrollBars::trackPosition(ScrollBarKind bar) const {
    return widget(bar).sliderPosition();
}

bool ScrollBars::isEnabled(ScrollBarKind bar) const {
    return bars_[index(bar)].wanted && widget(bar).isEnabled();
}

bool ScrollBars::canScroll(ScrollBarKind bar) const {
    return isEnabled(bar) && widget(bar).maximum() > 0;
}

} // namespace tavrin::qt
