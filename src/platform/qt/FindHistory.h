#pragma once

#include <QSettings>
#include <QStringList>

namespace tavrin::qt {

/// The texts last searched for, and those last put in their place: the newest first, each once, kept in the
/// settings file.
class FindHistory {
  public:
    static constexpr int kept = 20;

    explicit FindHistory(QSettings& store) : store_(store) {}

    [[nodiscard]] QStringList findTexts() const { return read("FindDialog/Find"); }
    [[nodiscard]] QStringList replacements() const { return read("FindDialog/Replace"); }
    void addFindText(const QString& text) { add("FindDialog/Find", text); }
    void addReplacement(const QString& text) { add("FindDialog/Replace", text); }

  private:
    [[nodiscard]] QStringList read(const char* key) const;
    /// Nothing and very long texts are not kept.
    void add(const char* key, const QString& text);

    QSettings& store_;
};

} // namespace tavrin::qt
