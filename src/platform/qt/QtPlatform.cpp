#include "platform/qt/QtPlatform.h"

#include "platform/qt/Conversions.h"
#include "platform/qt/FramePeer.h"
#include "platform/qt/PopupLoop.h"
#include "platform/qt/QtControls.h"
#include "platform/qt/QtFindDialog.h"
#include "platform/qt/QtProgress.h"
#include "platform/qt/ViewPeer.h"

#include <QApplication>
#include <QFontDatabase>
#include <QPalette>
#include <QScreen>
#include <QStandardPaths>
#include <QStyle>

#include <algorithm>

namespace tavrin::qt {

namespace {

QString defaultSettingsFile() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/tavrin-xml-editor/settings.ini");
}

/// Unhinted advances have fractions, which a grid of cells that scrolls by pixels can't have.
QFont withWholeAdvances(QFont font) {
    font.setStyleHint(QFont::Monospace);
    font.setHintingPreference(QFont::PreferFullHinting);
    font.setKerning(false);
    return font;
}

} // namespace

QtPlatform::QtPlatform(const QString& settingsFile)
    : file_(settingsFile.isEmpty() ? defaultSettingsFile() : settingsFile),
      settings_(file_),
      registry_(file_.store()),
      findHistory_(file_.store()) {}

QtPlatform::~QtPlatform() = default;

std::unique_ptr<WindowPeer> QtPlatform::createWindow(CWnd& window, CWnd* parent, const CREATESTRUCT& how) {
    QWidget* inside = nullptr;
    if (parent) {
        const QtWindowPeer* outer = QtWindowPeer::of(*parent);
        if (!outer)
            return nullptr;
        inside = &outer->clientWidget();
    }
    std::unique_ptr<WindowPeer> peer;
    if (how.horizontalScrollBar || how.verticalScrollBar || how.popup)
        peer = std::make_unique<ViewPeer>(*this, window, inside, how);
    else
        peer = std::make_unique<FramePeer>(*this, window, inside);
    if (!how.rect.IsRectEmpty())
        peer->moveWindow(how.rect);
    return peer;
}

std::unique_ptr<DialogControls> QtPlatform::createControls(CWnd& dialog, const DialogTemplate& layout) {
    QWidget& page = QtWindowPeer::of(dialog)->clientWidget();
    return std::make_unique<QtControls>(*this, dialog, page, layout);
}

std::unique_ptr<CFont> QtPlatform::createPointFont(int tenthsOfPoint, std::u16string_view family) {
    QFont font(toQString(family));
    font.setPointSizeF(std::max(1, tenthsOfPoint) / 10.0);
    return std::make_unique<QtFont>(withWholeAdvances(font));
}

std::unique_ptr<CFont> QtPlatform::createListFont() {
    QFont font = QApplication::font("QAbstractItemView");
    font.setHintingPreference(QFont::PreferFullHinting);
    return std::make_unique<QtFont>(font);
}

std::unique_ptr<CFont> QtPlatform::createFontLike(const CFont& font, FontStyle style) {
    QFont like = static_cast<const QtFont&>(font).renderer().font();
    like.setBold(style.bold);
    like.setItalic(style.italic);
    return std::make_unique<QtFont>(like);
}

std::unique_ptr<CFont> QtPlatform::createPrinterFont(const CDC& printer, int tenthsOfPoint,
                                                     std::u16string_view family) {
    constexpr double tenthsPerInch = 720;
    QFont font(toQString(family));
    font.setPixelSize(
        std::max(1, qRound(tenthsOfPoint * printer.GetDeviceCaps(DeviceCap::LogPixelsY) / tenthsPerInch)));
    return std::make_unique<QtFont>(withWholeAdvances(font));
}

std::unique_ptr<CDC> QtPlatform::createMeasureDC() {
    return std::make_unique<QtDC>(defaultFont());
}

COLORREF QtPlatform::GetSysColor(SystemColor role) const {
    const QPalette palette = QApplication::palette();
    switch (role) {
    case COLOR_WINDOW:
        return toColorRef(palette.color(QPalette::Active, QPalette::Base));
    case COLOR_WINDOWTEXT:
        return toColorRef(palette.color(QPalette::Active, QPalette::Text));
    case COLOR_APPWORKSPACE:
        return toColorRef(palette.color(QPalette::Active, QPalette::Dark));
    case COLOR_HIGHLIGHT:
        return toColorRef(palette.color(QPalette::Active, QPalette::Highlight));
    case COLOR_HIGHLIGHTTEXT:
        return toColorRef(palette.color(QPalette::Active, QPalette::HighlightedText));
    case COLOR_GRAYTEXT:
        return toColorRef(palette.color(QPalette::Disabled, QPalette::Text));
    }
    return 0;
}

int QtPlatform::GetSystemMetrics(SystemMetric metric) const {
    constexpr int rowSpace = 4;
    switch (metric) {
    case SM_CXVSCROLL:
        return QApplication::style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    case SM_CYROWSPACE:
        return rowSpace;
    }
    return 0;
}

CRect QtPlatform::workArea(CPoint point) const {
    const QScreen* screen = QGuiApplication::screenAt(QPoint(point.x, point.y));
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    const QRect area = screen->availableGeometry();
    return {area.x(), area.y(), area.x() + area.width(), area.y() + area.height()};
}

void QtPlatform::runPopup(CWnd& popup) {
    if (QtWindowPeer::of(popup))
        PopupLoop(*this, popup).run();
}

bool QtPlatform::GetKeyState(VirtualKey key) const {
    const Qt::KeyboardModifiers held = modifiers_.value_or(QApplication::keyboardModifiers());
    switch (key) {
    case VK_SHIFT:
        return held.testFlag(Qt::ShiftModifier);
    case VK_CONTROL:
        return held.testFlag(Qt::ControlModifier);
    case VK_ALT:
        return held.testFlag(Qt::AltModifier);
    default:
        return false;
    }
}

WheelScroll QtPlatform::wheelScroll() const {
    return {std::max(1, QApplication::wheelScrollLines()), false};
}

void QtPlatform::MessageBeep() {
    QApplication::beep();
}

void QtPlatform::BeginWaitCursor() {
    QApplication::setOverrideCursor(Qt::WaitCursor);
}

void QtPlatform::EndWaitCursor() {
    QApplication::restoreOverrideCursor();
}

CFindReplaceDialog* QtPlatform::createFindReplaceDialog() {
    return new QtFindDialog(*this);
}

std::unique_ptr<Progress> QtPlatform::beginProgress(CWnd& window, LongTask task) {
    const QtWindowPeer* peer = QtWindowPeer::of(window);
    return std::make_unique<QtProgress>(peer ? peer->widget().window() : nullptr, task, runningTasks_);
}

const QtFont& QtPlatform::defaultFont() {
    if (!defaultFont_)
        defaultFont_ =
            std::make_unique<QtFont>(withWholeAdvances(QFontDatabase::systemFont(QFontDatabase::FixedFont)));
    return *defaultFont_;
}

} // namespace tavrin::qt
