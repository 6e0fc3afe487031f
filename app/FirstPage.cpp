#include "FirstPage.h"

#include "control/TextEditorCtrl.h"
#include "platform/qt/widget/XmlEditorWidget.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>

#include <algorithm>
#include <cstring>

namespace tavrin::app {

namespace {

/// Keys that neither change the text nor ask for more of it than is there.
bool isHarmless(const QKeyEvent& key) {
    static constexpr Qt::Key moving[] = {Qt::Key_Left,     Qt::Key_Right, Qt::Key_Up,     Qt::Key_Down,
                                         Qt::Key_PageDown, Qt::Key_Home,  Qt::Key_End,    Qt::Key_PageUp,
                                         Qt::Key_Control,  Qt::Key_Shift, Qt::Key_Alt,    Qt::Key_Meta,
                                         Qt::Key_CapsLock, Qt::Key_AltGr, Qt::Key_Super_L};
    return std::ranges::find(moving, key.key()) != std::end(moving) || key.matches(QKeySequence::Copy) ||
           key.matches(QKeySequence::SelectAll);
}

} // namespace

FirstPage::FirstPage(Platform& platform, const QByteArray& bytes, QWidget* parent)
    : QWidget(parent), editor_(new qt::XmlEditorWidget(platform, this)) {
    Buffer& buffer = editor_->control().getBuffer();
    SmartPtr<ByteBuffer> block = ByteBuffer::allocate(static_cast<std::size_t>(bytes.size()));
    std::copy_n(bytes.data(), bytes.size(), reinterpret_cast<char*>(block->data()));
    buffer.loadBytes(std::move(block));
    if (const int last = buffer.getLineCount() - 1; last > 0)
        buffer.erase(last - 1, buffer.getLineLength(last - 1), last, buffer.getLineLength(last));
    editor_->documentLoaded();
    setFocusProxy(editor_);
    for (QWidget* widget : editor_->findChildren<QWidget*>())
        widget->installEventFilter(this);
}

void FirstPage::movePositionTo(qt::XmlEditorWidget& other) const {
    const TextEditorCtrl& from = editor_->control();
    other.gotoLineCol(editor_->currentLine(), editor_->currentColumn());
    other.control().ScrollToPosition({from.GetScrollPos(SB_HORZ), from.GetScrollPos(SB_VERT)});
}

void FirstPage::resizeEvent(QResizeEvent* event) {
    editor_->resize(event->size());
}

bool FirstPage::eventFilter(QObject* object, QEvent* event) {
    const auto refuse = [&] {
        event->ignore();
        return true;
    };
    switch (event->type()) {
    case QEvent::KeyPress:
        if (!isHarmless(static_cast<QKeyEvent&>(*event)))
            return refuse();
        break;
    case QEvent::MouseButtonPress: // another button pastes, or opens the menu
        if (static_cast<QMouseEvent*>(event)->button() != Qt::LeftButton)
            return refuse();
        break;
    case QEvent::InputMethod:
    case QEvent::ContextMenu:
        return refuse();
    case QEvent::Wheel: // would zoom
        if (static_cast<QWheelEvent*>(event)->modifiers().testFlag(Qt::ControlModifier))
            return refuse();
        break;
    default:
        break;
    }
    return QWidget::eventFilter(object, event);
}

} // namespace tavrin::app
