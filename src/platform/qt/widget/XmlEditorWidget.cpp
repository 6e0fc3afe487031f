#include "platform/qt/widget/XmlEditorWidget.h"

#include "platform/qt/Conversions.h"
#include "platform/qt/QtPlatform.h"
#include "platform/qt/widget/XmlEditorWidgetPrivate.h"
#include "view/EditorSettings.h"

#include <QFontMetrics>
#include <QResizeEvent>
#include <QWheelEvent>

namespace tavrin::qt {

namespace {

/// The size that a text of this many cells would have.
constexpr int hintedColumns = 60;
constexpr int hintedLines = 15;

} // namespace

XmlEditorWidget::XmlEditorWidget(Platform& platform, QWidget* parent)
    : QWidget(parent), d(std::make_unique<Private>(*this, platform)) {}

XmlEditorWidget::~XmlEditorWidget() {
    setFocusProxy(nullptr);
    d.reset();
}

TextEditorCtrl& XmlEditorWidget::control() {
    return d->control();
}

QString XmlEditorWidget::text() const {
    return toQString(d->control().getText()).replace(QLatin1String("\r\n"), QLatin1String("\n"));
}

void XmlEditorWidget::setText(const QString& text) {
    d->control().setText(toU16(text));
    documentLoaded();
}

void XmlEditorWidget::documentLoaded() {
    d->showFromTop();
    d->tellChanges();
}

bool XmlEditorWidget::isModified() const {
    return d->control().isModified();
}

void XmlEditorWidget::setModified(bool modified) {
    d->tellChanges();
    if (modified)
        d->control().ForgetSavedState();
    else
        d->control().OnSaveDocument(u"");
    d->forgetTextChanges();
    d->tellChanges();
}

bool XmlEditorWidget::isBusy() const {
    return static_cast<const QtPlatform&>(d->control().platform()).isBusy();
}

bool XmlEditorWidget::canUndo() const {
    return d->control().CanUndo();
}
bool XmlEditorWidget::canRedo() const {
    return d->control().CanRedo();
}
bool XmlEditorWidget::hasSelection() const {
    return d->control().hasSelection();
}
int XmlEditorWidget::currentLine() const {
    return d->control().getCurrentLine();
}
int XmlEditorWidget::currentColumn() const {
    return d->control().getCurrentColoumn();
}

void XmlEditorWidget::gotoLineCol(int line, int column) {
    d->control().gotoLineCol(line, column);
    d->tellChanges();
}

QSize XmlEditorWidget::sizeHint() const {
    const QFontMetrics metrics(font());
    return {hintedColumns * metrics.averageCharWidth(), hintedLines * metrics.height()};
}

void XmlEditorWidget::undo() {
    d->run(ID_EDIT_UNDO);
}
void XmlEditorWidget::redo() {
    d->run(ID_EDIT_REDO);
}
void XmlEditorWidget::cut() {
    d->run(ID_EDIT_CUT);
}
void XmlEditorWidget::copy() {
    d->run(ID_EDIT_COPY);
}
void XmlEditorWidget::paste() {
    d->run(ID_EDIT_PASTE);
}
void XmlEditorWidget::selectAll() {
    d->run(ID_EDIT_SELECT_ALL);
}

void XmlEditorWidget::find() {
    d->search(&TextEditorCtrl::OnEditFind);
}
void XmlEditorWidget::replace() {
    d->search(&TextEditorCtrl::OnEditReplace);
}
void XmlEditorWidget::findNext() {
    d->search(&TextEditorCtrl::OnEditFindNext);
}
void XmlEditorWidget::findPrevious() {
    d->search(&TextEditorCtrl::OnEditFindPrevious);
}
void XmlEditorWidget::findSelectedNext() {
    d->search(&TextEditorCtrl::OnEditFindSelectedNext);
}
void XmlEditorWidget::findSelectedPrevious() {
    d->search(&TextEditorCtrl::OnEditFindSelectedPrev);
}

void XmlEditorWidget::startIncrementalSearch() {
    d->control().startIncrementalSearch();
    setFocus();
    d->tellChanges();
}

void XmlEditorWidget::indent() {
    d->control().OnIndentSelection();
    d->tellChanges();
}

void XmlEditorWidget::unindent() {
    d->control().OnUnindentSelection();
    d->tellChanges();
}

void XmlEditorWidget::makeUpperCase() {
    d->control().OnMakeSelectionUppercase();
    d->tellChanges();
}

void XmlEditorWidget::makeLowerCase() {
    d->control().OnMakeSelectionLowercase();
    d->tellChanges();
}

QString XmlEditorWidget::documentTitle() const {
    return toQString(d->control().GetDocumentTitle());
}
void XmlEditorWidget::setDocumentTitle(const QString& title) {
    d->control().SetDocumentTitle(toU16(title));
}

void XmlEditorWidget::print() {
    d->run(ID_FILE_PRINT);
}
void XmlEditorWidget::printDirectly() {
    d->run(ID_FILE_PRINT_DIRECT);
}
void XmlEditorWidget::printPreview() {
    d->run(ID_FILE_PRINT_PREVIEW);
}

void XmlEditorWidget::zoomIn(int points) {
    d->setFontSize(d->fontSize() + points);
}
void XmlEditorWidget::zoomOut(int points) {
    d->setFontSize(d->fontSize() - points);
}
void XmlEditorWidget::resetZoom() {
    d->setFontSize(settings::defaultFontSize);
}
void XmlEditorWidget::settingsChanged() {
    d->readSettings();
}

void XmlEditorWidget::resizeEvent(QResizeEvent* event) {
    d->resize(event->size());
}

void XmlEditorWidget::wheelEvent(QWheelEvent* event) {
    if (!event->modifiers().testFlag(Qt::ControlModifier)) {
        event->ignore();
        return;
    }
    d->wheelRemainder += event->angleDelta().y();
    const int notches = d->wheelRemainder / WHEEL_DELTA;
    d->wheelRemainder -= notches * WHEEL_DELTA;
    if (notches != 0)
        zoomIn(notches);
}

} // namespace tavrin::qt
