// QScintilla with its XML lexer and line numbers.

#include "Editor.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QFile>
#include <Qsci/qscilexerxml.h>
#include <Qsci/qsciscintilla.h>

#include <cstdlib>
#include <dlfcn.h>

/// The accessibility bridge can't be switched off, and counts all characters before the caret at each change,
/// though nobody listens. This stands before the library's function of this name and spares it that.
long QsciScintillaBase::SendScintilla(unsigned message, unsigned long first, long second) const {
    using Send = long (*)(const QsciScintillaBase*, unsigned, unsigned long, long);
    static const auto send =
        reinterpret_cast<Send>(dlsym(RTLD_NEXT, "_ZNK17QsciScintillaBase13SendScintillaEjml"));
    return message == SCI_COUNTCHARACTERS ? 0 : send(this, message, first, second);
}

namespace tavrin::bench {

namespace {

class Scintilla final : public Editor {
  public:
    Scintilla() {
        lexer_.setFont(editorFont());
        edit_.setUtf8(true);
        edit_.setEolMode(QsciScintilla::EolUnix);
        edit_.setLexer(&lexer_);
        edit_.setMarginType(0, QsciScintilla::NumberMargin);
        edit_.setMarginWidth(0, QStringLiteral("00000000"));
    }

    QWidget& widget() override { return edit_; }
    QWidget& page() override { return *edit_.viewport(); }
    QWidget& keyboard() override { return edit_; }

    void load(const QString& path) override {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly) || !edit_.read(&file))
            std::abort();
    }
    void colourAll() override { edit_.SendScintilla(QsciScintilla::SCI_COLOURISE, 0UL, -1L); }
    int lineCount() override { return edit_.lines(); }
    void goTo(int line, int column) override {
        edit_.setCursorPosition(line, column);
        edit_.ensureLineVisible(line);
    }
    void goToEnd() override { pressKey(edit_, Qt::Key_End, Qt::ControlModifier); }
    void pageDown() override { pressKey(edit_, Qt::Key_PageDown, Qt::NoModifier); }
    bool find(const QString& text, bool matchCase) override {
        const QByteArray what = text.toUtf8();
        target(0, matchCase);
        return next(what) >= 0;
    }
    void replaceAll(const QString& text, const QString& with) override {
        const QByteArray what = text.toUtf8();
        const QByteArray replacement = with.toUtf8();
        edit_.beginUndoAction();
        target(0, true);
        while (next(what) >= 0) {
            edit_.SendScintilla(QsciScintilla::SCI_REPLACETARGET,
                                static_cast<unsigned long>(replacement.size()), replacement.constData());
            target(edit_.SendScintilla(QsciScintilla::SCI_GETTARGETEND), true);
        }
        edit_.endUndoAction();
    }
    void undo() override { edit_.undo(); }
    bool put(QIODevice& to) override { return edit_.write(&to); }

  private:
    /// From a byte to the end of the text.
    void target(long from, bool matchCase) {
        edit_.SendScintilla(QsciScintilla::SCI_SETSEARCHFLAGS,
                            matchCase ? static_cast<int>(QsciScintilla::SCFIND_MATCHCASE) : 0);
        edit_.SendScintilla(QsciScintilla::SCI_SETTARGETRANGE, static_cast<unsigned long>(from),
                            edit_.SendScintilla(QsciScintilla::SCI_GETLENGTH));
    }
    long next(const QByteArray& what) {
        return edit_.SendScintilla(QsciScintilla::SCI_SEARCHINTARGET, static_cast<unsigned long>(what.size()),
                                   what.constData());
    }

    QsciLexerXML lexer_;
    QsciScintilla edit_;
};

} // namespace

} // namespace tavrin::bench

int main(int argc, char** argv) {
    using namespace tavrin::bench;
    return runRows(argc, argv, "QScintilla",
                   QStringLiteral("QScintilla %1 on Qt %2").arg(QSCINTILLA_VERSION_STR, qVersion()),
                   [] { return std::make_unique<Scintilla>(); });
}
