#pragma once

#include "platform/ui/MessageMap.h"
#include "platform/ui/Platform.h"

#include <memory>

namespace tavrin {

/// A window: an object of the program that answers messages through its message map, and the platform's
/// peer that shows it. Without a peer (before Create, after destruction) it has no size and no focus, and
/// drawing requests do nothing.
class CWnd {
  public:
    explicit CWnd(Platform& platform) : platform_(platform) {}
    CWnd(const CWnd&) = delete;
    CWnd& operator=(const CWnd&) = delete;
    /// Destroys the window's peer, if it still has one, without a message.
    virtual ~CWnd();

    /// Knows whether a window object still lives: for code that calls others who may delete it.
    class Watch {
      public:
        explicit Watch(const CWnd& window) : life_(window.life_) {}
        [[nodiscard]] bool isAlive() const { return !life_.expired(); }

      private:
        std::weak_ptr<const char> life_;
    };

    [[nodiscard]] Platform& platform() const { return platform_; }
    /// Null while there is no window.
    [[nodiscard]] WindowPeer* peer() const { return peer_.get(); }
    [[nodiscard]] CWnd* GetParent() const { return parent_; }

    /// Runs PreCreateWindow, makes the peer, sends WM_SIZE and then, if asked for, shows the window. False
    /// when the platform makes no window.
    bool CreateWindowIn(CWnd* parent, CREATESTRUCT how);
    void DestroyWindow();

    /// Handles one message: the message map's row, else DefWindowProc. Returns what the handler answers. The
    /// handler may delete the window. When it runs out of memory the user is told, and the answer is 0.
    LRESULT SendMessage(const MSG& message);
    /// Runs the command's handler; false when the map has none.
    bool SendCommand(UINT command);
    /// Runs the handler of what a control inside this window tells (LBN_SELCHANGE and its like); false when
    /// the map has none.
    bool SendNotification(UINT control, UINT notification);
    /// Lets the map's update row set the state. Without one, a command that has a handler stays enabled and
    /// another is disabled. Returns whether the command has a handler.
    bool UpdateCommand(CCmdUI& state);
    /// Lets the map's row for a notification of the window's own see it; 0 when there is none.
    LRESULT Reflect(NMHDR& notification);
    /// Sees keyboard messages before they are dispatched; true takes the message.
    virtual bool PreTranslateMessage(const MSG& message);
    /// PreTranslateMessage as platforms call it: running out of memory ends it, and the message is taken.
    bool TranslateMessage(const MSG& message);
    /// Whether PreTranslateMessage would take this key-down message for a shortcut of the window's own. A
    /// platform on which the host's shortcuts come first asks before it lets them have the key.
    [[nodiscard]] virtual bool IsAccelerator(const MSG& message) const;

    void Invalidate();
    void InvalidateRect(const CRect& rect);
    /// (0, 0, 0, 0) without a window.
    [[nodiscard]] CRect GetClientRect() const;
    [[nodiscard]] bool IsWindowVisible() const { return peer_ && peer_->isVisible(); }
    [[nodiscard]] bool HasFocus() const { return peer_ && peer_->hasFocus(); }
    void ShowWindow(bool visible);
    void SetFocus();
    void MoveWindow(const CRect& rectInParent);

    /// The platform, or a handler, had no memory for what an event asks: tells the user, and brings what is
    /// to be seen up to date when there is some.
    void MemoryExhausted() noexcept;

    [[nodiscard]] virtual const MessageMap& GetMessageMap() const;

  protected:
    virtual bool PreCreateWindow(CREATESTRUCT& how);
    /// The default reaction to a message that no row takes.
    virtual LRESULT DefWindowProc(const MSG& message);
    /// For handlers: the default processing of the message being handled.
    LRESULT Default();
    /// For handlers: the message being handled, with the fields that their arguments leave out. Null
    /// elsewhere.
    [[nodiscard]] const MSG* GetCurrentMessage() const;
    /// A window inside this one, at any depth, is going: what points at it must forget it.
    virtual void OnDescendantGone(CWnd&) {}
    /// There was no memory to handle a message, which changed nothing or was done but for what is to be seen.
    /// The default asks the window around to tell the user.
    virtual void OnMemoryExhausted();
    /// What is to be seen is out of date: UpdateAgain runs before the next message that is no paint.
    void UpdateLater() noexcept { updateDue_ = true; }
    /// Brings what is to be seen up to date. The default repaints.
    virtual void UpdateAgain() { Invalidate(); }
    /// The last call after the window is gone; may delete the object. The default does nothing.
    virtual void PostNcDestroy() {}

    static const MessageMap theMessageMap;

  private:
    struct Dispatch;

    LRESULT dispatch(const MSG& message, const MessageMapEntry* row, CCmdUI* state);
    void makeUpUpdate() noexcept;
    void leaveParent();
    void onPeerGone();

    Platform& platform_;
    std::shared_ptr<const char> life_ = std::make_shared<char>();
    CWnd* parent_ = nullptr;
    std::unique_ptr<WindowPeer> peer_;
    bool updateDue_ = false;
    Dispatch* current_ = nullptr; ///< the innermost message being handled
};

} // namespace tavrin
