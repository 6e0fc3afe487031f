#include "platform/qt/QtFindDialog.h"

#include "platform/qt/Conversions.h"
#include "platform/qt/QtPlatform.h"
#include "platform/qt/ViewWidget.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QVBoxLayout>

#include <algorithm>
#include <string>
#include <utility>

namespace tavrin::qt {

namespace {

/// Between the dialog and what it must not cover, in pixels.
constexpr int distance = 24;

QString translated(const char* text) {
    return QCoreApplication::translate("FindDialog", text);
}

/// Editable, with what was entered before to choose from. Takes exactly what is typed.
QComboBox* makeTextBox(const QStringList& history, QWidget* parent) {
    auto* box = new QComboBox(parent);
    box->setEditable(true);
    box->setInsertPolicy(QComboBox::NoInsert);
    box->setCompleter(nullptr);
    box->addItems(history);
    box->setCurrentIndex(-1);
    box->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    box->setMinimumContentsLength(28);
    return box;
}

/// No longer than a line edit takes: the selection may be the whole document.
void setText(QComboBox& box, std::u16string_view text) {
    const auto most = static_cast<std::size_t>(box.lineEdit()->maxLength());
    box.setEditText(toQString(text.substr(0, most)));
}

/// The texts to choose from are those of `history`; what is entered stays.
void refill(QComboBox& box, const QStringList& history) {
    const QString entered = box.currentText();
    box.clear();
    box.addItems(history);
    box.setEditText(entered);
}

} // namespace

QtFindDialog::QtFindDialog(QtPlatform& platform) : platform_(platform) {
    setAttribute(Qt::WA_DeleteOnClose);
}

bool QtFindDialog::Create(bool findDialogOnly, std::u16string_view findWhat, std::u16string_view replaceWith,
                          UINT flags, CWnd* parent) {
    const QtWindowPeer* peer = parent ? QtWindowPeer::of(*parent) : nullptr;
    if (!peer || !dynamic_cast<ViewWidget*>(&peer->widget())) {
        delete this;
        return false;
    }
    setParent(&peer->widget(), Qt::Dialog);
    build(findDialogOnly);
    setText(*find_, findWhat);
    if (replace_)
        setText(*replace_, replaceWith);
    showOptions(flags);
    enableButtons();
    find_->lineEdit()->selectAll();
    find_->setFocus();
    adjustSize();
    placeAside(*view());
    show();
    activateWindow();
    return true;
}

void QtFindDialog::build(bool findOnly) {
    setWindowTitle(translated(findOnly ? "Find" : "Replace"));
    const auto labelled = [this](const char* text, QWidget* box) {
        auto* label = new QLabel(translated(text), this);
        label->setBuddy(box);
        return label;
    };
    const auto button = [this](const char* text, UINT action) {
        auto* made = new QPushButton(translated(text), this);
        made->setAutoDefault(false);
        connect(made, &QPushButton::clicked, this, [this, action] { request(action); });
        return made;
    };
    const FindHistory& history = platform_.findHistory();
    auto* grid = new QGridLayout;
    find_ = makeTextBox(history.findTexts(), this);
    grid->addWidget(labelled("Fi&nd what:", find_), 0, 0);
    grid->addWidget(find_, 0, 1, 1, 2);
    if (!findOnly) {
        replace_ = makeTextBox(history.replacements(), this);
        grid->addWidget(labelled("Re&place with:", replace_), 1, 0);
        grid->addWidget(replace_, 1, 1, 1, 2);
    }
    auto* boxes = new QVBoxLayout;
    wholeWord_ = new QCheckBox(translated("Match &whole word only"), this);
    matchCase_ = new QCheckBox(translated("Match &case"), this);
    boxes->addStretch();
    boxes->addWidget(wholeWord_);
    boxes->addWidget(matchCase_);
    grid->addLayout(boxes, 2, 0, 1, 2);
    auto* direction = new QGroupBox(translated("Direction"), this);
    up_ = new QRadioButton(translated("&Up"), direction);
    down_ = new QRadioButton(translated("&Down"), direction);
    auto* directions = new QHBoxLayout(direction);
    directions->addWidget(up_);
    directions->addWidget(down_);
    grid->addWidget(direction, 2, 2);
    grid->setRowStretch(3, 1);

    auto* buttons = new QVBoxLayout;
    findNext_ = button("&Find Next", FR_FINDNEXT);
    findNext_->setDefault(true);
    buttons->addWidget(findNext_);
    if (!findOnly) {
        replaceOne_ = button("&Replace", FR_REPLACE);
        replaceAll_ = button("Replace &All", FR_REPLACEALL);
        buttons->addWidget(replaceOne_);
        buttons->addWidget(replaceAll_);
    }
    auto* closing = new QPushButton(translated("C&lose"), this);
    closing->setAutoDefault(false);
    connect(closing, &QPushButton::clicked, this, &QDialog::reject);
    buttons->addWidget(closing);
    buttons->addStretch();

    auto* all = new QHBoxLayout(this);
    all->addLayout(grid, 1);
    all->addLayout(buttons);
    connect(find_, &QComboBox::editTextChanged, this, [this] { enableButtons(); });
    QWidget* order[] = {find_, replace_,  wholeWord_,  matchCase_,  up_,
                        down_, findNext_, replaceOne_, replaceAll_, closing};
    QWidget* before = nullptr;
    for (QWidget* widget : order) {
        if (before && widget)
            setTabOrder(before, widget);
        before = widget ? widget : before;
    }
}

void QtFindDialog::showOptions(UINT flags) {
    wholeWord_->setChecked(flags & FR_WHOLEWORD);
    matchCase_->setChecked(flags & FR_MATCHCASE);
    (flags & FR_DOWN ? down_ : up_)->setChecked(true);
}

UINT QtFindDialog::options() const {
    return (down_->isChecked() ? FR_DOWN : 0U) | (wholeWord_->isChecked() ? FR_WHOLEWORD : 0U) |
           (matchCase_->isChecked() ? FR_MATCHCASE : 0U);
}

void QtFindDialog::enableButtons() {
    const bool any = !find_->currentText().isEmpty();
    for (QPushButton* button : {findNext_, replaceOne_, replaceAll_})
        if (button)
            button->setEnabled(any);
}

ViewWidget* QtFindDialog::view() const {
    return dynamic_cast<ViewWidget*>(parentWidget());
}

void QtFindDialog::request(UINT action) {
    const QString find = find_->currentText();
    const QString replacement = replace_ ? replace_->currentText() : QString();
    if (action != FR_DIALOGTERM) {
        FindHistory& history = platform_.findHistory();
        history.addFindText(find);
        refill(*find_, history.findTexts());
        if (action != FR_FINDNEXT)
            history.addReplacement(replacement);
        if (replace_)
            refill(*replace_, history.replacements());
    }
    const QPointer<QWidget> self(this);
    const QPointer<ViewWidget> target(view());
    if (!target || !target->peer())
        return;
    const std::u16string what = toU16(find);
    const std::u16string with = toU16(replacement);
    send(target->peer()->window(), {options() | action, what, with});
    if (target)
        target->requestHandled();
    if (self && target && action != FR_DIALOGTERM)
        uncoverCaret(*target);
}

void QtFindDialog::done(int result) {
    if (!std::exchange(ended_, true)) {
        const QPointer<QWidget> self(this);
        if (ViewWidget* text = view()) {
            text->activateWindow();
            text->setFocus(Qt::OtherFocusReason);
        }
        request(FR_DIALOGTERM);
        if (!self)
            return;
    }
    QDialog::done(result);
}

/// At the top right of the text, where it covers least.
void QtFindDialog::placeAside(const ViewWidget& view) {
    const QPoint corner = view.viewport()->mapToGlobal(view.viewport()->rect().topRight());
    move(corner - QPoint(width() + distance, -distance));
    uncoverCaret(view);
}

/// Moves up or down, away from the caret, as far as the screen allows.
void QtFindDialog::uncoverCaret(const ViewWidget& view) {
    const QRect caret = view.inputMethodQuery(Qt::ImCursorRectangle).toRect();
    const QRect shown = caret.translated(view.mapToGlobal(QPoint()));
    const QRect frame = frameGeometry();
    const QRect around = shown.adjusted(-distance, -distance, distance, distance);
    if (!frame.intersects(around) || !view.screen())
        return;
    const QRect screen = view.screen()->availableGeometry();
    if (around.bottom() + frame.height() <= screen.bottom())
        move(frame.left(), around.bottom());
    else if (around.top() - frame.height() >= screen.top())
        move(frame.left(), around.top() - frame.height());
}

} // namespace tavrin::qt
