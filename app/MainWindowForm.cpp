// How the text is written to its file: encoding, byte-order mark and line ends; what a save would lose.

#include "Encodings.h"
#include "MainWindow.h"
#include "Prompts.h"
#include "XmlDeclaration.h"
#include "buffer/LoadedText.h"
#include "control/TextEditorCtrl.h"
#include "document/TextUndoScope.h"
#include "files/EncodingLoss.h"
#include "platform/qt/widget/XmlEditorWidget.h"

#include <QAction>
#include <QActionGroup>
#include <QFileInfo>
#include <QLocale>
#include <QMenu>
#include <QMenuBar>
#include <QStatusBar>
#include <QToolButton>

#include <algorithm>

namespace tavrin::app {

namespace {

constexpr LineEnd lineEnds[] = {LineEnd::CrLf, LineEnd::Lf, LineEnd::Cr};

/// Short, for the status line.
QString labelOf(std::optional<LineEnd> end) {
    if (!end)
        return MainWindow::tr("Mixed");
    return *end == LineEnd::CrLf ? "CR LF" : *end == LineEnd::Lf ? "LF" : "CR";
}

QString longLabelOf(LineEnd end) {
    return end == LineEnd::CrLf ? MainWindow::tr("&Windows (CR LF)")
           : end == LineEnd::Lf ? MainWindow::tr("&Unix (LF)")
                                : MainWindow::tr("&Classic Mac (CR)");
}

/// One of several, in a menu with an action group.
QAction* addChoice(QMenu* menu, const QString& text, bool isChosen) {
    QAction* action = menu->addAction(text);
    action->setActionGroup(menu->findChild<QActionGroup*>());
    action->setCheckable(true);
    action->setChecked(isChosen);
    return action;
}

} // namespace

// Menu and status line

void MainWindow::createDocumentMenu() {
    QMenu* menu = menuBar()->addMenu(tr("&Document"));
    documentMenus_ += menu;
    encodingMenu_ = menu->addMenu(tr("&Encoding"));
    connect(encodingMenu_, &QMenu::aboutToShow, this, &MainWindow::fillEncodingMenu);
    lineEndMenu_ = menu->addMenu(tr("&Line Ends"));
    for (QMenu* choices : {encodingMenu_, lineEndMenu_})
        new QActionGroup(choices);
    connect(lineEndMenu_, &QMenu::aboutToShow, this, &MainWindow::fillLineEndMenu);
    QAction* mark = menu->addAction(tr("Byte-Order &Mark"));
    mark->setCheckable(true);
    mark->setStatusTip(tr("The file begins with the bytes that tell its Unicode encoding"));
    const auto form = [this]() -> const TextForm& { return editor_->control().getBuffer().getForm(); };
    connect(menu, &QMenu::aboutToShow, mark, [mark, form] {
        mark->setEnabled(mayBeginWithMark(form().encoding));
        mark->setChecked(mark->isEnabled() && form().hasMark);
    });
    connect(mark, &QAction::triggered, this, [this, form](bool hasMark) {
        editor_->changeForm({form().encoding, hasMark, form().lineEnds});
    });
}

void MainWindow::fillEncodingMenu() {
    encodingMenu_->clear();
    const int present = editor_->control().getBuffer().getEncoding();
    for (const int encoding : offeredEncodings(present)) {
        QAction* action = addChoice(encodingMenu_, encodingLabel(encoding), encoding == present);
        connect(action, &QAction::triggered, this, [this, encoding] { changeEncoding(encoding); });
    }
}

void MainWindow::fillLineEndMenu() {
    lineEndMenu_->clear();
    const auto present = editor_->control().getBuffer().getCommonLineEnd();
    for (const LineEnd end : lineEnds) {
        QAction* action = addChoice(lineEndMenu_, longLabelOf(end), end == present);
        connect(action, &QAction::triggered, this, [this, end] {
            const Buffer& buffer = editor_->control().getBuffer();
            if (buffer.getCommonLineEnd() != end)
                editor_->changeForm({buffer.getEncoding(), buffer.getForm().hasMark, end});
        });
    }
    if (!present)
        addChoice(lineEndMenu_, tr("Mixed"), true)->setEnabled(false);
}

/// Buttons that show encoding and line ends and open the menus in which they are changed.
void MainWindow::createFormButtons() {
    const auto add = [this](QMenu* menu, const QString& name) {
        auto* button = new QToolButton(this);
        button->setAutoRaise(true);
        button->setPopupMode(QToolButton::InstantPopup);
        button->setMenu(menu);
        button->setFocusPolicy(Qt::NoFocus);
        button->setAccessibleName(name);
        button->setToolTip(name);
        statusBar()->addPermanentWidget(button);
        return button;
    };
    encoding_ = add(encodingMenu_, tr("Encoding"));
    lineEnd_ = add(lineEndMenu_, tr("Line Ends"));
}

void MainWindow::showForm() {
    const Buffer& buffer = editor_->control().getBuffer();
    const TextForm& form = buffer.getForm();
    const bool isMarkUnusual = form.encoding == ENCODING_UTF8 && form.hasMark;
    const bool lacksMark = isWideEncoding(form.encoding) && !form.hasMark;
    const QString label = encodingLabel(form.encoding);
    encoding_->setText(isMarkUnusual ? tr("%1 with mark").arg(label)
                       : lacksMark   ? tr("%1 without mark").arg(label)
                                     : label);
    lineEnd_->setText(labelOf(buffer.getCommonLineEnd()));
}

// Changing the encoding

bool MainWindow::changeEncoding(int encoding) {
    TextEditorCtrl& control = editor_->control();
    const TextForm form = control.getBuffer().getForm().in(encoding);
    const auto edit = declareEncoding(control.getBuffer(), encoding);
    const std::u16string declared = declaredEncoding(control.getBuffer());
    const QString name = QString::fromStdString(encodingName(encoding));
    const QString question =
        declared.empty()
            ? tr("Add to the XML declaration that the text is in “%1”? Other programs may fail to read the "
                 "file otherwise.")
                  .arg(name)
            : tr("The XML declaration names the encoding “%1”. Change it to “%2”? Other programs may fail to "
                 "read the file otherwise.")
                  .arg(QString::fromStdU16String(declared), name);
    const bool declares = edit && services_.prompts.choose(this, question, tr("&Change"), tr("&Leave"));
    overruledDeclaration_ = edit && !declares ? declared : std::u16string();
    if (!declares && form == control.getBuffer().getForm())
        return false;
    {
        const TextUndoScope step(control);
        control.changeForm(form);
        if (declares)
            declare(*edit);
    }
    editor_->tellChanges();
    return true;
}

void MainWindow::declare(const TextEdit& edit) {
    TextEditorCtrl& control = editor_->control();
    int line = control.getCurrentLine();
    int column = control.getCurrentColoumn();
    if (edit.length > 0)
        control.erase(edit.line, edit.column, edit.line, edit.column + edit.length);
    control.insert(edit.line, edit.column, edit.text);
    // The caret stays with its text.
    if (edit.text.ends_with(u'\n'))
        ++line;
    else if (line == edit.line && column >= edit.column + edit.length)
        column += static_cast<int>(edit.text.size()) - edit.length;
    control.gotoLineCol(line, std::min(column, control.getBuffer().getLineLength(line)));
    control.Invalidate();
}

// Before a save

int MainWindow::namedEncoding() const {
    const Buffer& buffer = editor_->control().getBuffer();
    const int present = buffer.getEncoding();
    const std::u16string name = declaredEncoding(buffer);
    if (name.empty() || name == overruledDeclaration_ || !editor_->isModified())
        return present;
    return encodingNamed(name, present).value_or(present);
}

std::optional<int> MainWindow::encodingToSave() {
    const Buffer& buffer = editor_->control().getBuffer();
    const int present = buffer.getEncoding();
    const std::u16string name = declaredEncoding(buffer);
    const bool isKnown = name.empty() || encodingNamed(name, present);
    if (isKnown || name == overruledDeclaration_ || !editor_->isModified())
        return namedEncoding();
    const QString used = encodingLabel(present);
    if (!services_.prompts.confirm(
            this,
            tr("The XML declaration names the encoding “%1”, which is not known here.")
                .arg(QString::fromStdU16String(name)),
            tr("The file would be written in %1, and other programs may fail to read it.").arg(used),
            tr("Save in %1").arg(used)))
        return {};
    return present;
}

bool MainWindow::settleLoss(SaveEncoding& encoding) {
    TextEditorCtrl& control = editor_->control();
    for (;;) {
        const CharacterLoss loss = findCharacterLoss(control, encoding.code);
        if (loss.count == 0)
            return acceptsLostBytes(encoding.code);
        const LossAnswer answer = services_.prompts.askAboutLoss(this, loss);
        const bool canRefer = loss.withoutReference < loss.count;
        if (answer.action == LossAction::WriteReferences && canRefer) {
            writeCharacterReferences(control, encoding.code);
            editor_->tellChanges();
        } else if (answer.action == LossAction::UseEncoding) {
            encoding = {answer.encoding, true};
        } else {
            const bool isPlace = answer.place >= 0 && answer.place < loss.places.size();
            const CharacterLoss::Place& place = isPlace ? loss.places[answer.place] : loss.first;
            editor_->gotoLineCol(place.line, place.column);
            return false;
        }
    }
}

bool MainWindow::acceptsLostBytes(int encoding) {
    const Buffer& buffer = editor_->control().getBuffer();
    const LostBytes lost = findLostBytes(buffer, encoding);
    if (lost.count <= acceptedLostBytes_) // which earlier saves have replaced
        return true;
    const QLocale locale;
    const QString loaded = encodingLabel(buffer.getLoadedEncoding());
    const QString why = encoding == buffer.getLoadedEncoding()
                            ? tr("They are in lines that have been edited.")
                            : tr("They can't be kept in another encoding.");
    if (!services_.prompts.confirm(this,
                                   tr("“%1” held bytes that are not valid %2. Replace them by “�”?")
                                       .arg(document_->displayName(), loaded),
                                   tr("Places: %1, the first at byte %2. %3")
                                       .arg(locale.toString(static_cast<qulonglong>(lost.count)),
                                            locale.toString(static_cast<qulonglong>(lost.first)), why),
                                   tr("Save")))
        return false;
    acceptedLostBytes_ = lost.count;
    return true;
}

bool MainWindow::saveIn(const QString& path, SaveEncoding encoding) {
    if (!settleLoss(encoding))
        return false;
    const bool hasChanged = encoding.isChosen && changeEncoding(encoding.code);
    Buffer& buffer = editor_->control().getBuffer();
    const TextForm before = buffer.getForm();
    buffer.setForm(before.in(encoding.code));
    if (writeFile(path))
        return true;
    buffer.setForm(before);
    if (hasChanged)
        editor_->undo();
    return false;
}

// Before a load is shown

bool MainWindow::acceptsDamage(const QString& path, const LoadedText& text) {
    const DecodeReport& decoded = text.report();
    if (decoded.invalidCount == 0)
        return true;
    const QLocale locale;
    const auto number = [&](std::size_t value) { return locale.toString(static_cast<qulonglong>(value)); };
    return services_.prompts.confirm(
        this,
        tr("“%1” holds bytes that are not valid %2. Open it all the same?")
            .arg(QFileInfo(path).fileName(), encodingLabel(text.form().encoding)),
        tr("Places: %1, the first at byte %2, in line %3. They show as “�”. Lines that nobody edits keep "
           "their "
           "bytes.")
            .arg(number(decoded.invalidCount), number(decoded.firstInvalid))
            .arg(text.lineAt(decoded.firstInvalid) + 1),
        tr("Open"));
}

} // namespace tavrin::app
