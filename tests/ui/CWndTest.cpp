#include "TestWindows.h"
#include "platform/ui/AcceleratorTable.h"

#include <gtest/gtest.h>

namespace tavrin::test {
namespace {

using Log = std::vector<std::string>;

constexpr UINT commandBase = 1;
constexpr UINT commandDerived = 2;
constexpr UINT commandGreyed = 3;

/// Handles keys itself and leaves some to the default.
class BaseWindow : public CWnd {
  public:
    using CWnd::CWnd;
    Log log;

  protected:
    void OnKeyDown(UINT key, UINT, UINT) {
        log.push_back("base key " + std::to_string(key));
        if (key == VK_RETURN)
            SendMessage({.message = WM_CHAR, .key = 'x'}); // nested: must not change what Default() means
        log.push_back("current " + std::to_string(GetCurrentMessage()->message));
        Default();
    }
    void OnCommand() { log.emplace_back("base command"); }
    LRESULT DefWindowProc(const MSG& message) override {
        log.push_back("default " + std::to_string(message.message));
        return 7;
    }
    [[nodiscard]] const MessageMap& GetMessageMap() const override { return theMessageMap; }
    static const MessageMap theMessageMap;
};

const MessageMap BaseWindow::theMessageMap = [] {
    static constexpr MessageMapEntry rows[] = {
        route<&BaseWindow::OnKeyDown>(WM_KEYDOWN, "OnKeyDown"),
        routeCommand<&BaseWindow::OnCommand>(commandBase, "OnCommand"),
        routeCommand<&BaseWindow::OnCommand>(commandGreyed, "OnCommand"),
    };
    return MessageMap{&CWnd::theMessageMap, rows};
}();

class DerivedWindow : public BaseWindow {
  public:
    using BaseWindow::BaseWindow;

    [[nodiscard]] const MessageMap& GetMessageMap() const override {
        static const MessageMapEntry rows[] = {
            routeCommand<&DerivedWindow::OnOwnCommand>(commandDerived, "OnOwnCommand"),
            routeUpdate<&DerivedWindow::OnUpdateGreyed>(commandGreyed, "OnUpdateGreyed"),
            routeRegistered<&DerivedWindow::OnRegistered>(Platform::RegisterWindowMessage("tavrin test"),
                                                          "OnRegistered"),
        };
        static const MessageMap map{&BaseWindow::theMessageMap, rows};
        return map;
    }

  private:
    void OnOwnCommand() { log.emplace_back("own command"); }
    void OnUpdateGreyed(CCmdUI* state) { state->Enable(false); }
    LRESULT OnRegistered(const MSG& message) { return *static_cast<const int*>(message.data); }
};

TEST(CWnd, routesMessagesToTheNearestRowAndTheRestToTheDefault) {
    HeadlessPlatform platform;
    DerivedWindow window(platform);
    EXPECT_EQ(window.SendMessage({.message = WM_KEYDOWN, .key = VK_LEFT}), 0);
    EXPECT_EQ(window.SendMessage({.message = WM_PAINT}), 7);
    EXPECT_EQ(window.log, (Log{"base key 37", "current 256", "default 256", "default 15"}));
}

TEST(CWnd, defaultMeansTheInnermostMessageAfterANestedOne) {
    HeadlessPlatform platform;
    DerivedWindow window(platform);
    window.SendMessage({.message = WM_KEYDOWN, .key = VK_RETURN});
    EXPECT_EQ(window.log, (Log{"base key 13", "default 258", "current 256", "default 256"}));
}

TEST(CWnd, routesRegisteredMessagesByTheNumberOfTheirName) {
    HeadlessPlatform platform;
    DerivedWindow window(platform);
    const UINT number = Platform::RegisterWindowMessage("tavrin test");
    EXPECT_EQ(Platform::RegisterWindowMessage("tavrin test"), number);
    EXPECT_NE(Platform::RegisterWindowMessage("tavrin other"), number);
    EXPECT_GE(number, WM_REGISTERED_FIRST);
    const int record = 42;
    MSG message{.message = number};
    message.data = &record;
    EXPECT_EQ(window.SendMessage(message), 42);
}

TEST(CWnd, commandsReportWhetherTheyHaveAHandlerAndAreEnabledByTheirRows) {
    struct Case {
        UINT command;
        bool handled;
        bool enabled;
    };
    HeadlessPlatform platform;
    DerivedWindow window(platform);
    for (const Case& c : {Case{commandBase, true, true}, Case{commandDerived, true, true},
                          Case{commandGreyed, true, false}, Case{99, false, false}}) {
        SCOPED_TRACE(c.command);
        CCmdUI state(c.command);
        EXPECT_EQ(window.UpdateCommand(state), c.handled);
        EXPECT_EQ(state.isEnabled(), c.enabled);
        EXPECT_EQ(window.SendCommand(c.command), c.handled);
    }
    EXPECT_EQ(window.log, (Log{"base command", "own command", "base command"}));
}

TEST(CWnd, acceleratorsTakeCtrlAloneWithTheirKey) {
    struct Case {
        UINT message;
        UINT key;
        std::vector<VirtualKey> held;
        bool taken;
    };
    HeadlessPlatform platform;
    DerivedWindow window(platform);
    const AcceleratorTable table({{'C', commandBase}, {'D', 99}});
    const std::vector<Case> cases{
        {WM_KEYDOWN, 'C', {VK_CONTROL}, true},
        {WM_KEYDOWN, 'D', {VK_CONTROL}, true}, // taken although nobody handles the command
        {WM_KEYDOWN, 'C', {}, false},
        {WM_KEYDOWN, 'C', {VK_CONTROL, VK_SHIFT}, false},
        {WM_KEYDOWN, 'C', {VK_CONTROL, VK_ALT}, false},
        {WM_KEYDOWN, 'E', {VK_CONTROL}, false},
        {WM_CHAR, 'C', {VK_CONTROL}, false},
    };
    for (const Case& c : cases) {
        for (const VirtualKey key : c.held)
            platform.holdKey(key, true);
        EXPECT_EQ(table.translate(window, {.message = c.message, .key = c.key}), c.taken)
            << c.message << " " << c.key << " " << c.held.size();
        for (const VirtualKey key : c.held)
            platform.holdKey(key, false);
    }
    EXPECT_EQ(window.log, Log{"base command"});
}

TEST(CWnd, tellsItsSizeBeforeItIsShown) {
    HeadlessPlatform platform;
    Log log;
    LoggingWindow window(platform, "w", log);
    window.onMessage = [&](const MSG& message) {
        if (message.message != WM_SIZE)
            return;
        EXPECT_EQ(message.size, (CSize{30, 20}));
        EXPECT_EQ(window.GetClientRect(), (CRect{0, 0, 30, 20}));
        EXPECT_FALSE(window.IsWindowVisible());
    };
    EXPECT_EQ(window.GetClientRect(), CRect{});
    ASSERT_TRUE(window.CreateWindowIn(nullptr, {.rect = {5, 5, 35, 25}}));
    EXPECT_TRUE(window.IsWindowVisible());
    EXPECT_EQ(log, Log{"w size"});
    EXPECT_FALSE(window.CreateWindowIn(nullptr, {})) << "it has a window already";
}

TEST(CWnd, withoutAWindowDrawingRequestsDoNothing) {
    HeadlessPlatform platform;
    TestView view(platform);
    view.Invalidate();
    view.SetFocus();
    view.MoveWindow({0, 0, 9, 9});
    view.SetScrollSizes({1000, 1000});
    EXPECT_FALSE(view.OnScrollBy({1, 1}, true));
    EXPECT_FALSE(view.HasFocus());
    EXPECT_EQ(view.GetParentFrame(), nullptr);
}

TEST(CWnd, destroyingAWindowDestroysTheInnerOnesFirst) {
    HeadlessPlatform platform;
    Log log;
    LoggingWindow outer(platform, "outer", log);
    LoggingWindow inner(platform, "inner", log);
    outer.CreateWindowIn(nullptr, {.rect = {0, 0, 10, 10}});
    inner.CreateWindowIn(&outer, {.rect = {0, 0, 5, 5}});
    inner.SetFocus();
    log.clear();
    outer.DestroyWindow();
    EXPECT_EQ(log, (Log{"inner blur", "inner destroy", "inner gone", "outer destroy", "outer gone"}));
    EXPECT_EQ(inner.peer(), nullptr);
    EXPECT_EQ(inner.GetParent(), nullptr);
    EXPECT_EQ(platform.focus(), nullptr);
}

TEST(CWnd, deletingTheOuterObjectDestroysOnlyTheWindowsOfInnerOnes) {
    HeadlessPlatform platform;
    Log log;
    auto outer = std::make_unique<LoggingWindow>(platform, "outer", log);
    LoggingWindow inner(platform, "inner", log);
    outer->CreateWindowIn(nullptr, {});
    inner.CreateWindowIn(outer.get(), {});
    outer->SetFocus();
    log.clear();
    outer.reset();
    EXPECT_EQ(log, (Log{"inner destroy", "inner gone"})) << "no message to an object half destroyed";
    EXPECT_EQ(platform.focus(), nullptr);
    EXPECT_FALSE(inner.IsWindowVisible());
    EXPECT_TRUE(inner.CreateWindowIn(nullptr, {})) << "it can get a window again";
}

TEST(CWnd, deletingTheInnerObjectFirstLeavesTheOuterAlone) {
    HeadlessPlatform platform;
    Log log;
    LoggingWindow outer(platform, "outer", log);
    outer.CreateWindowIn(nullptr, {});
    auto inner = std::make_unique<LoggingWindow>(platform, "inner", log);
    inner->CreateWindowIn(&outer, {});
    inner->SetFocus();
    log.clear();
    inner.reset();
    outer.DestroyWindow();
    EXPECT_EQ(log, (Log{"outer destroy", "outer gone"}));
}

TEST(CWnd, mayBeDeletedByItsOwnHandler) {
    HeadlessPlatform platform;
    Log log;
    auto* window = new LoggingWindow(platform, "w", log);
    window->CreateWindowIn(nullptr, {});
    window->onMessage = [window](const MSG& message) {
        if (message.message == WM_KEYDOWN)
            window->SendMessage({.message = WM_CHAR});
        if (message.message == WM_CHAR)
            delete window;
    };
    log.clear();
    platform.pressKey(*window, {.key = 'A', .character = u'a'});
    EXPECT_EQ(log, (Log{"w key", "w char"})) << "the key's own character has no window to go to";
}

TEST(CWnd, staysUsableAfterAHandlerThrew) {
    HeadlessPlatform platform;
    Log log;
    LoggingWindow window(platform, "w", log);
    window.onMessage = [](const MSG&) { throw std::runtime_error("no"); };
    EXPECT_THROW(window.SendMessage({.message = WM_KEYDOWN}), std::runtime_error);
    window.onMessage = nullptr;
    window.SendMessage({.message = WM_CHAR});
    EXPECT_EQ(log, (Log{"w key", "w char"}));
}

TEST(CFrameWnd, fillsItselfWithItsViewAndHandsItTheFocus) {
    HeadlessPlatform platform;
    auto* frame = new CFrameWnd(platform); // goes with its window
    frame->CreateWindowIn(nullptr, {.rect = {0, 0, 200, 100}});
    TestView view(platform, frame, {10, 10});
    frame->SetActiveView(&view);
    EXPECT_EQ(view.GetParentFrame(), frame);

    frame->MoveWindow({0, 0, 300, 150});
    EXPECT_EQ(view.GetClientRect(), (CRect{0, 0, 300, 150}));
    frame->SetFocus();
    EXPECT_TRUE(view.HasFocus());
    frame->SetMessageText(u"told");
    EXPECT_EQ(HeadlessPlatform::windowOf(*frame).statusText(), u"told");
    frame->DestroyWindow();
    EXPECT_EQ(view.peer(), nullptr);
}

TEST(CFrameWnd, forgetsAViewThatGoesFirst) {
    HeadlessPlatform platform;
    auto* frame = new CFrameWnd(platform);
    frame->CreateWindowIn(nullptr, {.rect = {0, 0, 200, 100}});
    {
        TestView view(platform, frame);
        frame->SetActiveView(&view);
    }
    EXPECT_EQ(frame->GetActiveView(), nullptr);
    frame->MoveWindow({0, 0, 10, 10});
    frame->SetFocus();
    frame->DestroyWindow();
}

} // namespace
} // namespace tavrin::test
