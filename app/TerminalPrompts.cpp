#include "TerminalPrompts.h"

#include <cstdio>

namespace tavrin::app {

namespace {

void say(const QString& text) {
    std::fprintf(stderr, "%s\n", text.toLocal8Bit().constData());
}

} // namespace

SaveAnswer TerminalPrompts::askSaveChanges(QWidget*, const QString&) {
    return SaveAnswer::Discard;
}

bool TerminalPrompts::confirm(QWidget*, const QString& question, const QString& details, const QString&) {
    say(question + " " + details);
    return true;
}

bool TerminalPrompts::choose(QWidget*, const QString& question, const QString& accept, const QString&) {
    say(question + " " + accept);
    return true;
}

DiskAnswer TerminalPrompts::askAboutDiskChange(QWidget*, const DiskQuestion& question) {
    return question.isSaving ? DiskAnswer::Cancel : DiskAnswer::KeepMine;
}

void TerminalPrompts::showDifferences(QWidget*, const QString&, const QList<DifferenceLine>&) {}

std::optional<RecoveryChoice> TerminalPrompts::askRecovery(QWidget*, const QList<RecoveryOffer>&) {
    return {};
}

void TerminalPrompts::showError(QWidget*, const QString& message) {
    say(message);
}

QString TerminalPrompts::askFileToOpen(QWidget*, const QString&) {
    return {};
}

QString TerminalPrompts::askSchema(QWidget*, const QString&, const QString&) {
    return {};
}

std::optional<SaveTarget> TerminalPrompts::askWhereToSave(QWidget*, const SaveTarget&) {
    return {};
}

std::optional<int> TerminalPrompts::askLine(QWidget*, int, int) {
    return {};
}

} // namespace tavrin::app
