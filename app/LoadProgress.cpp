#include "LoadProgress.h"

#include <QHBoxLayout>
#include <QProgressBar>
#include <QToolButton>

namespace tavrin::app {

namespace {
constexpr int steps = 100;
constexpr int barWidth = 150;
} // namespace

LoadProgress::LoadProgress(QWidget* parent) : QWidget(parent), bar_(new QProgressBar(this)) {
    bar_->setFixedWidth(barWidth);
    auto* cancel = new QToolButton(this);
    cancel->setText(tr("Cancel"));
    cancel->setFocusPolicy(Qt::NoFocus); // keys stay with the text
    connect(cancel, &QToolButton::clicked, this, &LoadProgress::cancelled);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(bar_);
    row->addWidget(cancel);
}

void LoadProgress::report(const FileLoad::Progress& progress) {
    // Without a known length the bar only shows that something goes on.
    bar_->setMaximum(progress.total > 0 ? steps : 0);
    if (progress.total > 0)
        bar_->setValue(static_cast<int>(progress.done * steps / progress.total));
}

} // namespace tavrin::app
