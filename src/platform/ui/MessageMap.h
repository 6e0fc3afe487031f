#pragma once

#include "platform/ui/Constants.h"
#include "platform/ui/Geometry.h"

#include <span>
#include <string_view>

namespace tavrin {

class CCmdUI;
class CDC;
class CWnd;

/// What a notification says; each kind has its own record.
struct NMHDR {
    UINT code = 0;
};

/// One message or command on its way to a window. Which fields count depends on the message; the others stay
/// zero. A command has only its number, as `key`.
struct MSG {
    UINT message = 0;
    UINT key = 0; ///< WM_KEYDOWN: virtual key; WM_CHAR: code unit; scroll messages: ScrollCode; WM_SETCURSOR:
                  ///< hit test
    UINT repeat = 1; ///< WM_KEYDOWN, WM_CHAR
    UINT flags = 0;  ///< mouse messages: MK_ bits; WM_SIZE: kind of change
    int delta = 0; ///< wheel messages: rotation, WHEEL_DELTA a notch, finer from touch pads; scroll messages:
                   ///< thumb position in pixels
    CPoint point{};             ///< mouse messages and WM_SETCURSOR: client pixels
    CSize size{};               ///< WM_SIZE: new client size
    CWnd* other = nullptr;      ///< focus messages: the window that loses or gets it, when it is one of ours
    CDC* dc = nullptr;          ///< WM_PAINT, WM_ERASEBKGND: client coordinates
    const void* data = nullptr; ///< registered messages: their record
    NMHDR* notification = nullptr; ///< reflected notifications: their record
};

/// A command state on its way to whoever shows it (a menu entry, a tool button).
class CCmdUI {
  public:
    explicit CCmdUI(UINT id) : m_nID(id) {}
    virtual ~CCmdUI() = default;
    virtual void Enable(bool on) { enabled_ = on; }
    [[nodiscard]] bool isEnabled() const { return enabled_; }

    const UINT m_nID;

  private:
    bool enabled_ = true;
};

enum class RouteKind { Message, Command, UpdateCommand, Registered, Reflected, Control };

/// One row of a message map.
struct MessageMapEntry {
    RouteKind kind;
    UINT id; ///< message or command; for Registered the number that registering gave; for Control
             ///< controlRoute()
    std::string_view handler; ///< the handler's name, for those who read the routing
    LRESULT (*call)(CWnd& window, const MSG& message, CCmdUI* state);
};

/// The routing of one class: its own rows, searched in order, then those of its base.
struct MessageMap {
    const MessageMap* base;
    std::span<const MessageMapEntry> entries;

    /// The first row for this kind and number in this map or its bases, or null.
    [[nodiscard]] const MessageMapEntry* find(RouteKind kind, UINT id) const {
        for (const MessageMap* map = this; map; map = map->base)
            for (const MessageMapEntry& entry : map->entries)
                if (entry.kind == kind && entry.id == id)
                    return &entry;
        return nullptr;
    }
};

/// Builds the rows: `route<&Class::OnKeyDown>(WM_KEYDOWN, "OnKeyDown")`. How a message's fields become the
/// handler's arguments follows from the handler's signature.
namespace routing {

template <class C>
LRESULT invoke(void (C::*handler)(UINT, UINT, UINT), C& w, const MSG& m, CCmdUI*) {
    (w.*handler)(m.key, m.repeat, m.flags); // keys and characters
    return 0;
}
template <class C>
LRESULT invoke(void (C::*handler)(UINT, CPoint), C& w, const MSG& m, CCmdUI*) {
    (w.*handler)(m.flags, m.point); // mouse buttons and moves
    return 0;
}
template <class C>
LRESULT invoke(void (C::*handler)(CWnd*), C& w, const MSG& m, CCmdUI*) {
    (w.*handler)(m.other); // focus, capture
    return 0;
}
template <class C>
LRESULT invoke(void (C::*handler)(CWnd*, CPoint), C& w, const MSG& m, CCmdUI*) {
    (w.*handler)(m.other, m.point); // context menu
    return 0;
}
template <class C>
LRESULT invoke(bool (C::*handler)(UINT, short, CPoint), C& w, const MSG& m, CCmdUI*) {
    return (w.*handler)(m.flags, static_cast<short>(m.delta), m.point); // wheel
}
template <class C>
LRESULT invoke(void (C::*handler)(UINT, int, int), C& w, const MSG& m, CCmdUI*) {
    (w.*handler)(m.flags, m.size.cx, m.size.cy); // size
    return 0;
}
template <class C>
LRESULT invoke(void (C::*handler)(UINT, int), C& w, const MSG& m, CCmdUI*) {
    (w.*handler)(m.key, m.delta); // scroll bars
    return 0;
}
template <class C>
LRESULT invoke(bool (C::*handler)(CDC*), C& w, const MSG& m, CCmdUI*) {
    return (w.*handler)(m.dc); // erase background
}
template <class C>
LRESULT invoke(bool (C::*handler)(CWnd*, UINT, UINT), C& w, const MSG& m, CCmdUI*) {
    return (w.*handler)(m.other, m.key, m.flags); // cursor
}
template <class C>
LRESULT invoke(UINT (C::*handler)(), C& w, const MSG&, CCmdUI*) {
    return static_cast<LRESULT>((w.*handler)()); // dialog code
}
template <class C>
LRESULT invoke(LRESULT (C::*handler)(const MSG&), C& w, const MSG& m, CCmdUI*) {
    return (w.*handler)(m); // anything else: registered messages, help
}
template <class C>
LRESULT invoke(void (C::*handler)(), C& w, const MSG&, CCmdUI*) {
    (w.*handler)(); // commands
    return 0;
}
template <class C>
LRESULT invoke(void (C::*handler)(CCmdUI*), C& w, const MSG&, CCmdUI* state) {
    (w.*handler)(state); // command states
    return 0;
}
template <class C>
LRESULT invoke(void (C::*handler)(NMHDR*, LRESULT*), C& w, const MSG& m, CCmdUI*) {
    LRESULT result = 0;
    (w.*handler)(m.notification, &result); // reflected notifications
    return result;
}

template <class Handler>
struct ClassOf;
template <class R, class C, class... Args>
struct ClassOf<R (C::*)(Args...)> {
    using type = C;
};

template <auto Handler>
LRESULT call(CWnd& window, const MSG& message, CCmdUI* state) {
    using Class = typename ClassOf<decltype(Handler)>::type;
    return invoke(Handler, static_cast<Class&>(window), message, state);
}

} // namespace routing

template <auto Handler>
constexpr MessageMapEntry route(UINT message, std::string_view name) {
    return {RouteKind::Message, message, name, &routing::call<Handler>};
}
template <auto Handler>
constexpr MessageMapEntry routeCommand(UINT command, std::string_view name) {
    return {RouteKind::Command, command, name, &routing::call<Handler>};
}
template <auto Handler>
constexpr MessageMapEntry routeUpdate(UINT command, std::string_view name) {
    return {RouteKind::UpdateCommand, command, name, &routing::call<Handler>};
}
template <auto Handler>
MessageMapEntry routeRegistered(UINT message, std::string_view name) {
    return {RouteKind::Registered, message, name, &routing::call<Handler>};
}
template <auto Handler>
constexpr MessageMapEntry routeReflected(UINT notification, std::string_view name) {
    return {RouteKind::Reflected, notification, name, &routing::call<Handler>};
}

/// A control and one of its notifications as one number.
constexpr UINT controlRoute(UINT control, UINT notification) {
    return notification << 16 | control;
}
template <auto Handler>
constexpr MessageMapEntry routeControl(UINT notification, UINT control, std::string_view name) {
    return {RouteKind::Control, controlRoute(control, notification), name, &routing::call<Handler>};
}

} // namespace tavrin
