#include "QtFixture.h"
#include "platform/qt/FramePeer.h"
#include "platform/ui/CFrameWnd.h"

#include <QKeyEvent>
#include <QPointer>

namespace tavrin::qt {
namespace {

/// A host's window, a frame in it that deletes itself, and a view in the frame.
class LifetimeTest : public QtFixture {
  protected:
    LifetimeTest() {
        host_->CreateWindowIn(nullptr, {.rect = {0, 0, 300, 200}, .visible = true});
        frame_ = new CFrameWnd(platform_);
        frame_->CreateWindowIn(host_.get(), {.rect = {0, 0, 300, 200}});
        view_->CreateWindowIn(
            frame_, {.rect = {0, 0, 300, 200}, .horizontalScrollBar = true, .verticalScrollBar = true});
        hostWidget_ = &QtWindowPeer::of(*host_)->widget();
        frameWidget_ = &QtWindowPeer::of(*frame_)->widget();
        viewWidget_ = &QtWindowPeer::of(*view_)->widget();
    }

    std::unique_ptr<CWnd> host_ = std::make_unique<CWnd>(platform_);
    CFrameWnd* frame_ = nullptr;
    std::unique_ptr<RecordingView> view_ = std::make_unique<RecordingView>(platform_);
    QPointer<QWidget> hostWidget_;
    QPointer<QWidget> frameWidget_;
    QPointer<QWidget> viewWidget_;
};

TEST_F(LifetimeTest, hostsWidgetTakesAllWindowsWithIt) {
    delete hostWidget_;
    EXPECT_EQ(view_->destroyed, 1);
    EXPECT_EQ(view_->peer(), nullptr);
    EXPECT_EQ(host_->peer(), nullptr);
    EXPECT_FALSE(viewWidget_);
    EXPECT_FALSE(frameWidget_);
}

TEST_F(LifetimeTest, viewGoesFirst) {
    view_.reset();
    EXPECT_FALSE(viewWidget_);
    EXPECT_TRUE(frameWidget_);
    host_.reset();
    EXPECT_FALSE(frameWidget_);
}

TEST_F(LifetimeTest, hostsWindowGoesFirst) {
    host_.reset();
    EXPECT_FALSE(frameWidget_);
    EXPECT_FALSE(viewWidget_);
    EXPECT_EQ(view_->destroyed, 1);
}

TEST_F(LifetimeTest, destroyedFrameTakesTheViewsWindow) {
    frame_->DestroyWindow();
    EXPECT_EQ(view_->destroyed, 1);
    EXPECT_FALSE(viewWidget_);
    EXPECT_TRUE(hostWidget_);
}

TEST_F(LifetimeTest, windowMayGoWhileItsWidgetHandlesAnEvent) {
    view_->onKey = [](RecordingView& view) -> LRESULT {
        view.DestroyWindow();
        return 0;
    };
    QKeyEvent event(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, "a");
    QApplication::sendEvent(viewWidget_, &event);
    EXPECT_EQ(view_->destroyed, 1);
    EXPECT_EQ(view_->peer(), nullptr);
    EXPECT_TRUE(waitFor([this] { return !viewWidget_; }));
}

TEST_F(LifetimeTest, viewMayBeDeletedWhileItsWidgetHandlesAnEvent) {
    view_->onKey = [](RecordingView& view) -> LRESULT {
        delete &view;
        return 0;
    };
    QKeyEvent event(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, "a");
    static_cast<void>(view_.release());
    QApplication::sendEvent(viewWidget_, &event);
    EXPECT_TRUE(waitFor([this] { return !viewWidget_; }));
    EXPECT_TRUE(frameWidget_);
}

TEST_F(LifetimeTest, frameReportsItsStatusText) {
    std::u16string shown;
    static_cast<FramePeer*>(frame_->peer())->setStatusHandler([&](std::u16string_view text) {
        shown = text;
    });
    frame_->SetMessageText(u"Not found");
    EXPECT_EQ(shown, u"Not found");
}

} // namespace
} // namespace tavrin::qt
