#pragma once

#include "platform/qt/QtPlatform.h"
#include "platform/qt/ViewPeer.h"
#include "platform/ui/CScrollView.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QImage>
#include <QTemporaryDir>
#include <QWidget>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace tavrin::qt {

/// Runs the event loop until the condition holds; false when it does not within ten seconds.
template <class Condition>
bool waitFor(Condition condition) {
    const QDeadlineTimer deadline(10000);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    return true;
}

/// A platform with settings of its own.
class QtFixture : public testing::Test {
  protected:
    QTemporaryDir folder_;
    QtPlatform platform_{folder_.filePath("settings.ini")};
};

/// A view of numbered lines that writes down what reaches it.
class RecordingView final : public CScrollView {
  public:
    static constexpr int lineHeight = 16;
    static constexpr int gutter = 30;

    explicit RecordingView(Platform& platform) : CScrollView(platform) {}

    void OnDraw(CDC* dc) override {
        const CRect client = GetClientRect();
        const int sx = GetScrollPos(SB_HORZ);
        const int sy = GetScrollPos(SB_VERT);
        for (int line = sy / lineHeight; line * lineHeight - sy < client.Height(); ++line) {
            const int y = line * lineHeight - sy;
            dc->FillSolidRect({gutter, y, client.Width(), y + lineHeight}, line % 2 ? 0xEEEEEE : 0xFFFFFF);
            dc->SetBkMode(BackgroundMode::Transparent);
            dc->TextOut(gutter - sx, y, u"line " + toText(line) + u" of a text \u6F22\u5B57 with an end");
            dc->FillSolidRect({0, y, gutter, y + lineHeight}, 0x808080);
            dc->TextOut(2, y, toText(line));
        }
        ++draws;
    }
    bool OnScrollBy(CSize by, bool doScroll) override {
        const CPoint before{GetScrollPos(SB_HORZ), GetScrollPos(SB_VERT)};
        const CRect client = GetClientRect();
        const CPoint after{std::clamp(before.x + by.cx, 0, GetScrollLimit(SB_HORZ)),
                           std::clamp(before.y + by.cy, 0, GetScrollLimit(SB_VERT))};
        if (after == before || !doScroll)
            return after != before;
        peer()->scrollWindow(before.x - after.x, before.y - after.y,
                             {gutter, 0, client.right, client.bottom});
        peer()->scrollWindow(0, before.y - after.y, {0, 0, gutter, client.bottom});
        SetScrollPos(SB_HORZ, after.x);
        SetScrollPos(SB_VERT, after.y);
        return true;
    }
    bool PreTranslateMessage(const MSG& message) override {
        if (!IsAccelerator(message))
            return false;
        note("command", message.key);
        return true;
    }
    bool IsAccelerator(const MSG& message) const override {
        return message.message == WM_KEYDOWN && platform().GetKeyState(VK_CONTROL) &&
               shortcuts.contains(message.key);
    }
    void OnUpdate() override {
        ++updates;
        CScrollView::OnUpdate();
    }

    /// Takes what was written down since the last call.
    std::string takeLog() { return std::exchange(log_, {}); }

    std::set<UINT> shortcuts;
    int draws = 0;
    int updates = 0;
    int destroyed = 0;
    CPoint lastPoint{};
    LRESULT (*onKey)(RecordingView& view) = nullptr;

  protected:
    const MessageMap& GetMessageMap() const override {
        static const MessageMapEntry rows[] = {
            route<&RecordingView::OnKey>(WM_KEYDOWN, "OnKey"),
            route<&RecordingView::OnCharacter>(WM_CHAR, "OnCharacter"),
            route<&RecordingView::OnMouse>(WM_LBUTTONDOWN, "OnMouse"),
            route<&RecordingView::OnMouse>(WM_LBUTTONUP, "OnMouse"),
            route<&RecordingView::OnMouse>(WM_LBUTTONDBLCLK, "OnMouse"),
            route<&RecordingView::OnMouse>(WM_RBUTTONDOWN, "OnMouse"),
            route<&RecordingView::OnMouse>(WM_MOUSEMOVE, "OnMouse"),
            route<&RecordingView::OnOther>(WM_SETFOCUS, "OnOther"),
            route<&RecordingView::OnOther>(WM_KILLFOCUS, "OnOther"),
            route<&RecordingView::OnOther>(WM_CAPTURECHANGED, "OnOther"),
            routeCommand<&RecordingView::OnPaste>(ID_EDIT_PASTE, "OnPaste"),
        };
        static const MessageMap map{&CScrollView::theMessageMap, rows};
        return map;
    }
    void PostNcDestroy() override { ++destroyed; }

  private:
    static std::u16string toText(int number) {
        const std::string digits = std::to_string(number);
        return {digits.begin(), digits.end()};
    }
    void note(const char* what, UINT number) {
        log_ += std::string(what) + " " + std::to_string(number) + "; ";
    }

    LRESULT OnKey(const MSG& message) {
        note("key", message.key);
        return onKey ? onKey(*this) : 0;
    }
    LRESULT OnCharacter(const MSG& message) {
        note("char", message.key);
        return 0;
    }
    LRESULT OnMouse(const MSG& message) {
        lastPoint = message.point;
        if (message.message == WM_LBUTTONDOWN)
            peer()->setCapture();
        if (message.message == WM_LBUTTONUP)
            peer()->releaseCapture();
        if (message.message != WM_MOUSEMOVE || peer()->hasCapture())
            note("mouse", message.message);
        return 0;
    }
    LRESULT OnOther(const MSG& message) {
        note("message", message.message);
        return 0;
    }
    void OnPaste() { log_ += "paste; "; }

    std::string log_;
};

/// A shown view of 400 x 200 pixels over 1000 lines of 900 pixels, with the focus.
class ViewFixture : public QtFixture {
  protected:
    ViewFixture() {
        EXPECT_TRUE(view_.CreateWindowIn(
            nullptr, {.visible = false, .horizontalScrollBar = true, .verticalScrollBar = true}));
        widget().resize(400, 200);
        view_.SetScrollSizes({900, 1000 * RecordingView::lineHeight}, {}, {8, RecordingView::lineHeight});
        view_.ShowWindow(true);
        widget().activateWindow();
        view_.SetFocus();
        EXPECT_TRUE(waitFor([this] { return view_.HasFocus() && view_.draws > 0; }));
        view_.takeLog();
    }

    [[nodiscard]] QWidget& widget() const { return QtWindowPeer::of(view_)->widget(); }
    [[nodiscard]] QWidget& client() const { return QtWindowPeer::of(view_)->clientWidget(); }

    RecordingView view_{platform_};
};

} // namespace tavrin::qt
