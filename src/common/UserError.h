#pragma once

#include <QString>

#include <stdexcept>

namespace kilnova {

/// A failure whose message is a sentence for the user, caught at the command that met it and shown
/// there. Each kind of failure derives its own type so that callers catch only what they handle.
class UserError : public std::runtime_error {
public:
    explicit UserError(const QString& message)
        : std::runtime_error(message.toStdString())
        , mMessage(message)
    {
    }

    const QString& message() const { return mMessage; }

private:
    QString mMessage;
};

} // namespace kilnova
