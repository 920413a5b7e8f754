#pragma once

#include <QStringList>
#include <QTextStream>

namespace kilnova {

/// The command-line front end: parses the arguments after the program name, runs the command over
/// the core and returns the exit status (0 done, 1 the command failed, 2 the command line is wrong).
class CliCommands final {
public:
    CliCommands(QTextStream& out, QTextStream& err);
    int run(const QStringList& arguments);

private:
    int create(const QStringList& args);
    int status(const QStringList& args);
    int projectNew(const QStringList& arguments);
    int projectShow(const QStringList& args);
    int usage(const QString& problem = {});

    QTextStream& mOut;
    QTextStream& mErr;
};

} // namespace kilnova
