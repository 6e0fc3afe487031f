#include "platform/qt/PrintProgress.h"

#include <QCoreApplication>
#include <QLocale>
#include <QProgressDialog>

#include <chrono>

namespace tavrin::qt {

namespace {
constexpr std::chrono::milliseconds patience{500};
constexpr int minimumWidth = 400;
} // namespace

PrintProgress::PrintProgress(QWidget* window, const QString& label, int pages)
    : window_(window), label_(label), pages_(pages) {
    clock_.start();
}

PrintProgress::~PrintProgress() = default;

bool PrintProgress::report(int n) {
    if (!dialog_) {
        if (clock_.elapsed() < patience.count())
            return true;
        dialog_ = std::make_unique<QProgressDialog>(
            QString(), QCoreApplication::translate("PrintProgress", "Cancel"), 0, pages_, window_);
        dialog_->setWindowTitle(QCoreApplication::translate("PrintProgress", "Printing"));
        dialog_->setWindowModality(Qt::WindowModal);
        dialog_->setMinimumDuration(0);
        dialog_->setMinimumWidth(minimumWidth);
        dialog_->setAutoReset(false);
    }
    const QLocale locale;
    dialog_->setLabelText(label_.arg(locale.toString(n), locale.toString(pages_)));
    dialog_->setValue(n - 1);
    return !dialog_->wasCanceled();
}

} // namespace tavrin::qt
