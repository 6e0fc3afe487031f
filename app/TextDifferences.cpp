#include "TextDifferences.h"

#include "buffer/Buffer.h"

#include <QStringList>

#include <algorithm>
#include <vector>

namespace tavrin::app {

namespace {

/// Of the table that finds what two texts have in common.
constexpr qsizetype mostCells = 4'000'000;
constexpr qsizetype context = 2;

/// All lines, same ones too, between the first and the last that differ.
QList<DifferenceLine> allLines(const QList<QStringView>& before, const QList<QStringView>& after,
                               qsizetype first) {
    const auto rows = before.size();
    const auto columns = after.size();
    QList<DifferenceLine> result;
    const auto put = [&](DifferenceLine::Kind kind, QStringView text, qsizetype at) {
        result += DifferenceLine{kind, text.toString(), static_cast<int>(first + at + 1)};
    };
    // How many lines the rests of the texts, from a row and a column on, have in common.
    std::vector<int> common;
    const auto at = [&](qsizetype row, qsizetype column) -> int& {
        return common[static_cast<std::size_t>(row * (columns + 1) + column)];
    };
    const bool fits = (rows + 1) * (columns + 1) <= mostCells;
    if (fits) {
        common.assign(static_cast<std::size_t>((rows + 1) * (columns + 1)), 0);
        for (qsizetype row = rows - 1; row >= 0; --row)
            for (qsizetype column = columns - 1; column >= 0; --column)
                at(row, column) = before[row] == after[column]
                                      ? at(row + 1, column + 1) + 1
                                      : std::max(at(row + 1, column), at(row, column + 1));
    }
    qsizetype row = 0;
    qsizetype column = 0;
    while (row < rows || column < columns) {
        if (fits && row < rows && column < columns && before[row] == after[column]) {
            put(DifferenceLine::Same, after[column], column);
            ++column;
            ++row;
        } else if (row < rows && (column == columns || !fits || at(row + 1, column) >= at(row, column + 1))) {
            put(DifferenceLine::Removed, before[row], row);
            ++row;
        } else {
            put(DifferenceLine::Added, after[column], column);
            ++column;
        }
    }
    return result;
}

} // namespace

QList<DifferenceLine> lineDifferences(const QString& before, const QString& after) {
    QList<QStringView> old = QStringView(before).split(u'\n');
    QList<QStringView> fresh = QStringView(after).split(u'\n');
    if (before == after)
        return {};
    qsizetype first = 0;
    while (first < old.size() && first < fresh.size() && old[first] == fresh[first])
        ++first;
    qsizetype same = 0; // at the end
    while (same < old.size() - first && same < fresh.size() - first &&
           old[old.size() - 1 - same] == fresh[fresh.size() - 1 - same])
        ++same;
    const qsizetype begin = std::max<qsizetype>(first - context, 0);
    const qsizetype behind = std::max<qsizetype>(same - context, 0);
    const QList<DifferenceLine> lines = allLines(old.mid(begin, old.size() - behind - begin),
                                                 fresh.mid(begin, fresh.size() - behind - begin), begin);
    QList<DifferenceLine> result;
    bool skipping = begin > 0;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        bool isNear = false;
        for (qsizetype j = std::max<qsizetype>(i - context, 0); j < std::min(i + context + 1, lines.size());
             ++j)
            isNear = isNear || lines[j].kind != DifferenceLine::Same;
        if (isNear && skipping)
            result += DifferenceLine{DifferenceLine::Skipped, {}, lines[i].line};
        if (isNear)
            result += lines[i];
        skipping = !isNear;
    }
    return result;
}

QList<DifferenceLine> lineDifferences(const Buffer& before, const Buffer& after) {
    const int fewer = std::min(before.getLineCount(), after.getLineCount());
    int first = 0;
    while (first < fewer && before.getLineText(first) == after.getLineText(first))
        ++first;
    int same = 0; // at the end
    while (same < fewer - first && before.getLineText(before.getLineCount() - 1 - same) ==
                                       after.getLineText(after.getLineCount() - 1 - same))
        ++same;
    first = std::max(first - static_cast<int>(context), 0);
    same = std::max(same - static_cast<int>(context), 0);
    const auto middle = [&](const Buffer& buffer) {
        QString text;
        for (int line = first; line < buffer.getLineCount() - same; ++line)
            text += (line > first ? "\n" : "") +
                    QString::fromUtf16(buffer.getLineText(line).data(),
                                       static_cast<qsizetype>(buffer.getLineText(line).size()));
        return text;
    };
    QList<DifferenceLine> lines = lineDifferences(middle(before), middle(after));
    if (first > 0 && !lines.isEmpty() && lines.first().kind != DifferenceLine::Skipped)
        lines.prepend({DifferenceLine::Skipped, {}, lines.first().line});
    for (DifferenceLine& line : lines)
        line.line += first;
    return lines;
}

} // namespace tavrin::app
