#include "platform/qt/QtControls.h"

#include "platform/qt/Conversions.h"
#include "platform/qt/QtColourBox.h"
#include "platform/qt/QtFontBox.h"
#include "platform/qt/QtPlatform.h"
#include "platform/qt/QtTextPanel.h"
#include "platform/qt/TemplateLayout.h"
#include "platform/ui/CWnd.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPointer>
#include <QSignalBlocker>
#include <QToolTip>

#include <limits>

namespace tavrin::qt {

namespace {

class QtEditBox final : public EditBox {
  public:
    explicit QtEditBox(QLineEdit& edit) : edit_(edit) {}
    [[nodiscard]] std::u16string text() const override { return toU16(edit_.text()); }
    void setText(std::u16string_view text) override { edit_.setText(toQString(text)); }

  private:
    QLineEdit& edit_;
};

class QtCheckBox final : public CheckBox {
  public:
    explicit QtCheckBox(QCheckBox& box) : box_(box) {}
    [[nodiscard]] bool isChecked() const override { return box_.isChecked(); }
    void setChecked(bool checked) override { box_.setChecked(checked); }

  private:
    QCheckBox& box_;
};

class QtListBox final : public ListBox {
  public:
    explicit QtListBox(QListWidget& list) : list_(list) {}
    [[nodiscard]] int GetCurSel() const override { return list_.currentRow(); }
    void SetCurSel(int index) override {
        const QSignalBlocker silent(list_);
        list_.setCurrentRow(index);
    }

  protected:
    void showEntry(int index, std::u16string_view text) override {
        const QSignalBlocker silent(list_);
        list_.insertItem(index, toQString(text));
    }

  private:
    QListWidget& list_;
};

constexpr int gapAfterLabel = 6;

/// What a label or check box shows: the mnemonic's mark is the same.
QString textOf(const DialogItem& item) {
    return toQString(item.text);
}

} // namespace

QtControls::QtControls(QtPlatform& platform, CWnd& dialog, QWidget& page, const DialogTemplate& layout)
    : platform_(platform), dialog_(dialog), page_(page) {
    std::vector<std::pair<const DialogItem*, QWidget*>> widgets;
    QLabel* label = nullptr; // the one before the control, which its mnemonic leads to
    for (const DialogItem& item : layout.items) {
        Control control = make(item);
        widgets.emplace_back(&item, control.widget);
        if (label) // a mnemonic passes by what has no focus of its own, whatever its proxy
            label->setBuddy(control.widget->focusProxy() ? control.widget->focusProxy() : control.widget);
        label = qobject_cast<QLabel*>(control.widget);
        if (item.id != 0)
            controls_[item.id] = std::move(control);
    }
    arrangeByTemplate(page_, widgets);
}

void QtControls::notify(UINT id, UINT notification) {
    dialog_.SendNotification(id, notification);
}

QtControls::Control QtControls::make(const DialogItem& item) {
    switch (item.kind) {
    case ControlKind::Label: {
        auto* label = new QLabel(textOf(item), &page_);
        label->setContentsMargins(0, 0, gapAfterLabel, 0);
        return {label, nullptr};
    }
    case ControlKind::EditBox: {
        auto* edit = new QLineEdit(&page_);
        edit->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed); // as wide as the template says
        QObject::connect(edit, &QLineEdit::textEdited, &context_, [this, id = item.id] {
            QToolTip::hideText();
            // Whoever is told may end the dialog, and this object.
            const QPointer<QObject> alive(&context_);
            typing_ = id;
            notify(id, EN_CHANGE);
            if (alive)
                typing_ = 0;
        });
        return {edit, std::make_unique<QtEditBox>(*edit)};
    }
    case ControlKind::CheckBox: {
        auto* box = new QCheckBox(textOf(item), &page_);
        return {box, std::make_unique<QtCheckBox>(*box)};
    }
    case ControlKind::ListBox: {
        auto* list = new QListWidget(&page_);
        list->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Expanding);
        QObject::connect(list, &QListWidget::currentRowChanged, &context_,
                         [this, id = item.id] { notify(id, LBN_SELCHANGE); });
        return {list, std::make_unique<QtListBox>(*list)};
    }
    case ControlKind::FontBox: {
        auto box = std::make_unique<QtFontBox>(&page_, [this, id = item.id] { notify(id, CBN_SELCHANGE); });
        return {&box->widget(), std::move(box)};
    }
    case ControlKind::ColourBox: {
        auto box = std::make_unique<QtColourBox>(&page_, [this, id = item.id] { notify(id, CBN_SELCHANGE); });
        return {&box->widget(), std::move(box)};
    }
    case ControlKind::TextPanel: {
        auto panel = std::make_unique<QtTextPanel>(platform_, &page_, toQString(item.text));
        return {&panel->widget(), std::move(panel)};
    }
    }
    return {};
}

DialogControl* QtControls::find(UINT id) const {
    const auto found = controls_.find(id);
    return found == controls_.end() ? nullptr : found->second.control.get();
}

void QtControls::refuse(UINT id, std::u16string_view message) {
    const QPointer<QWidget> target(&widget(id));
    const QString text = toQString(message);
    if (typing_ != id) {
        QMessageBox::warning(target->window(), target->window()->windowTitle(), text);
        if (!target)
            return;
        target->setFocus(Qt::OtherFocusReason);
        if (auto* edit = qobject_cast<QLineEdit*>(target))
            edit->selectAll();
        return;
    }
    const QPoint below = target->mapToGlobal(QPoint(0, target->height()));
    QToolTip::showText(below, text, target, {}, std::numeric_limits<int>::max());
}

} // namespace tavrin::qt
