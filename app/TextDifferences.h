#pragma once

#include <QList>
#include <QString>

namespace tavrin {
class Buffer;
}

namespace tavrin::app {

/// A line of a comparison, as it is shown.
struct DifferenceLine {
    enum Kind { Same, Removed, Added, Skipped } kind = Same;
    QString text; ///< of Skipped: empty
    int line = 0; ///< from 1, in the text that the line is from; of Skipped: where the text goes on
};

/// What makes `after` out of `before`, texts with lines joined by "\n", with up to two lines around each
/// change. Where very much differs the lines in between are shown as removed and added as a whole.
[[nodiscard]] QList<DifferenceLine> lineDifferences(const QString& before, const QString& after);

/// The same for the lines of two buffers; what is common at both ends costs no more than reading it.
[[nodiscard]] QList<DifferenceLine> lineDifferences(const Buffer& before, const Buffer& after);

} // namespace tavrin::app
