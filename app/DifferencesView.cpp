#include "DifferencesView.h"

#include <QFontDatabase>

#include <algorithm>

namespace tavrin::app {

namespace {

/// More than anybody looks through; the whole text can be recovered and looked at.
constexpr qsizetype mostLines = 2000;

/// Removed lines red, added ones green, each with its number. Signs tell as well, for those who can't see
/// the colours.
QString asHtml(const QList<DifferenceLine>& lines) {
    QString html = "<pre style=\"margin:0\">";
    for (const DifferenceLine& line : lines.first(std::min(lines.size(), mostLines))) {
        if (line.kind == DifferenceLine::Skipped) {
            html += "<span style=\"color:#808080\">       …</span>\n";
            continue;
        }
        const QString sign = line.kind == DifferenceLine::Removed ? "−"
                             : line.kind == DifferenceLine::Added ? "+"
                                                                  : " ";
        const QString text = QString("%1 %2 %3").arg(line.line, 6).arg(sign, line.text).toHtmlEscaped();
        if (line.kind == DifferenceLine::Same)
            html += text + "\n";
        else
            html += QString("<span style=\"color:#202020;background-color:%1\">%2</span>\n")
                        .arg(line.kind == DifferenceLine::Removed ? "#ffd7d5" : "#ccf5d0", text);
    }
    if (lines.size() > mostLines)
        html += DifferencesView::tr("… and %1 more lines").arg(lines.size() - mostLines);
    return html + "</pre>";
}

} // namespace

DifferencesView::DifferencesView(QWidget* parent) : QTextEdit(parent) {
    setReadOnly(true);
    setLineWrapMode(NoWrap);
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
}

void DifferencesView::showLines(const QList<DifferenceLine>& lines, const QString& ifNone) {
    if (lines.isEmpty())
        setPlainText(ifNone);
    else
        setHtml(asHtml(lines));
}

} // namespace tavrin::app
