#pragma once

#include <QString>

namespace kilnova {

/// The file-type lists of the open-file dialogs are kept in the message table as description and
/// pattern pairs, "Blast data files (*.rsv)|*.rsv|Blast data files (*.txt)|*.txt||"; the dialogs take
/// them as "Blast data files (*.rsv);;Blast data files (*.txt)".
class FileFilter final {
public:
    FileFilter() = delete;

    /// The pairs up to the first empty description, each as its description, which gets its patterns
    /// in parentheses when it does not show them already.
    static QString fromPairs(const QString& pairs);
};

} // namespace kilnova
