#include "platform/qt/widget/XmlEditorWidgetPrivate.h"

#include "control/TextEditorCtrlFrameWnd.h"
#include "document/TextUndoScope.h"
#include "platform/qt/Conversions.h"
#include "platform/qt/FramePeer.h"
#include "platform/qt/ViewPeer.h"
#include "platform/qt/ViewWidget.h"
#include "platform/qt/widget/AccessibleText.h"
#include "platform/qt/widget/EditorMenu.h"
#include "platform/qt/widget/PrimarySelection.h"
#include "view/EditCommand.h"
#include "view/EditorSettings.h"

#include <QApplication>
#include <QClipboard>
#include <QMenu>

#include <algorithm>

namespace tavrin::qt {

namespace {

constexpr int smallestFontSize = 1;
constexpr int largestFontSize = 100;

/// How much of the caret's line input methods are shown, on each side.
constexpr int surroundingUnits = 256;

} // namespace

XmlEditorWidget::Private::Private(XmlEditorWidget& widget, Platform& platform)
    : widget_(widget),
      host_(platform),
      control_(platform,
               [this](const UndoableAction& action, bool forward) {
                   if (ViewWidget* view = viewWidget(); view && accessible_)
                       tellAccessibleChange(*view, control_, action, forward);
               }),
      schemas_(builtInSchemas(control_.getBuffer())) {
    control_.setSchemaSource(schemas_.get());
    host_.CreateWindowIn(nullptr, {.visible = false});
    QWidget& hostWidget = QtWindowPeer::of(host_)->widget();
    hostWidget.setParent(&widget_);
    hostWidget.setGeometry(widget_.rect());
    control_.Create(&host_, host_.GetClientRect());
    host_.ShowWindow(true);

    viewPeer()->setClient(this);
    widget_.setFocusProxy(&viewPeer()->widget());
    static_cast<FramePeer*>(control_.getFrame()->peer())->setStatusHandler([this](std::u16string_view text) {
        emit widget_.statusMessage(toQString(text));
    });
    told_ = state();
    QAccessible::installActivationObserver(this);
}

XmlEditorWidget::Private::~Private() {
    QAccessible::removeActivationObserver(this);
    if (ViewPeer* peer = viewPeer())
        peer->setClient(nullptr);
    if (TextEditorCtrlFrameWnd* frame = control_.getFrame())
        static_cast<FramePeer*>(frame->peer())->setStatusHandler({});
}

ViewPeer* XmlEditorWidget::Private::viewPeer() const {
    return static_cast<ViewPeer*>(control_.peer());
}

ViewWidget* XmlEditorWidget::Private::viewWidget() const {
    return viewPeer() ? static_cast<ViewWidget*>(&viewPeer()->widget()) : nullptr;
}

void XmlEditorWidget::Private::resize(const QSize& size) {
    const CRect whole{0, 0, size.width(), size.height()};
    host_.MoveWindow(whole);
    if (TextEditorCtrlFrameWnd* frame = control_.getFrame())
        frame->MoveWindow(whole);
}

void XmlEditorWidget::Private::run(UINT command) {
    const QPointer<XmlEditorWidget> alive(&widget_); // completion runs a popup, and the host may go meanwhile
    control_.SendCommand(command);
    if (alive)
        tellChanges();
}

void XmlEditorWidget::Private::search(void (TextEditorCtrl::*command)()) {
    control_.endIncrementalSearch();
    (control_.*command)();
    tellChanges();
}

void XmlEditorWidget::Private::showFromTop() {
    control_.OnNewDocument();
    control_.setCaret(0, 0, false);
    control_.updatePivot();
    control_.OnUpdate();
    control_.updateScrollbars();
    control_.ScrollToPosition({});
    control_.setCaret(0, 0, true);
    idleReading_.begin();
}

int XmlEditorWidget::Private::fontSize() const {
    const int points = control_.platform().settings().getIntValue(settings::section, settings::fontSize,
                                                                  settings::defaultFontSize);
    return std::clamp(points, smallestFontSize, largestFontSize);
}

void XmlEditorWidget::Private::setFontSize(int points) {
    const int within = std::clamp(points, smallestFontSize, largestFontSize);
    control_.platform().settings().setIntValue(settings::section, settings::fontSize, within);
    readSettings();
}

void XmlEditorWidget::Private::readSettings() {
    const int firstLine = control_.GetScrollPos(SB_VERT) / control_.getLineHeight();
    control_.OnUpdate();
    control_.updateScrollbars();
    control_.ScrollToPosition({control_.GetScrollPos(SB_HORZ), firstLine * control_.getLineHeight()});
    control_.setCaret(control_.getCurrentLine(), control_.getCurrentColoumn(), false);
    control_.redraw();
}

// Signals

XmlEditorWidget::Private::State XmlEditorWidget::Private::state() const {
    return {control_.reports(),      control_.isModified(),     control_.CanUndo(),
            control_.CanRedo(),      control_.getCurrentLine(), control_.getCurrentColoumn(),
            control_.getPivotLine(), control_.getPivotCol()};
}

void XmlEditorWidget::Private::tellChanges() {
    const State now = state();
    const State before = std::exchange(told_, now);
    // The view scrolls to a typed character before the character widens the scroll range: at the end of the
    // widest line it comes into sight only now.
    if (now.reports != before.reports && !now.sameCaret(before))
        control_.setCaret(now.caretLine, now.caretCol, true);

    const bool selection = now.hasSelection();
    const bool selected =
        (selection || before.hasSelection()) && !(now.sameCaret(before) && now.samePivot(before));

    if (ViewWidget* view = viewWidget(); view && accessible_ && (selected || !now.sameCaret(before)))
        tellAccessibleCaret(*view, control_, selected);

    // A receiver may delete the widget, and this object with it.
    const QPointer<XmlEditorWidget> widget(&widget_);
    if (now.reports != before.reports)
        emit widget->textChanged();
    if (widget && now.modified != before.modified)
        emit widget->modificationChanged(now.modified);
    if (widget && now.canUndo != before.canUndo)
        emit widget->undoAvailable(now.canUndo);
    if (widget && now.canRedo != before.canRedo)
        emit widget->redoAvailable(now.canRedo);
    if (widget && selection != before.hasSelection())
        emit widget->copyAvailable(selection);
    if (widget && selected)
        emit widget->selectionChanged();
    if (widget && !now.sameCaret(before))
        emit widget->cursorPositionChanged(now.caretLine, now.caretCol);
}

// What the view's widget asks

QString XmlEditorWidget::Private::selectedText() const {
    return toQString(control_.getSelectedText());
}

void XmlEditorWidget::Private::mouseSelectionDone() {
    if (control_.hasSelection())
        offerPrimarySelection(widget_, [this] { return selectedText(); });
}

void XmlEditorWidget::Private::primaryPasteRequested() {
    QString text = QApplication::clipboard()->text(QClipboard::Selection);
    text.replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(u'\r', u'\n');
    control_.replaceSelection(toU16(text), false);
    tellChanges();
}

void XmlEditorWidget::Private::contextMenuRequested(QPoint globalPosition) {
    QMenu* menu = makeEditorMenu(control_, widget_, [this](UINT command) { run(command); });
    const QPointer<QMenu> shown(menu);
    emit widget_.contextMenuAboutToShow(menu);
    if (shown)
        shown->popup(globalPosition);
}

SurroundingText XmlEditorWidget::Private::surroundingText() const {
    const Buffer& buffer = control_.getBuffer();
    const int line = control_.getCurrentLine();
    if (line >= buffer.getLineCount())
        return {};
    const int caret = std::min(control_.getCurrentColoumn(), buffer.getLineLength(line));
    const int start = std::max(0, caret - surroundingUnits);
    const std::u16string_view text = buffer.getLineText(line).substr(start, caret - start + surroundingUnits);
    const int length = static_cast<int>(text.size());
    const bool pivotNear = control_.getPivotLine() == line;
    return {toQString(text), caret - start,
            pivotNear ? std::clamp(control_.getPivotCol() - start, 0, length) : caret - start};
}

void XmlEditorWidget::Private::removeAroundCaret(int start, int length) {
    const Buffer& buffer = control_.getBuffer();
    const int line = control_.getCurrentLine();
    if (line >= buffer.getLineCount())
        return;
    const int lineLength = buffer.getLineLength(line);
    const int from = std::clamp(control_.getCurrentColoumn() + start, 0, lineLength);
    const int to = std::clamp(from + length, from, lineLength);
    EditCommand command(control_);
    const TextUndoScope scope(control_.getDocument());
    control_.erase(line, from, line, to);
    control_.setCaret(line, from, true);
    control_.updatePivot();
    command.finish([&] {
        control_.updateScrollbars();
        control_.redrawToEOP(line);
    });
}

QAccessibleInterface* XmlEditorWidget::Private::makeAccessible(ViewWidget& view) {
    return new AccessibleText(view, control_);
}

} // namespace tavrin::qt
