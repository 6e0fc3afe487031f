#pragma once

#include <cstdint>

/// Numbers of the message, command and key vocabulary that the editor and its platforms share.
namespace tavrin {

using UINT = unsigned;
using LRESULT = std::intptr_t;

/// Colour as 0x00BBGGRR.
using COLORREF = std::uint32_t;

enum WindowMessage : UINT {
    WM_SIZE = 0x0005,
    WM_SETFOCUS = 0x0007,
    WM_KILLFOCUS = 0x0008,
    WM_PAINT = 0x000F,
    WM_ERASEBKGND = 0x0014,
    WM_SETCURSOR = 0x0020,
    WM_CONTEXTMENU = 0x007B,
    WM_NCDESTROY = 0x0082,
    WM_GETDLGCODE = 0x0087,
    WM_KEYFIRST = 0x0100,
    WM_KEYDOWN = 0x0100,
    WM_CHAR = 0x0102,
    WM_KEYLAST = 0x0108,
    WM_HSCROLL = 0x0114,
    WM_VSCROLL = 0x0115,
    WM_MOUSEMOVE = 0x0200,
    WM_LBUTTONDOWN = 0x0201,
    WM_LBUTTONUP = 0x0202,
    WM_LBUTTONDBLCLK = 0x0203,
    WM_RBUTTONDOWN = 0x0204,
    WM_RBUTTONDBLCLK = 0x0206,
    WM_MOUSEWHEEL = 0x020A,
    WM_MOUSEHWHEEL = 0x020E,
    WM_CAPTURECHANGED = 0x0215,
    WM_COMMANDHELP = 0x0365,
};

enum VirtualKey : UINT {
    VK_BACK = 8,
    VK_TAB = 9,
    VK_RETURN = 13,
    VK_SHIFT = 16,
    VK_CONTROL = 17,
    VK_ALT = 18,
    VK_ESCAPE = 27,
    VK_SPACE = 32,
    VK_PRIOR = 33,
    VK_NEXT = 34,
    VK_END = 35,
    VK_HOME = 36,
    VK_LEFT = 37,
    VK_UP = 38,
    VK_RIGHT = 39,
    VK_DOWN = 40,
    VK_INSERT = 45,
    VK_DELETE = 46,
    VK_F1 = 112, ///< F2 to F12 follow
};

enum Command : UINT {
    ID_EDIT_COPY = 57634,
    ID_EDIT_CUT = 57635,
    ID_EDIT_FIND = 57636,
    ID_EDIT_PASTE = 57637,
    ID_EDIT_REPLACE = 57641,
    ID_EDIT_SELECT_ALL = 57642,
    ID_EDIT_UNDO = 57643,
    ID_EDIT_REDO = 57644,
    ID_FILE_PRINT = 57607,
    ID_FILE_PRINT_DIRECT = 57608,
    ID_FILE_PRINT_PREVIEW = 57609,
    ID_AUTOCOMPLETE_LISTMEMBERS = 3032,
};

/// What a control of a dialog tells about its user.
enum ControlNotification : UINT {
    LBN_SELCHANGE = 1,  ///< another entry of a list box was chosen
    CBN_SELCHANGE = 1,  ///< another entry of a drop-down list was chosen
    EN_CHANGE = 0x0300, ///< the text of an edit box was changed
};

enum ScrollCode : UINT {
    SB_LINEUP = 0,
    SB_LINEDOWN = 1,
    SB_PAGEUP = 2,
    SB_PAGEDOWN = 3,
    SB_THUMBPOSITION = 4,
    SB_THUMBTRACK = 5,
    SB_TOP = 6,
    SB_BOTTOM = 7,
    SB_ENDSCROLL = 8,
};

enum class ScrollBarKind { Horizontal, Vertical };
inline constexpr ScrollBarKind SB_HORZ = ScrollBarKind::Horizontal;
inline constexpr ScrollBarKind SB_VERT = ScrollBarKind::Vertical;

enum SystemColor : int {
    COLOR_WINDOW = 5,
    COLOR_WINDOWTEXT = 8,
    COLOR_APPWORKSPACE = 12,
    COLOR_HIGHLIGHT = 13,
    COLOR_HIGHLIGHTTEXT = 14,
    COLOR_GRAYTEXT = 17,
};

/// Measures of the desktop, in pixels.
enum SystemMetric : int {
    SM_CXVSCROLL = 2,
    SM_CYROWSPACE = 0x1000, ///< between the rows of a list
};

/// Notifications that a control reflects to itself, and what their handlers answer.
enum Notification : UINT {
    LVN_ITEMCHANGED = 0xFFFFFF9B, ///< another item has the focus
    NM_CUSTOMDRAW = 0xFFFFFFF4,
    NM_DBLCLK = 0xFFFFFFFD,
};
inline constexpr UINT CDDS_PREPAINT = 1;
inline constexpr UINT CDDS_ITEMPREPAINT = 0x10001;
inline constexpr std::intptr_t CDRF_DODEFAULT = 0;
inline constexpr std::intptr_t CDRF_NEWFONT = 2;
inline constexpr std::intptr_t CDRF_NOTIFYITEMDRAW = 0x20;

/// Hit test of WM_SETCURSOR: the pointer is in the client area.
inline constexpr UINT HTCLIENT = 1;

/// Numbers of registered messages begin here, above all fixed ones.
inline constexpr UINT WM_REGISTERED_FIRST = 0xC000;

/// Answer to WM_GETDLGCODE: all keys (4) and characters (0x80) go to the control.
inline constexpr UINT DLGC_WANTALLKEYS = 0x0004;
inline constexpr UINT DLGC_WANTCHARS = 0x0080;

/// One notch of a mouse wheel in WM_MOUSEWHEEL.
inline constexpr int WHEEL_DELTA = 120;

/// Key states in the flags of mouse messages.
inline constexpr UINT MK_SHIFT = 0x0004;
inline constexpr UINT MK_CONTROL = 0x0008;

} // namespace tavrin
