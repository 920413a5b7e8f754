#pragma once

#include <QString>

namespace kilnova {

/// What both programs say about themselves: the version CMake gives the project, the licence, and
/// the versions of Qt and SQLite this process really runs (which may be newer than those it was
/// built with). `--version` and Help > About show the same facts.
class ProgramInfo final {
public:
    static QString version();
    /// The licence as an SPDX identifier ("GPL-3.0-or-later") and in words.
    static QString licence();
    static QString licenceName();
    static QString copyright();
    /// qVersion() of the loaded Qt Core.
    static QString qtVersion();
    /// The SQLite that holds the project databases, or "not available" when Qt's driver is missing.
    static QString sqliteVersion();

    /// The text of `PROGRAM --version`: "PROGRAM VERSION" on the first line (what scripts and
    /// manual-page tools read), then the libraries, the copyright and the licence.
    static QString versionText(const QString& program);
};

} // namespace kilnova
