#pragma once

#include "platform/headless/RecordingDC.h"
#include "platform/ui/MessageMap.h"
#include "platform/ui/Platform.h"
#include "platform/ui/WindowPeer.h"

#include <optional>
#include <string>
#include <vector>

namespace tavrin {

class HeadlessPlatform;

/// A window in memory: a place in a tree, and a record of what its CWnd asked for.
///
/// Scroll bars take nothing away from the client area; popups have no border. A move or resize leaves the
/// children where they are.
class HeadlessWindow final : public WindowPeer {
  public:
    /// A scrollWindow request.
    struct Scroll {
        int dx = 0;
        int dy = 0;
        CRect rect{};
        friend bool operator==(const Scroll&, const Scroll&) = default;
    };
    struct Caret {
        CSize size{};
        bool shown = false;
    };

    HeadlessWindow(HeadlessPlatform& platform, CWnd& window, HeadlessWindow* parent, const CREATESTRUCT& how);
    /// Destroys the window without a message to its own CWnd; the children's get theirs.
    ~HeadlessWindow() override;

    [[nodiscard]] CWnd& window() const { return window_; }
    [[nodiscard]] HeadlessWindow* parent() const { return parent_; }
    /// Whether `other` is this window or lies inside it.
    [[nodiscard]] bool contains(const HeadlessWindow* other) const;

    // The record

    /// The rectangles that were asked to be repainted: as given, in order, not merged.
    [[nodiscard]] const std::vector<CRect>& invalidated() const { return invalidated_; }
    /// What scrolling uncovered; not part of invalidated().
    [[nodiscard]] const std::vector<CRect>& uncovered() const { return uncovered_; }
    [[nodiscard]] const std::vector<Scroll>& scrolls() const { return scrolls_; }
    /// Forgets the three records above.
    void clearRecord();
    /// Nothing while the window has no caret.
    [[nodiscard]] const std::optional<Caret>& caret() const { return caret_; }
    /// Where the caret was put last, also when there is none now.
    [[nodiscard]] CPoint caretPosition() const { return caretPosition_; }
    [[nodiscard]] CursorShape cursor() const { return cursor_; }
    [[nodiscard]] const std::u16string& statusText() const { return statusText_; }
    /// The text of the tip that is shown; empty for none.
    [[nodiscard]] const std::u16string& tip() const { return tip_; }
    [[nodiscard]] bool isPopup() const { return popup_; }
    [[nodiscard]] const ScrollInfo& scrollInfo(ScrollBarKind bar) const { return barOf(bar).info; }

    // What a user or a host does

    void setTrackPosition(ScrollBarKind bar, int position) { barOf(bar).track = position; }
    void enableScrollBar(ScrollBarKind bar, bool enabled) { barOf(bar).enabled = enabled; }
    /// Paints the whole client area into `dc`, as the window system does: background, then content.
    void paint(RecordingDC& dc);

    [[nodiscard]] CSize clientSize() const override { return {rect_.Width(), rect_.Height()}; }
    [[nodiscard]] CRect windowRect() const override;
    void moveWindow(const CRect& rectInParent) override;
    void movePopup(CPoint corner) override;
    /// Hiding takes the focus and the capture from the window and all inside it.
    void show(bool visible) override;
    /// False while any window around this one is hidden.
    [[nodiscard]] bool isVisible() const override;
    void setFocus() override;
    [[nodiscard]] bool hasFocus() const override;
    void invalidate(const CRect& rect) override { invalidated_.push_back(rect); }
    void scrollWindow(int dx, int dy, const CRect& rect) override;
    [[nodiscard]] std::unique_ptr<CDC> clientDC() override;
    void setScrollInfo(ScrollBarKind bar, const ScrollInfo& info) override { barOf(bar).info = info; }
    [[nodiscard]] int trackPosition(ScrollBarKind bar) const override { return barOf(bar).track; }
    [[nodiscard]] bool isScrollBarEnabled(ScrollBarKind bar) const override;
    void createCaret(int width, int height) override { caret_ = Caret{{width, height}, false}; }
    void destroyCaret() override { caret_.reset(); }
    void setCaretPos(CPoint position) override { caretPosition_ = position; }
    void showCaret() override;
    void setCursor(CursorShape shape) override { cursor_ = shape; }
    void setCapture() override;
    void releaseCapture() override;
    [[nodiscard]] bool hasCapture() const override;
    [[nodiscard]] CPoint clientToScreen(CPoint point) const override;
    void showTip(const CRect&, std::u16string_view text) override { tip_ = text; }
    void setStatusText(std::u16string_view text) override { statusText_ = text; }
    void destroy() override;

  private:
    struct Bar {
        bool present = false;
        bool enabled = true;
        int track = 0;
        ScrollInfo info{};
    };

    [[nodiscard]] Bar& barOf(ScrollBarKind bar) { return bar == SB_HORZ ? horizontal_ : vertical_; }
    [[nodiscard]] const Bar& barOf(ScrollBarKind bar) const {
        return bar == SB_HORZ ? horizontal_ : vertical_;
    }
    void destroyChildren();
    void leaveTree();

    HeadlessPlatform& platform_;
    CWnd& window_;
    HeadlessWindow* parent_;
    std::vector<HeadlessWindow*> children_;
    CRect rect_; ///< in the parent; of a popup: on the screen
    bool popup_;
    bool shown_ = false;
    bool destroyed_ = false;
    Bar horizontal_;
    Bar vertical_;

    std::vector<CRect> invalidated_;
    std::vector<CRect> uncovered_;
    std::vector<Scroll> scrolls_;
    std::optional<Caret> caret_;
    CPoint caretPosition_{};
    CursorShape cursor_ = CursorShape::Arrow;
    std::u16string statusText_;
    std::u16string tip_;
};

} // namespace tavrin
