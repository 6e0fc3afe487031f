#pragma once

#include "FileLoad.h"

#include <QWidget>

class QProgressBar;

namespace tavrin::app {

/// How far a file has been loaded, with a button that gives up, for the status line.
class LoadProgress : public QWidget {
    Q_OBJECT

  public:
    explicit LoadProgress(QWidget* parent);

    void report(const FileLoad::Progress& progress);

  signals:
    void cancelled();

  private:
    QProgressBar* bar_;
};

} // namespace tavrin::app
