#include "replay/ReplaySession.h"

namespace tavrin::replay {

namespace {

/// The search text outlives the views of a process; a script begins without one.
class FindText : public TextEditorCtrl {
  public:
    static void forget() { findStr.clear(); }
};

} // namespace

ReplaySession::ReplaySession(CSize client) : host_(platform_) {
    FindText::forget();
    const CRect area{0, 0, client.cx, client.cy};
    host_.CreateWindowIn(nullptr, {.rect = area});
    editor_ = std::make_unique<TextEditorCtrl>(platform_, TextEditorCtrl::ParserType::Xml);
    schemas_ = std::make_unique<ReplaySchemas>(editor_->getBuffer());
    editor_->setSchemaSource(schemas_.get());
    editor_->Create(&host_, area);
    editor_->SetFocus();
    window().clearRecord();
}

void ReplaySession::type(std::u16string_view text) {
    typed_.assign(text.begin(), text.end());
    while (typeNext()) {
    }
}

bool ReplaySession::typeNext() {
    if (typed_.empty())
        return false;
    const char16_t unit = typed_.front();
    typed_.pop_front();
    platform_.typeCharacter(*editor_, unit);
    return true;
}

void ReplaySession::resize(CSize client) {
    const CRect area{0, 0, client.cx, client.cy};
    host_.MoveWindow(area);
    frame().MoveWindow(area);
}

void ReplaySession::openOptions() {
    options_ = std::make_unique<XmlEditorOptionsDlgPage>(platform_);
    options_->Create(nullptr);
}

} // namespace tavrin::replay
