#include "platform/qt/widget/AccessibleText.h"

#include "control/TextEditorCtrl.h"
#include "document/EditAction.h"
#include "platform/qt/AccessibleEvents.h"
#include "platform/qt/Conversions.h"
#include "platform/qt/ViewClient.h"
#include "platform/qt/ViewWidget.h"
#include "platform/qt/widget/XmlEditorWidget.h"

#include <QTextBoundaryFinder>

#include <algorithm>
#include <limits>
#include <tuple>

namespace tavrin::qt {

namespace {

/// Longer texts are not told to assistive technology when they come or go, in code units.
constexpr std::size_t longestToldText = std::size_t{1} << 16;

/// Offsets are `int` here; a text may be longer.
int limited(std::int64_t offset) {
    return static_cast<int>(std::clamp<std::int64_t>(offset, 0, std::numeric_limits<int>::max()));
}

QString css(const char* property, COLORREF colour) {
    const QColor c = toQColor(colour);
    return QStringLiteral("%1:rgb(%2,%3,%4);")
        .arg(QLatin1String(property))
        .arg(c.red())
        .arg(c.green())
        .arg(c.blue());
}

} // namespace

AccessibleText::AccessibleText(ViewWidget& view, TextEditorCtrl& control)
    : QAccessibleWidget(&view, QAccessible::EditableText), view_(view), control_(control), watch_(control) {}

bool AccessibleText::isValid() const {
    return QAccessibleWidget::isValid() && watch_.isAlive();
}

QAccessible::State AccessibleText::state() const {
    QAccessible::State state = QAccessibleWidget::state();
    state.editable = true;
    state.multiLine = true;
    state.selectableText = true;
    return state;
}

QString AccessibleText::text(QAccessible::Text kind) const {
    QString text = QAccessibleWidget::text(kind);
    // A host names the editor, which is the widget around this one.
    for (const QWidget* around = widget()->parentWidget(); around && text.isEmpty();
         around = qobject_cast<const XmlEditorWidget*>(around) ? nullptr : around->parentWidget()) {
        if (kind == QAccessible::Name)
            text = around->accessibleName();
        else if (kind == QAccessible::Description)
            text = around->accessibleDescription();
    }
    return text.isEmpty() && kind == QAccessible::Name ? XmlEditorWidget::tr("XML text") : text;
}

void* AccessibleText::interface_cast(QAccessible::InterfaceType type) {
    if (type == QAccessible::TextInterface)
        return static_cast<QAccessibleTextInterface*>(this);
    if (type == QAccessible::EditableTextInterface)
        return static_cast<QAccessibleEditableTextInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
}

// Offsets

int AccessibleText::characterCount() const {
    const Buffer& buffer = control_.getBuffer();
    return limited(buffer.getOffset(buffer.getLineCount()) - 1);
}

AccessibleText::Place AccessibleText::placeAt(int offset) const {
    const Buffer& buffer = control_.getBuffer();
    if (buffer.getLineCount() == 0)
        return {0, 0};
    const int line = buffer.getLineAtOffset(offset);
    const std::int64_t col = offset - buffer.getOffset(line);
    return {line, static_cast<int>(std::clamp<std::int64_t>(col, 0, buffer.getLineLength(line)))};
}

int AccessibleText::offsetOf(int line, int col) const {
    const Buffer& buffer = control_.getBuffer();
    if (line >= buffer.getLineCount()) // a load may have left the caret behind the text
        return characterCount();
    return limited(buffer.getOffset(line) + std::min(col, buffer.getLineLength(line)));
}

QString AccessibleText::text(int start, int end) const {
    const Place from = placeAt(start);
    const Place to = placeAt(end < 0 ? characterCount() : end);
    std::u16string text;
    if (start < end || end < 0)
        control_.getBuffer().getText(from.line, from.col, to.line, to.col, text);
    return toQString(text);
}

// Caret and selection

int AccessibleText::cursorPosition() const {
    return offsetOf(control_.getCurrentLine(), control_.getCurrentColoumn());
}

void AccessibleText::setCursorPosition(int position) {
    setSelection(0, position, position);
}

int AccessibleText::selectionCount() const {
    return control_.hasSelection() ? 1 : 0;
}

void AccessibleText::selection(int index, int* start, int* end) const {
    *start = *end = 0;
    if (index != 0 || !control_.hasSelection())
        return;
    std::tie(*start, *end) =
        std::minmax({offsetOf(control_.getPivotLine(), control_.getPivotCol()), cursorPosition()});
}

void AccessibleText::addSelection(int start, int end) {
    setSelection(0, start, end);
}

void AccessibleText::removeSelection(int index) {
    if (index == 0)
        setCursorPosition(cursorPosition());
}

void AccessibleText::setSelection(int index, int start, int end) {
    if (index != 0)
        return;
    select(start, end);
    tellHost();
}

void AccessibleText::tellHost() const {
    if (ViewClient* client = view_.client())
        client->inputHandled();
}

void AccessibleText::select(int start, int end) {
    const Place from = placeAt(start);
    const Place to = placeAt(end);
    control_.invalidateSelection();
    control_.setCaret(from.line, from.col, false);
    control_.updatePivot();
    control_.setCaret(to.line, to.col, true);
    control_.invalidateSelection();
}

// On the screen

QRect AccessibleText::characterRect(int offset) const {
    const Place place = placeAt(offset);
    if (place.line >= control_.getBuffer().getLineCount())
        return {};
    const CPoint corner = control_.getPoint(place.line, place.col);
    const bool isLast = place.col == control_.getBuffer().getLineLength(place.line);
    const int width = isLast ? 0 : control_.getPoint(place.line, place.col + 1).x - corner.x;
    return {view_.viewport()->mapToGlobal(QPoint(corner.x, corner.y)),
            QSize(std::max(width, 1), control_.getLineHeight())};
}

int AccessibleText::offsetAtPoint(const QPoint& point) const {
    const auto position = control_.getPositionAt(toCPoint(view_.viewport()->mapFromGlobal(point)));
    return offsetOf(position.line, position.col);
}

void AccessibleText::scrollToSubstring(int start, int end) {
    for (const int offset : {end, start}) {
        const Place place = placeAt(offset);
        control_.ensureVisible(place.line, place.col);
    }
}

QString AccessibleText::attributes(int offset, int* start, int* end) const {
    const Place place = placeAt(offset);
    Buffer& buffer = control_.getBuffer();
    *start = *end = offset;
    if (place.line >= buffer.getLineCount())
        return {};
    const int length = buffer.getLineLength(place.line);
    int runStart = 0;
    int runEnd = length + 1; // with the line feed
    int code = 0;
    for (const FormatRun& run : buffer.getLineFormats(place.line)) {
        if (place.col < static_cast<int>(run.end)) {
            runEnd = std::min(static_cast<int>(run.end), length);
            code = run.format;
            break;
        }
        runStart = static_cast<int>(run.end);
    }
    *start = offsetOf(place.line, 0) + std::min(runStart, length);
    *end = std::min(offsetOf(place.line, 0) + runEnd, characterCount());
    return css("color", control_.getTextColor(code)) +
           css("background-color", control_.getBackgroundColor(code));
}

// Words and lines

AccessibleText::Stretch AccessibleText::stretchAt(int offset, QAccessible::TextBoundaryType kind) const {
    const int count = characterCount();
    if (kind == QAccessible::NoBoundary)
        return {0, count};
    const Place place = placeAt(offset);
    const int first = offsetOf(place.line, 0);
    const QString line =
        text(first, std::min(first + control_.getBuffer().getLineLength(place.line) + 1, count));
    const int lineEnd = first + static_cast<int>(line.size());
    if (kind != QAccessible::CharBoundary && kind != QAccessible::WordBoundary)
        return {first, lineEnd};
    QTextBoundaryFinder finder(
        kind == QAccessible::CharBoundary ? QTextBoundaryFinder::Grapheme : QTextBoundaryFinder::Word, line);
    finder.setPosition(std::min(offset - first, static_cast<int>(line.size())));
    const int start = finder.isAtBoundary() ? static_cast<int>(finder.position())
                                            : static_cast<int>(finder.toPreviousBoundary());
    const int end = static_cast<int>(finder.toNextBoundary());
    return {first + std::max(start, 0), end < 0 ? lineEnd : first + end};
}

QString AccessibleText::tell(Stretch stretch, int* start, int* end) const {
    *start = stretch.start;
    *end = stretch.end;
    return text(stretch.start, stretch.end);
}

QString AccessibleText::textAtOffset(int offset, QAccessible::TextBoundaryType kind, int* start,
                                     int* end) const {
    return tell(stretchAt(offset, kind), start, end);
}

QString AccessibleText::textBeforeOffset(int offset, QAccessible::TextBoundaryType kind, int* start,
                                         int* end) const {
    const int here = stretchAt(offset, kind).start;
    return tell(here > 0 ? stretchAt(here - 1, kind) : Stretch{0, 0}, start, end);
}

QString AccessibleText::textAfterOffset(int offset, QAccessible::TextBoundaryType kind, int* start,
                                        int* end) const {
    const int count = characterCount();
    const int next = stretchAt(offset, kind).end;
    return tell(next < count ? stretchAt(next, kind) : Stretch{count, count}, start, end);
}

// Editing

void AccessibleText::deleteText(int start, int end) {
    replaceText(start, end, {});
}

void AccessibleText::insertText(int offset, const QString& text) {
    replaceText(offset, offset, text);
}

void AccessibleText::replaceText(int start, int end, const QString& text) {
    select(start, end);
    QString lines = text;
    lines.replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(u'\r', u'\n');
    control_.replaceSelection(toU16(lines), false);
    tellHost();
}

// Events

void tellAccessibleChange(ViewWidget& view, TextEditorCtrl& control, const UndoableAction& action,
                          bool forward) {
    const auto* edit = dynamic_cast<const EditAction*>(&action);
    if (!edit || edit->kind == EditActionKind::CaretMove)
        return;
    const bool comes = (edit->kind == EditActionKind::Erase) != forward;
    std::u16string_view text = edit->text;
    if (edit->kind == EditActionKind::Split)
        text = u"\n";
    const Buffer& buffer = control.getBuffer();
    if (text.empty() || text.size() > longestToldText || edit->startLine >= buffer.getLineCount())
        return;
    const int offset = limited(buffer.getOffset(edit->startLine) + edit->startCol);
    if (comes) {
        QAccessibleTextInsertEvent event(&view, offset, toQString(text));
        sendAccessible(event);
    } else {
        QAccessibleTextRemoveEvent event(&view, offset, toQString(text));
        sendAccessible(event);
    }
}

void tellAccessibleCaret(ViewWidget& view, TextEditorCtrl& control, bool selectionChanged) {
    const AccessibleText text(view, control);
    if (selectionChanged) {
        int start = 0;
        int end = 0;
        text.selection(0, &start, &end);
        QAccessibleTextSelectionEvent event(&view, start, end);
        event.setCursorPosition(text.cursorPosition());
        sendAccessible(event);
    }
    QAccessibleTextCursorEvent event(&view, text.cursorPosition());
    sendAccessible(event);
}

} // namespace tavrin::qt
