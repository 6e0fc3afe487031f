#pragma once

#include "TextDifferences.h"

#include <QTextEdit>

namespace tavrin::app {

/// Shows what differs between two texts, with line numbers.
class DifferencesView : public QTextEdit {
    Q_OBJECT

  public:
    explicit DifferencesView(QWidget* parent);

    /// `ifNone`: what is shown when there is no difference.
    void showLines(const QList<DifferenceLine>& lines, const QString& ifNone);
};

} // namespace tavrin::app
