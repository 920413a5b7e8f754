#pragma once

#include <QString>

#include <stdexcept>

namespace kilnova {

/// A failure of the project database, caught at the command that met it and shown there.
class DatabaseError : public std::runtime_error {
public:
    explicit DatabaseError(const QString& message)
        : std::runtime_error(message.toStdString())
        , mMessage(message)
    {
    }

    /// A sentence for the user.
    const QString& message() const { return mMessage; }

private:
    QString mMessage;
};

} // namespace kilnova
