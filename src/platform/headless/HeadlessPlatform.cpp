#include "platform/headless/HeadlessPlatform.h"

#include "platform/headless/HeadlessControls.h"
#include "platform/ui/CWnd.h"

#include <utility>

namespace tavrin {

namespace {

constexpr int scrollBarWidth = 16;

/// Holds modifier keys down while one input is handled, and puts back what was held before.
class HeldModifiers {
  public:
    HeldModifiers(std::set<UINT>& held, std::initializer_list<std::pair<VirtualKey, bool>> modifiers)
        : held_(held), before_(held) {
        for (const auto& [key, down] : modifiers)
            if (down)
                held_.insert(key);
    }
    HeldModifiers(const HeldModifiers&) = delete;
    HeldModifiers& operator=(const HeldModifiers&) = delete;
    ~HeldModifiers() { held_ = std::move(before_); }

  private:
    std::set<UINT>& held_;
    std::set<UINT> before_;
};

} // namespace

// Clipboard and registry

bool HeadlessClipboard::setText(std::u16string_view text) {
    if (!busy_)
        content_ = std::u16string(text);
    return !busy_;
}

std::optional<std::u16string> HeadlessClipboard::text() {
    return busy_ ? std::nullopt : content_;
}

bool HeadlessClipboard::hasText() {
    return !busy_ && content_.has_value();
}

std::optional<std::u16string> HeadlessRegistry::readString(std::string_view key, std::string_view name) {
    const auto values = keys_.find(key);
    if (values == keys_.end())
        return std::nullopt;
    const auto value = values->second.find(name);
    return value == values->second.end() ? std::nullopt : std::optional(value->second);
}

bool HeadlessRegistry::writeString(std::string_view key, std::string_view name, std::u16string_view value) {
    const auto values = keys_.find(key);
    if (values == keys_.end())
        return false;
    values->second.insert_or_assign(std::string(name), std::u16string(value));
    return true;
}

// Input

void HeadlessPlatform::pressKey(CWnd& window, const KeyStroke& stroke) {
    const HeldModifiers modifiers(
        held_, {{VK_CONTROL, stroke.ctrl}, {VK_SHIFT, stroke.shift}, {VK_ALT, stroke.alt}});
    HeadlessWindow& target = popup_ ? *popup_ : windowOf(window);
    const bool taken = deliver(target, {.message = WM_KEYDOWN, .key = stroke.key});
    if (!taken && stroke.character != 0 && exists(&target))
        deliver(target, {.message = WM_CHAR, .key = stroke.character});
}

void HeadlessPlatform::typeCharacter(CWnd& window, char16_t character) {
    deliver(popup_ ? *popup_ : windowOf(window), {.message = WM_CHAR, .key = character});
}

void HeadlessPlatform::sendMouse(CWnd& window, UINT message, CPoint point, UINT flags) {
    const HeldModifiers modifiers(
        held_, {{VK_SHIFT, (flags & MK_SHIFT) != 0}, {VK_CONTROL, (flags & MK_CONTROL) != 0}});
    HeadlessWindow* target = &windowOf(window);
    HeadlessWindow* over = capture_;
    if (!over && isOverPopup(*target, point))
        over = popup_;
    if (over && over != target) {
        const CPoint screen = target->clientToScreen(point);
        const CPoint origin = over->clientToScreen({});
        target = over;
        point = {screen.x - origin.x, screen.y - origin.y};
    }
    MSG mouse{.message = message};
    mouse.flags = flags;
    mouse.point = point;
    if (message == WM_MOUSEMOVE && !capture_) {
        MSG cursor{.message = WM_SETCURSOR, .key = HTCLIENT};
        cursor.flags = message;
        cursor.point = point;
        cursor.other = &target->window();
        target->window().SendMessage(cursor);
        if (!exists(target))
            return;
    }
    deliver(*target, mouse);
}

void HeadlessPlatform::turnWheel(CWnd& window, int rotation, CPoint point) {
    MSG wheel{.message = WM_MOUSEWHEEL};
    wheel.delta = rotation;
    wheel.point = point;
    deliver(windowOf(window), wheel);
}

void HeadlessPlatform::holdKey(VirtualKey key, bool down) {
    if (down)
        held_.insert(key);
    else
        held_.erase(key);
}

bool HeadlessPlatform::deliver(HeadlessWindow& target, const MSG& message) {
    for (CWnd* window = &target.window(); window; window = window->GetParent()) {
        if (window->TranslateMessage(message))
            return true;
        if (!exists(&target))
            return true;
        if (windowOf(*window).isPopup())
            break;
    }
    target.window().SendMessage(message);
    return false;
}

// Popups

bool HeadlessPlatform::isOverPopup(const HeadlessWindow& window, CPoint point) const {
    return popup_ && popup_->windowRect().PtInRect(window.clientToScreen(point));
}

void HeadlessPlatform::runPopup(CWnd& popup) {
    HeadlessWindow* const window = &windowOf(popup);
    HeadlessWindow* const outer = std::exchange(popup_, window);
    // The keys that brought the popup up are released by now.
    std::set<UINT> held = std::exchange(held_, {});
    while (popup_ == window && popupUser_ && popupUser_()) {
    }
    if (popup_ == window)
        popup.DestroyWindow();
    popup_ = exists(outer) ? outer : nullptr;
    held_ = std::move(held);
}

// Focus and capture

void HeadlessPlatform::setFocus(HeadlessWindow* target) {
    if (target == focus_)
        return;
    HeadlessWindow* previous = std::exchange(focus_, target);
    if (previous) {
        MSG lost{.message = WM_KILLFOCUS};
        lost.other = target ? &target->window() : nullptr;
        previous->window().SendMessage(lost);
    }
    if (!target || focus_ != target)
        return; // a handler moved the focus on
    MSG gained{.message = WM_SETFOCUS};
    gained.other = exists(previous) ? &previous->window() : nullptr;
    target->window().SendMessage(gained);
}

void HeadlessPlatform::setCapture(HeadlessWindow* target) {
    if (target == capture_)
        return;
    HeadlessWindow* previous = std::exchange(capture_, target);
    if (!previous)
        return;
    MSG changed{.message = WM_CAPTURECHANGED};
    changed.other = target ? &target->window() : nullptr;
    previous->window().SendMessage(changed);
}

void HeadlessPlatform::leaveWindow(const HeadlessWindow& window) {
    if (window.contains(capture_))
        setCapture(nullptr);
    if (window.contains(focus_))
        setFocus(nullptr);
}

void HeadlessPlatform::forget(HeadlessWindow& window) {
    windows_.erase(&window);
    if (focus_ == &window)
        focus_ = nullptr;
    if (capture_ == &window)
        capture_ = nullptr;
    if (popup_ == &window)
        popup_ = nullptr;
    std::erase_if(dialogs_, [&](const auto& dialog) { return dialog->parent() == &window.window(); });
}

bool HeadlessPlatform::exists(const HeadlessWindow* window) const {
    return windows_.contains(window);
}

// The window system

HeadlessWindow& HeadlessPlatform::windowOf(const CWnd& window) {
    return static_cast<HeadlessWindow&>(*window.peer());
}

std::unique_ptr<WindowPeer> HeadlessPlatform::createWindow(CWnd& window, CWnd* parent,
                                                           const CREATESTRUCT& how) {
    if (parent && !parent->peer())
        return nullptr;
    HeadlessWindow* around = parent ? &windowOf(*parent) : nullptr;
    return std::make_unique<HeadlessWindow>(*this, window, around, how);
}

std::unique_ptr<DialogControls> HeadlessPlatform::createControls(CWnd& dialog, const DialogTemplate& layout) {
    return std::make_unique<HeadlessControls>(*this, dialog, layout);
}

std::unique_ptr<CFont> HeadlessPlatform::createPointFont(int tenthsOfPoint, std::u16string_view family) {
    const auto own = cells_.find({std::u16string(family), tenthsOfPoint});
    return std::make_unique<HeadlessFont>(tenthsOfPoint, family, own == cells_.end() ? cell_ : own->second);
}

void HeadlessPlatform::setCellSize(std::u16string_view family, int tenthsOfPoint, CSize cell) {
    cells_[{std::u16string(family), tenthsOfPoint}] = cell;
}

std::unique_ptr<CFont> HeadlessPlatform::createListFont() {
    return std::make_unique<HeadlessFont>(90, u"List", cell_);
}

std::unique_ptr<CFont> HeadlessPlatform::createFontLike(const CFont& font, FontStyle style) {
    const auto& like = static_cast<const HeadlessFont&>(font);
    return std::make_unique<HeadlessFont>(like.tenthsOfPoint(), like.family(), like.cell(), style);
}

int HeadlessPlatform::GetSystemMetrics(SystemMetric metric) const {
    return metric == SM_CXVSCROLL ? scrollBarWidth : 0;
}

std::unique_ptr<CFont> HeadlessPlatform::createPrinterFont(const CDC&, int tenthsOfPoint,
                                                           std::u16string_view family) {
    return createPointFont(tenthsOfPoint, family);
}

std::unique_ptr<CDC> HeadlessPlatform::createMeasureDC() {
    return std::make_unique<RecordingDC>();
}

std::shared_ptr<PrintJob> HeadlessPlatform::createPrintJob(CWnd&, std::u16string_view, bool direct) {
    return printer_.createJob(direct);
}

void HeadlessPlatform::showPrintPreview(CWnd&, std::u16string_view,
                                        const std::function<void(std::shared_ptr<PrintJob>)>& print) {
    print(printer_.createPreview());
}

COLORREF HeadlessPlatform::GetSysColor(SystemColor role) const {
    switch (role) {
    case COLOR_WINDOW:
    case COLOR_HIGHLIGHTTEXT:
        return 0xFFFFFF;
    case COLOR_HIGHLIGHT:
        return 0xD77800;
    case COLOR_GRAYTEXT:
        return 0x808080;
    case COLOR_APPWORKSPACE:
        return 0xABABAB;
    case COLOR_WINDOWTEXT:
        break;
    }
    return 0x000000;
}

// Dialogs and long tasks

CFindReplaceDialog* HeadlessPlatform::createFindReplaceDialog() {
    return dialogs_.emplace_back(std::make_unique<HeadlessFindDialog>(*this)).get();
}

std::vector<HeadlessFindDialog*> HeadlessPlatform::findDialogs() const {
    std::vector<HeadlessFindDialog*> open;
    for (const auto& dialog : dialogs_)
        open.push_back(dialog.get());
    return open;
}

void HeadlessPlatform::discardDialog(const HeadlessFindDialog& dialog) {
    std::erase_if(dialogs_, [&](const auto& open) { return open.get() == &dialog; });
}

/// Counts, and stops where the script says.
class HeadlessPlatform::ScriptedProgress final : public Progress {
  public:
    explicit ScriptedProgress(HeadlessPlatform& platform)
        : platform_(platform), stopAt_(std::exchange(platform.stopAt_, 0)) {
        platform_.reports_ = 0;
    }
    bool report(std::int64_t, std::int64_t) override { return ++platform_.reports_ != stopAt_; }

  private:
    HeadlessPlatform& platform_;
    int stopAt_;
};

std::unique_ptr<Progress> HeadlessPlatform::beginProgress(CWnd&, LongTask) {
    return std::make_unique<ScriptedProgress>(*this);
}

} // namespace tavrin
