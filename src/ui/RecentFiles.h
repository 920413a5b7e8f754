#pragma once

#include <QStringList>

namespace kilnova {

/// The most recently used project files, newest first, kept in the user's settings. The only thing
/// Kilnova keeps outside the project files.
class RecentFiles final {
public:
    static constexpr int kMaximum = 4;

    QStringList files() const;
    void add(const QString& path);
    void remove(const QString& path);
};

} // namespace kilnova
