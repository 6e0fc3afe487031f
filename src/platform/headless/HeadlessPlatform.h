#pragma once

#include "platform/core/MemorySettings.h"
#include "platform/headless/HeadlessFindDialog.h"
#include "platform/headless/HeadlessPrinter.h"
#include "platform/headless/HeadlessWindow.h"
#include "platform/ui/Platform.h"

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace tavrin {

/// A clipboard of its own, which another program may hold.
class HeadlessClipboard final : public Clipboard {
  public:
    bool setText(std::u16string_view text) override;
    [[nodiscard]] std::optional<std::u16string> text() override;
    [[nodiscard]] bool hasText() override;

    /// While busy every operation above fails, as if another program held the clipboard.
    void setBusy(bool busy) { busy_ = busy; }
    /// What lies there, busy or not.
    [[nodiscard]] const std::optional<std::u16string>& content() const { return content_; }
    void setContent(std::optional<std::u16string> content) { content_ = std::move(content); }

  private:
    std::optional<std::u16string> content_;
    bool busy_ = false;
};

class HeadlessRegistry final : public Registry {
  public:
    [[nodiscard]] std::optional<std::u16string> readString(std::string_view key,
                                                           std::string_view name) override;
    bool writeString(std::string_view key, std::string_view name, std::u16string_view value) override;

    /// Only keys that exist can be written.
    void createKey(std::string_view key) { keys_.emplace(key, Values{}); }

  private:
    using Values = std::map<std::string, std::u16string, std::less<>>;
    std::map<std::string, Values, std::less<>> keys_;
};

/// One key press: what the keyboard holds down and what it types.
struct KeyStroke {
    UINT key = 0;           ///< virtual key
    char16_t character = 0; ///< 0 when the key gives none
    bool ctrl = false;
    bool shift = false;
    bool alt = false;
};

/// A window system in memory, the same on every machine: no fonts, no clock, no desktop. Fonts are cells of
/// defaultCellSize unless set otherwise, a wheel notch is 3 lines, the system colours are black on white with
/// a selection of white on 0xD77800 and a workspace of 0xABABAB.
///
/// A script or a test plays the user by the operations below; messages go through PreTranslateMessage of
/// the window and those around it, as in a message loop. While a popup is up it has the keyboard, whatever
/// window a key is meant for.
class HeadlessPlatform final : public Platform {
  public:
    HeadlessPlatform() = default;

    // The user's side

    /// The modifiers are held for the key-down message and for the character, which follows when nobody took
    /// the key.
    void pressKey(CWnd& window, const KeyStroke& stroke);
    /// A character alone, as an input method gives it.
    void typeCharacter(CWnd& window, char16_t character);
    /// A mouse message at a point of the window's client area. While a window has the capture the message
    /// goes there instead.
    void sendMouse(CWnd& window, UINT message, CPoint point, UINT flags = 0);
    /// Positive rotation is away from the user; WHEEL_DELTA a notch.
    void turnWheel(CWnd& window, int rotation, CPoint point = {});
    void holdKey(VirtualKey key, bool down);

    // The desktop's side

    /// Moves the focus with WM_KILLFOCUS and WM_SETFOCUS; null takes it away from our windows.
    void setFocus(HeadlessWindow* target);
    [[nodiscard]] HeadlessWindow* focus() const { return focus_; }
    /// The window that loses the capture gets WM_CAPTURECHANGED.
    void setCapture(HeadlessWindow* target);
    [[nodiscard]] HeadlessWindow* capture() const { return capture_; }
    /// The cell of the fonts made from now on.
    void setCellSize(CSize cell) { cell_ = cell; }
    /// The same for one size (tenths of a point) of one family.
    void setCellSize(std::u16string_view family, int tenthsOfPoint, CSize cell);
    void setWheelScroll(WheelScroll wheel) { wheel_ = wheel; }
    void setWorkArea(const CRect& area) { workArea_ = area; }
    void setMainWindow(CWnd* window) { mainWindow_ = window; }
    /// What the user does while a popup is up: called again and again until the popup has gone, to play one
    /// input each time; false: nothing more, and the popup is closed. Without one every popup is closed as
    /// soon as it is up.
    void setPopupUser(std::function<bool()> user) { popupUser_ = std::move(user); }
    /// The popup that has the keyboard; null when there is none.
    [[nodiscard]] HeadlessWindow* popup() const { return popup_; }
    /// Whether a popup is up and covers a point of the window's client area. The mouse acts on it there.
    [[nodiscard]] bool isOverPopup(const HeadlessWindow& window, CPoint point) const;
    [[nodiscard]] int beeps() const { return beeps_; }
    [[nodiscard]] int waitCursors() const { return waitCursors_; }
    /// The find dialogs that are open, the latest last.
    [[nodiscard]] std::vector<HeadlessFindDialog*> findDialogs() const;
    /// The user stops the next long task at its report number `report` (1: the first); 0: never, the default.
    void stopNextTaskAt(int report) { stopAt_ = report; }
    /// Reports of the long task that ended last.
    [[nodiscard]] int reports() const { return reports_; }
    [[nodiscard]] HeadlessClipboard& headlessClipboard() { return clipboard_; }
    [[nodiscard]] HeadlessRegistry& headlessRegistry() { return registry_; }
    [[nodiscard]] HeadlessPrinter& printer() { return printer_; }
    /// The font faces that dialogs list, sorted.
    [[nodiscard]] const std::vector<std::u16string>& fontFaces() const { return faces_; }
    void setFontFaces(std::vector<std::u16string> faces) { faces_ = std::move(faces); }
    /// The record of a window of this platform. REQUIRES: window.peer() is not null.
    [[nodiscard]] static HeadlessWindow& windowOf(const CWnd& window);

    [[nodiscard]] std::unique_ptr<WindowPeer> createWindow(CWnd& window, CWnd* parent,
                                                           const CREATESTRUCT& how) override;
    [[nodiscard]] std::unique_ptr<DialogControls> createControls(CWnd& dialog,
                                                                 const DialogTemplate& layout) override;
    [[nodiscard]] std::unique_ptr<CFont> createPointFont(int tenthsOfPoint,
                                                         std::u16string_view family) override;
    [[nodiscard]] std::unique_ptr<CFont> createListFont() override;
    [[nodiscard]] std::unique_ptr<CFont> createFontLike(const CFont& font, FontStyle style) override;
    /// Every font has the cell of the printer's device, if that sets one.
    [[nodiscard]] std::unique_ptr<CFont> createPrinterFont(const CDC& printer, int tenthsOfPoint,
                                                           std::u16string_view family) override;
    [[nodiscard]] std::unique_ptr<CDC> createMeasureDC() override;
    [[nodiscard]] std::shared_ptr<PrintJob> createPrintJob(CWnd& window, std::u16string_view title,
                                                           bool direct) override;
    /// Prints once, into the printer's latest job.
    void showPrintPreview(CWnd& window, std::u16string_view title,
                          const std::function<void(std::shared_ptr<PrintJob>)>& print) override;
    [[nodiscard]] COLORREF GetSysColor(SystemColor role) const override;
    [[nodiscard]] bool GetKeyState(VirtualKey key) const override { return held_.contains(key); }
    [[nodiscard]] WheelScroll wheelScroll() const override { return wheel_; }
    void MessageBeep() override { ++beeps_; }
    [[nodiscard]] int GetSystemMetrics(SystemMetric metric) const override;
    [[nodiscard]] CRect workArea(CPoint) const override { return workArea_; }
    [[nodiscard]] CWnd* mainWindow() const override { return mainWindow_; }
    void runPopup(CWnd& popup) override;
    void BeginWaitCursor() override { ++waitCursors_; }
    void EndWaitCursor() override { --waitCursors_; }
    [[nodiscard]] CFindReplaceDialog* createFindReplaceDialog() override;
    [[nodiscard]] std::unique_ptr<Progress> beginProgress(CWnd& window, LongTask task) override;
    [[nodiscard]] Clipboard& clipboard() override { return clipboard_; }
    [[nodiscard]] UserSettings& settings() override { return settings_; }
    [[nodiscard]] Registry& registry() override { return registry_; }

  private:
    friend class HeadlessFindDialog;
    friend class HeadlessWindow;
    class ScriptedProgress;

    void onWindowCreated(HeadlessWindow& window) { windows_.insert(&window); }
    /// Takes focus and capture from the window and those inside it, with messages.
    void leaveWindow(const HeadlessWindow& window);
    /// The window is going: nothing here may point at it any more. Without messages.
    void forget(HeadlessWindow& window);
    [[nodiscard]] bool exists(const HeadlessWindow* window) const;
    void discardDialog(const HeadlessFindDialog& dialog);

    /// Offers the message to PreTranslateMessage from the window outwards, then sends it. True when
    /// pre-translation took it.
    bool deliver(HeadlessWindow& target, const MSG& message);

    std::set<const HeadlessWindow*> windows_;
    HeadlessWindow* focus_ = nullptr;
    HeadlessWindow* capture_ = nullptr;
    std::set<UINT> held_;
    CSize cell_ = defaultCellSize;
    std::map<std::pair<std::u16string, int>, CSize> cells_; ///< by family and size
    WheelScroll wheel_;
    int beeps_ = 0;
    CRect workArea_{0, 0, 1920, 1080};
    CWnd* mainWindow_ = nullptr;
    std::function<bool()> popupUser_;
    HeadlessWindow* popup_ = nullptr;
    int waitCursors_ = 0;
    int stopAt_ = 0;
    int reports_ = 0;
    std::vector<std::unique_ptr<HeadlessFindDialog>> dialogs_; ///< each until it closes
    HeadlessClipboard clipboard_;
    HeadlessRegistry registry_;
    HeadlessPrinter printer_;
    MemorySettings settings_;
    std::vector<std::u16string> faces_{u"Courier", u"Courier New", u"DejaVu Sans Mono", u"Liberation Mono"};
};

} // namespace tavrin
