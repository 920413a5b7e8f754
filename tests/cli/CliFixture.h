#pragma once

#include <QDir>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace kilnova {

struct CliRun {
    int status;
    QString out;
    QString err;
};

/// Runs the real kilnova-cli in `workingDir`. Its per-user data folder (where debug.txt goes) is
/// moved inside `workingDir`, so no test writes to the home of whoever runs it.
inline CliRun runCli(const QString& workingDir, const QStringList& args)
{
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("HOME"), workingDir);
    env.insert(QStringLiteral("XDG_DATA_HOME"), QDir(workingDir).filePath(QStringLiteral("data")));
    p.setProcessEnvironment(env);
    p.setWorkingDirectory(workingDir);
    p.start(QStringLiteral(KILNOVA_CLI), args);
    EXPECT_TRUE(p.waitForFinished(60000));
    return {p.exitCode(), QString::fromUtf8(p.readAllStandardOutput()),
            QString::fromUtf8(p.readAllStandardError())};
}

/// A test with its own scratch folder, running kilnova-cli there.
class CliFixture : public testing::Test {
protected:
    CliRun run(const QStringList& args) { return runCli(mDir.path(), args); }
    QString path(const QString& name) const { return QDir::cleanPath(mDir.filePath(name)); }

    QTemporaryDir mDir;
};

} // namespace kilnova
