#pragma once

#include <QString>

namespace kilnova {

/// The core's messages are written for the window ("try connecting manually", "then combine
/// again"). On the command line the same facts name the option to use instead.
class CliWording final {
public:
    CliWording() = delete;

    /// The command-line wording of a message of the core; any other text as it is.
    static QString reword(const QString& text);
};

} // namespace kilnova
