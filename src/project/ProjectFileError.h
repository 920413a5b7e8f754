#pragma once

#include <QString>

#include <stdexcept>

namespace kilnova {

/// A project file could not be read or written. The message is meant for the user as it stands: it
/// says what went wrong and, for a damaged file, where reading stopped.
class ProjectFileError final : public std::runtime_error {
public:
    explicit ProjectFileError(const QString& message)
        : std::runtime_error(message.toStdString())
    {
    }

    QString message() const { return QString::fromStdString(what()); }
};

} // namespace kilnova
