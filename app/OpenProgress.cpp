#include "OpenProgress.h"

#include <QCoreApplication>
#include <QProgressDialog>

#include <algorithm>
#include <chrono>

namespace tavrin::app {

namespace {
constexpr std::chrono::milliseconds patience{500};
constexpr int steps = 1000;
} // namespace

OpenProgress::OpenProgress(QWidget* window, const QString& fileName) : window_(window), fileName_(fileName) {
    clock_.start();
}

OpenProgress::~OpenProgress() = default;

bool OpenProgress::report(qint64 done, qint64 total) {
    if (!dialog_) {
        if (clock_.elapsed() < patience.count())
            return true;
        const QString label = QCoreApplication::translate("OpenProgress", "Opening “%1”…").arg(fileName_);
        dialog_ = std::make_unique<QProgressDialog>(
            label, QCoreApplication::translate("OpenProgress", "Cancel"), 0, steps, window_);
        // The window can't be used meanwhile: its text is about to be replaced.
        dialog_->setWindowModality(Qt::WindowModal);
        dialog_->setMinimumDuration(0);
        dialog_->setMinimumWidth(400);
        dialog_->setAutoReset(false);
    }
    if (done >= total) {
        // What follows is short and can't be stopped.
        dialog_->setLabelText(QCoreApplication::translate("OpenProgress", "Preparing “%1”…").arg(fileName_));
        dialog_->setCancelButton(nullptr);
    }
    dialog_->setValue(static_cast<int>(done * steps / std::max<qint64>(total, 1)));
    return !dialog_->wasCanceled();
}

} // namespace tavrin::app
