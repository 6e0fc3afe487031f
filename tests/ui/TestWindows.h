#pragma once

#include "platform/headless/HeadlessPlatform.h"
#include "platform/ui/CFrameWnd.h"
#include "platform/ui/CScrollView.h"

#include <functional>
#include <string>
#include <vector>

namespace tavrin::test {

/// A window that writes down every message that reaches it.
class LoggingWindow : public CWnd {
  public:
    LoggingWindow(Platform& platform, std::string name, std::vector<std::string>& log)
        : CWnd(platform), name_(std::move(name)), log_(log) {}

    /// Runs when a message arrives, after it was written down.
    std::function<void(const MSG&)> onMessage;

  protected:
    LRESULT DefWindowProc(const MSG& message) override {
        log_.push_back(name_ + " " + nameOf(message.message));
        if (onMessage)
            onMessage(message);
        return 0;
    }
    void PostNcDestroy() override { log_.push_back(name_ + " gone"); }

  private:
    static std::string nameOf(UINT message) {
        switch (message) {
        case WM_SIZE:
            return "size";
        case WM_SETFOCUS:
            return "focus";
        case WM_KILLFOCUS:
            return "blur";
        case WM_NCDESTROY:
            return "destroy";
        case WM_KEYDOWN:
            return "key";
        case WM_CHAR:
            return "char";
        case WM_CAPTURECHANGED:
            return "capture";
        case WM_LBUTTONDOWN:
            return "press";
        case WM_MOUSEMOVE:
            return "move";
        case WM_SETCURSOR:
            return "cursor";
        default:
            return std::to_string(message);
        }
    }

    std::string name_;
    std::vector<std::string>& log_;
};

/// A view without content of its own.
class TestView : public CScrollView {
  public:
    using CScrollView::CScrollView;
    using CScrollView::DoMouseWheel;
    using CScrollView::SetScrollPos;

    explicit TestView(HeadlessPlatform& platform, CWnd* parent, CSize client = {100, 60})
        : CScrollView(platform) {
        CreateWindowIn(parent, {.rect = {0, 0, client.cx, client.cy},
                                .visible = true,
                                .horizontalScrollBar = true,
                                .verticalScrollBar = true});
    }

    [[nodiscard]] HeadlessWindow& record() const { return HeadlessPlatform::windowOf(*this); }
    [[nodiscard]] CPoint position() const { return {GetScrollPos(SB_HORZ), GetScrollPos(SB_VERT)}; }

    void OnDraw(CDC* dc) override { dc->TextOut(1, 2, u"drawn"); }
};

} // namespace tavrin::test
