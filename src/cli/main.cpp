#include "cli/CliCommands.h"

#include <QCoreApplication>
#include <QTextStream>

#include <cstdio>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("kilnova-cli"));
    QTextStream out(stdout);
    QTextStream err(stderr);
    const int status = kilnova::CliCommands(out, err).run(app.arguments().mid(1));
    out.flush();
    err.flush();
    return status;
}
