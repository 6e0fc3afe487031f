#pragma once

#include "platform/core/UserSettings.h"
#include "platform/ui/CDC.h"
#include "platform/ui/Constants.h"
#include "platform/ui/Progress.h"
#include "platform/ui/WindowPeer.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tavrin {

class CFindReplaceDialog;
class CWnd;
class DialogControls;
class PrintJob;
struct DialogTemplate;

/// The clipboard of the desktop, UTF-16 text only. Every operation fails (false, nothing) while another
/// program holds it.
class Clipboard {
  public:
    virtual ~Clipboard() = default;
    virtual bool setText(std::u16string_view text) = 0;
    [[nodiscard]] virtual std::optional<std::u16string> text() = 0;
    [[nodiscard]] virtual bool hasText() = 0;
};

/// String values by key path and name that outlive the program, apart from the settings.
class Registry {
  public:
    virtual ~Registry() = default;
    /// Nothing when the key or the value does not exist or can't be read.
    [[nodiscard]] virtual std::optional<std::u16string> readString(std::string_view key,
                                                                   std::string_view name) = 0;
    /// False when the key does not exist (keys are made by whoever installs the program) or can't be written.
    virtual bool writeString(std::string_view key, std::string_view name, std::u16string_view value) = 0;
};

/// How a window is asked for.
struct CREATESTRUCT {
    CRect rect{}; ///< in the parent's client area
    bool visible = true;
    bool horizontalScrollBar = false;
    bool verticalScrollBar = false;
    /// A window of its own above the others, which takes no focus; it goes with the parent. Its rectangle is
    /// on the screen and counts without the border.
    bool popup = false;
};

/// How far a wheel notch scrolls.
struct WheelScroll {
    int linesPerNotch = 3;
    bool byPage = false;
};

/// A window system: the program makes one and hands it to the windows that it creates. It outlives them.
class Platform {
  public:
    Platform() = default;
    Platform(const Platform&) = delete;
    Platform& operator=(const Platform&) = delete;
    virtual ~Platform() = default;

    /// A window for `window` inside `parent` (a window of this platform), not visible yet and without a
    /// message: CWnd sends the first WM_SIZE and shows it. Null when it can't be created.
    [[nodiscard]] virtual std::unique_ptr<WindowPeer> createWindow(CWnd& window, CWnd* parent,
                                                                   const CREATESTRUCT& how) = 0;
    /// The controls of a dialog inside its window (one of this platform without scroll bars), in the
    /// template's order. What their user does is sent to the window by SendNotification.
    [[nodiscard]] virtual std::unique_ptr<DialogControls> createControls(CWnd& dialog,
                                                                         const DialogTemplate& layout) = 0;
    /// Size in tenths of a point. A face that does not exist is replaced by one that does, fixed-pitch if
    /// possible.
    [[nodiscard]] virtual std::unique_ptr<CFont> createPointFont(int tenthsOfPoint,
                                                                 std::u16string_view family) = 0;
    /// The font of the desktop's lists.
    [[nodiscard]] virtual std::unique_ptr<CFont> createListFont() = 0;
    /// A font of the same face and size.
    [[nodiscard]] virtual std::unique_ptr<CFont> createFontLike(const CFont& font, FontStyle style) = 0;
    /// The same for what is drawn on a printer's context.
    [[nodiscard]] virtual std::unique_ptr<CFont> createPrinterFont(const CDC& printer, int tenthsOfPoint,
                                                                   std::u16string_view family) = 0;
    /// A context that measures as the screen does and draws nothing.
    [[nodiscard]] virtual std::unique_ptr<CDC> createMeasureDC() = 0;

    /// Asks the user for a printer by the print dialog or, when `direct`, takes the default one. Null: the
    /// user cancelled, or there is none, which the user has been told. The dialog may use the document's
    /// title.
    [[nodiscard]] virtual std::shared_ptr<PrintJob> createPrintJob(CWnd& window, std::u16string_view title,
                                                                   bool direct) = 0;
    /// Shows what would be printed and returns when the user has seen it. `print` prints the whole document
    /// into the job it is given, and is called whenever the pages are wanted anew.
    virtual void showPrintPreview(CWnd& window, std::u16string_view title,
                                  const std::function<void(std::shared_ptr<PrintJob>)>& print) = 0;

    [[nodiscard]] virtual COLORREF GetSysColor(SystemColor role) const = 0;
    [[nodiscard]] virtual int GetSystemMetrics(SystemMetric metric) const = 0;
    /// Whether the key (VK_SHIFT, VK_CONTROL, VK_ALT) was held when the message being handled was made.
    [[nodiscard]] virtual bool GetKeyState(VirtualKey key) const = 0;
    [[nodiscard]] virtual WheelScroll wheelScroll() const = 0;
    virtual void MessageBeep() = 0;
    /// The pointer shows that the program is busy, until as many calls have ended it.
    virtual void BeginWaitCursor() = 0;
    virtual void EndWaitCursor() = 0;

    /// Not shown before its Create; deletes itself (see there).
    [[nodiscard]] virtual CFindReplaceDialog* createFindReplaceDialog() = 0;
    /// `window` is where the work goes on.
    [[nodiscard]] virtual std::unique_ptr<Progress> beginProgress(CWnd& window, LongTask task) = 0;

    /// What windows may cover of the screen that `point` lies on.
    [[nodiscard]] virtual CRect workArea(CPoint point) const = 0;
    /// The window of ours that is the application's main one; null: its main window, if it has one, is none
    /// of ours.
    [[nodiscard]] virtual CWnd* mainWindow() const = 0;
    /// Gives a popup that is shown the keyboard, while the focus stays where it is. Returns when the popup's
    /// window has been destroyed; destroys it itself when the user turns to something else. Keyboard messages
    /// go through the popup's PreTranslateMessage only.
    virtual void runPopup(CWnd& popup) = 0;

    [[nodiscard]] virtual Clipboard& clipboard() = 0;
    [[nodiscard]] virtual UserSettings& settings() = 0;
    [[nodiscard]] virtual Registry& registry() = 0;

    /// A number for the message name, the same for the same name in one process; above all fixed messages.
    [[nodiscard]] static UINT RegisterWindowMessage(std::string_view name);
};

/// The wait cursor while it lives.
class WaitCursor {
  public:
    explicit WaitCursor(Platform& platform) : platform_(platform) { platform_.BeginWaitCursor(); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;
    ~WaitCursor() { platform_.EndWaitCursor(); }

  private:
    Platform& platform_;
};

} // namespace tavrin
