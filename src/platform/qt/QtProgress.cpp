#include "platform/qt/QtProgress.h"

#include <QCoreApplication>
#include <QProgressDialog>

#include <algorithm>

namespace tavrin::qt {

namespace {

constexpr int steps = 1000;

QString translated(const char* text) {
    return QCoreApplication::translate("LongTask", text);
}

} // namespace

QtProgress::QtProgress(QWidget* window, LongTask task, int& running, int patience)
    : window_(window), task_(task), running_(running), patience_(patience) {
    ++running_;
    clock_.start();
}

QtProgress::~QtProgress() {
    --running_;
}

bool QtProgress::report(std::int64_t done, std::int64_t total) {
    if (!dialog_) {
        if (clock_.elapsed() < patience_)
            return true;
        const char* label = task_ == LongTask::Search ? "Searching…" : "Replacing…";
        dialog_ =
            std::make_unique<QProgressDialog>(translated(label), translated("Cancel"), 0, steps, window_);
        dialog_->setWindowModality(Qt::ApplicationModal); // find dialogs too
        dialog_->setMinimumDuration(0);
        dialog_->setMinimumWidth(350);
        dialog_->setAutoReset(false);
        dialog_->setAutoClose(false);
    }
    dialog_->setValue(
        static_cast<int>(std::clamp<std::int64_t>(total > 0 ? done * steps / total : 0, 0, steps)));
    return !dialog_->wasCanceled();
}

} // namespace tavrin::qt
