#pragma once

#include <QStringList>
#include <QTextStream>

namespace kilnova {

/// kilnova-cli demo DIR [--force] [--data FOLDER]: builds the demo project DIR/demo.knv with its
/// database DIR/demo.kndb from the demo data built into the program (or from FOLDER), then prints
/// the record counts of the new database.
class DemoCommand final {
public:
    DemoCommand(QTextStream& out, QTextStream& err);
    /// Arguments after "demo"; returns the exit status (2 for a wrong command line).
    int run(const QStringList& args);

private:
    QTextStream& mOut;
    QTextStream& mErr;
};

} // namespace kilnova
