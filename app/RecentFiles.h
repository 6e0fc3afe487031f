#pragma once

#include <QStringList>

class QSettings;

namespace tavrin::app {

/// The files that were opened or saved last, newest first, kept in the settings: all windows and runs of the
/// program share one list.
class RecentFiles {
  public:
    static constexpr int most = 10;

    /// The settings outlive the list.
    explicit RecentFiles(QSettings& settings) : settings_(settings) {}

    [[nodiscard]] QStringList paths() const;
    /// Puts a path to the front.
    void add(const QString& path);
    void remove(const QString& path);
    void clear();

  private:
    QSettings& settings_;
};

} // namespace tavrin::app
