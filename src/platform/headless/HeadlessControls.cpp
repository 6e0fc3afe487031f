#include "platform/headless/HeadlessControls.h"

#include "platform/headless/HeadlessPlatform.h"
#include "platform/ui/CWnd.h"

#include <algorithm>

namespace tavrin {

void HeadlessNotifier::notify(UINT notification) const {
    dialog_.SendNotification(id_, notification);
}

void HeadlessEditBox::enter(std::u16string_view text) {
    if (text == text_)
        return;
    text_ = text;
    notifier_.notify(EN_CHANGE);
}

bool HeadlessListBox::choose(std::u16string_view text) {
    for (int i = 0; i < GetCount(); ++i) {
        if (GetText(i) != text)
            continue;
        chosen_ = i;
        notifier_.notify(LBN_SELCHANGE);
        return true;
    }
    return false;
}

void HeadlessListBox::showEntry(int index, std::u16string_view) {
    if (index <= chosen_)
        ++chosen_;
}

HeadlessFontBox::HeadlessFontBox(HeadlessNotifier notifier, const HeadlessPlatform& platform)
    : notifier_(notifier), faces_(platform.fontFaces()) {}

void HeadlessFontBox::choose(std::u16string_view face) {
    auto place = std::ranges::lower_bound(faces_, face);
    if (place == faces_.end() || *place != face)
        place = faces_.emplace(place, face);
    chosen_ = static_cast<int>(place - faces_.begin());
    notifier_.notify(CBN_SELCHANGE);
}

void HeadlessColourBox::choose(COLORREF colour) {
    colour_ = colour;
    notifier_.notify(CBN_SELCHANGE);
}

HeadlessControls::HeadlessControls(const HeadlessPlatform& platform, CWnd& dialog,
                                   const DialogTemplate& layout) {
    for (const DialogItem& item : layout.items) {
        if (item.id == 0)
            continue;
        const HeadlessNotifier notifier(dialog, item.id);
        std::unique_ptr<DialogControl>& control = controls_[item.id];
        switch (item.kind) {
        case ControlKind::Label:
            break;
        case ControlKind::EditBox:
            control = std::make_unique<HeadlessEditBox>(notifier);
            break;
        case ControlKind::CheckBox:
            control = std::make_unique<HeadlessCheckBox>();
            break;
        case ControlKind::ListBox:
            control = std::make_unique<HeadlessListBox>(notifier);
            break;
        case ControlKind::FontBox:
            control = std::make_unique<HeadlessFontBox>(notifier, platform);
            break;
        case ControlKind::ColourBox:
            control = std::make_unique<HeadlessColourBox>(notifier);
            break;
        case ControlKind::TextPanel:
            control = std::make_unique<HeadlessTextPanel>(item.text);
            break;
        }
    }
}

DialogControl* HeadlessControls::find(UINT id) const {
    const auto found = controls_.find(id);
    return found == controls_.end() ? nullptr : found->second.get();
}

void HeadlessControls::refuse(UINT id, std::u16string_view message) {
    messages_.emplace_back(message);
    focus_ = id;
}

} // namespace tavrin
