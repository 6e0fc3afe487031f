#pragma once

#include "app/Prompts.h"

#include <QStringList>

#include <functional>

/// Answers as a test lays down, and keeps what was asked.
class ScriptedPrompts : public tavrin::app::Prompts {
  public:
    tavrin::app::SaveAnswer saveAnswer = tavrin::app::SaveAnswer::Cancel;
    bool yes = false;
    QString fileToOpen;
    QString schema;
    std::optional<tavrin::app::SaveTarget> saveTarget;
    std::optional<int> line;
    /// What is answered to one question about a change on disk after the other; then KeepMine, or Cancel
    /// while saving.
    QList<tavrin::app::DiskAnswer> diskAnswers;
    /// Answers to the questions of confirm() that come before `yes` is.
    QList<bool> confirmations;
    /// What is answered to one offer of recovery after the other; then nothing.
    QList<std::function<tavrin::app::RecoveryChoice(const QList<tavrin::app::RecoveryOffer>&)>> recoveries;

    /// Everything that was asked or said since the last call.
    QStringList takeAsked() { return std::exchange(asked_, {}); }

    tavrin::app::SaveAnswer askSaveChanges(QWidget*, const QString& documentName) override {
        asked_ += "save " + documentName;
        return saveAnswer;
    }
    bool confirm(QWidget*, const QString& question, const QString& details, const QString&) override {
        asked_ += question + " " + details;
        return confirmations.isEmpty() ? yes : confirmations.takeFirst();
    }
    bool choose(QWidget*, const QString& question, const QString&, const QString&) override {
        asked_ += question;
        return yes;
    }
    tavrin::app::DiskAnswer askAboutDiskChange(QWidget*, const tavrin::app::DiskQuestion& question) override {
        asked_ += QString("changed on disk %1%2%3")
                      .arg(question.name, question.isChangedHere ? ", changed here" : "",
                           question.isSaving ? ", saving" : "");
        if (!diskAnswers.isEmpty())
            return diskAnswers.takeFirst();
        return question.isSaving ? tavrin::app::DiskAnswer::Cancel : tavrin::app::DiskAnswer::KeepMine;
    }
    void showDifferences(QWidget*, const QString&, const QList<tavrin::app::DifferenceLine>& lines) override {
        QString shown = "differences";
        for (const auto& line : lines)
            shown += QString("|%1%2 %3").arg(QString("=-+…")[line.kind]).arg(line.line).arg(line.text);
        asked_ += shown;
    }
    std::optional<tavrin::app::RecoveryChoice>
    askRecovery(QWidget*, const QList<tavrin::app::RecoveryOffer>& offers) override {
        for (const auto& offer : offers)
            asked_ += "recover " + offer.name + " " + offer.remark;
        return recoveries.isEmpty() ? std::nullopt : std::optional(recoveries.takeFirst()(offers));
    }
    void showError(QWidget*, const QString& message) override { asked_ += "error: " + message; }
    QString askFileToOpen(QWidget*, const QString&) override { return fileToOpen; }
    QString askSchema(QWidget*, const QString& title, const QString&) override {
        asked_ += title;
        return schema;
    }
    std::optional<tavrin::app::SaveTarget> askWhereToSave(QWidget*,
                                                          const tavrin::app::SaveTarget& proposal) override {
        asked_ += "where " + proposal.path;
        return saveTarget;
    }
    std::optional<int> askLine(QWidget*, int current, int last) override {
        asked_ += QString("line %1 of %2").arg(current).arg(last);
        return line;
    }

  private:
    QStringList asked_;
};
