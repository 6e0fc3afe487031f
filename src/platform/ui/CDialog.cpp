#include "platform/ui/CDialog.h"

#include "platform/core/CharacterClass.h"

#include <charconv>
#include <optional>
#include <string>

namespace tavrin {

namespace {

/// Ends a data exchange; the user has been told.
class ExchangeRefused {};

/// Digits with a sign before them if need be, and white space around; nothing when it is another text or
/// does not fit an int.
std::optional<int> wholeNumber(std::u16string_view text) {
    while (!text.empty() && isSpace(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isSpace(text.back()))
        text.remove_suffix(1);
    if (text.starts_with(u'+') && !text.starts_with(u"+-"))
        text.remove_prefix(1);
    std::string digits;
    for (const char16_t c : text)
        digits += c < 0x80 ? static_cast<char>(c) : '?';
    int number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error != std::errc() || end != digits.data() + digits.size())
        return std::nullopt;
    return number;
}

std::u16string toText(int number) {
    const std::string digits = std::to_string(number);
    return {digits.begin(), digits.end()};
}

EditBox& editBox(CDataExchange* exchange, UINT id) {
    return dynamic_cast<EditBox&>(*exchange->dialog().controls()->find(id));
}

} // namespace

void CDataExchange::Fail(UINT control, std::u16string_view message) {
    dialog_.controls()->refuse(control, message);
    throw ExchangeRefused();
}

CDialog::~CDialog() = default;

bool CDialog::Create(CWnd* parent) {
    if (!CreateWindowIn(parent, {.visible = false}))
        return false;
    controls_ = platform().createControls(*this, layout_);
    OnInitDialog();
    if (parent)
        ShowWindow(true);
    return true;
}

bool CDialog::UpdateData(bool saveAndValidate) {
    if (!controls_)
        return false;
    CDataExchange exchange(*this, saveAndValidate);
    try {
        DoDataExchange(&exchange);
    } catch (const ExchangeRefused&) {
        return false;
    }
    return true;
}

bool CDialog::OnInitDialog() {
    UpdateData(false);
    return true;
}

void CDialog::DoDataExchange(CDataExchange*) {}

void CDialog::PostNcDestroy() {
    controls_.reset();
}

void DDX_Text(CDataExchange* exchange, UINT id, int& value, int low, int high) {
    EditBox& box = editBox(exchange, id);
    if (!exchange->m_bSaveAndValidate) {
        box.setText(toText(value));
        return;
    }
    const std::optional<int> number = wholeNumber(box.text());
    if (number && *number >= low && *number <= high) {
        value = *number;
        return;
    }
    const std::u16string range = toText(low) + u" to " + toText(high);
    exchange->Fail(id, u"Enter a whole number from " + range + u".");
}

void DDX_Check(CDataExchange* exchange, UINT id, int& value) {
    auto& box = dynamic_cast<CheckBox&>(*exchange->dialog().controls()->find(id));
    if (exchange->m_bSaveAndValidate)
        value = box.isChecked() ? 1 : 0;
    else
        box.setChecked(value != 0);
}

} // namespace tavrin
