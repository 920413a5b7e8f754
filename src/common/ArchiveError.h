#pragma once

#include <QString>

#include <stdexcept>

namespace kilnova {

/// Raised when archived data cannot be read: it ends too early or holds a value no writer produces.
/// The message says what was wrong and at which byte.
class ArchiveError final : public std::runtime_error {
public:
    explicit ArchiveError(const QString& reason)
        : std::runtime_error(reason.toStdString())
    {
    }

    QString reason() const { return QString::fromStdString(what()); }
};

} // namespace kilnova
