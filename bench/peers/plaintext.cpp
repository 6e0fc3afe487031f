// QPlainTextEdit with a highlighter that does no more than what the others show: tags, attributes, values,
// comments, CDATA sections.

#include "Editor.h"

#include <QApplication>
#include <QFile>
#include <QPlainTextEdit>
#include <QSyntaxHighlighter>
#include <QTextBlock>

#include <cstdlib>

namespace tavrin::bench {

namespace {

class Highlighter final : public QSyntaxHighlighter {
  public:
    using QSyntaxHighlighter::QSyntaxHighlighter;

  protected:
    void highlightBlock(const QString& text) override {
        auto state = static_cast<State>(std::max(0, previousBlockState()));
        for (int at = 0; at < text.size();) {
            const int start = at;
            switch (state) {
            case Text:
                at = startOfMarkup(text, at, state);
                continue;
            case Comment:
                at = endOf(text, at, QLatin1String("-->"), state);
                setFormat(start, at - start, Qt::darkGreen);
                continue;
            case CData:
                at = endOf(text, at, QLatin1String("]]>"), state);
                setFormat(start, at - start, Qt::darkMagenta);
                continue;
            case Tag:
                at = partOfTag(text, at, state);
                continue;
            }
        }
        setCurrentBlockState(state);
    }

  private:
    enum State { Text, Tag, Comment, CData };

    static int startOfMarkup(const QString& text, int at, State& state) {
        const auto found = static_cast<int>(text.indexOf(QLatin1Char('<'), at));
        if (found < 0)
            return static_cast<int>(text.size());
        const QStringView rest = QStringView(text).mid(found);
        state = rest.startsWith(QLatin1String("<!--"))        ? Comment
                : rest.startsWith(QLatin1String("<![CDATA[")) ? CData
                                                              : Tag;
        return found;
    }
    static int endOf(const QString& text, int at, QLatin1String end, State& state) {
        const auto found = static_cast<int>(text.indexOf(end, at));
        if (found < 0)
            return static_cast<int>(text.size());
        state = Text;
        return found + static_cast<int>(end.size());
    }
    int partOfTag(const QString& text, int at, State& state) {
        const QChar c = text[at];
        if (c == QLatin1Char('"') || c == QLatin1Char('\'')) {
            const auto found = static_cast<int>(text.indexOf(c, at + 1));
            const int end = found < 0 ? static_cast<int>(text.size()) : found + 1;
            setFormat(at, end - at, Qt::blue);
            return end;
        }
        if (c == QLatin1Char('>')) {
            state = Text;
            setFormat(at, 1, Qt::blue);
            return at + 1;
        }
        if (c.isSpace())
            return at + 1;
        int end = at + 1;
        while (end < text.size() && !text[end].isSpace() && !QStringLiteral("<>\"'=").contains(text[end]))
            ++end;
        setFormat(at, end - at, c == QLatin1Char('<') ? Qt::darkRed : Qt::red);
        return end;
    }
};

class PlainText final : public Editor {
  public:
    PlainText() : highlighter_(edit_.document()) {
        edit_.setFont(editorFont());
        edit_.setLineWrapMode(QPlainTextEdit::NoWrap);
    }

    QWidget& widget() override { return edit_; }
    QWidget& page() override { return *edit_.viewport(); }
    QWidget& keyboard() override { return edit_; }

    void load(const QString& path) override {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            std::abort();
        edit_.setPlainText(QString::fromUtf8(file.readAll()));
    }
    void colourAll() override { highlighter_.rehighlight(); }
    int lineCount() override { return edit_.blockCount(); }
    void goTo(int line, int column) override {
        const QTextBlock block = edit_.document()->findBlockByNumber(line);
        QTextCursor cursor(block);
        cursor.setPosition(block.position() + std::min(column, block.length() - 1));
        edit_.setTextCursor(cursor);
    }
    void goToEnd() override { pressKey(edit_, Qt::Key_End, Qt::ControlModifier); }
    void pageDown() override { pressKey(edit_, Qt::Key_PageDown, Qt::NoModifier); }
    bool find(const QString& text, bool matchCase) override {
        return !edit_.document()->find(text, 0, flags(matchCase)).isNull();
    }
    void replaceAll(const QString& text, const QString& with) override {
        QTextCursor edit(edit_.document());
        edit.beginEditBlock();
        QTextCursor at = edit_.document()->find(text, 0, flags(true));
        while (!at.isNull()) {
            at.insertText(with);
            at = edit_.document()->find(text, at, flags(true));
        }
        edit.endEditBlock();
    }
    void undo() override { edit_.undo(); }
    bool put(QIODevice& to) override { return to.write(edit_.toPlainText().toUtf8()) >= 0; }

  private:
    static QTextDocument::FindFlags flags(bool matchCase) {
        return matchCase ? QTextDocument::FindCaseSensitively : QTextDocument::FindFlags();
    }

    QPlainTextEdit edit_;
    Highlighter highlighter_;
};

} // namespace

} // namespace tavrin::bench

int main(int argc, char** argv) {
    using namespace tavrin::bench;
    return runRows(argc, argv, "QPlainTextEdit", QStringLiteral("QPlainTextEdit of Qt %1").arg(qVersion()),
                   [] { return std::make_unique<PlainText>(); });
}
