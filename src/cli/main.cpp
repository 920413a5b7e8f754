#include "cli/CliCommands.h"

#include <QGuiApplication>
#include <QTextStream>

#include <cstdio>
#include <cstring>
#include <memory>

namespace {

/// Whether the command draws a picture (the quarry map, a blend chart): that needs fonts, so a
/// GUI application, though never a screen.
bool drawsPictures(int argc, char* argv[])
{
    if (argc > 1 && std::strcmp(argv[1], "map") == 0)
        return true;
    for (int i = 2; i < argc; ++i) {
        if (std::strcmp(argv[i], "--chart") == 0)
            return true;
    }
    return false;
}

std::unique_ptr<QCoreApplication> application(int& argc, char* argv[])
{
    if (!drawsPictures(argc, argv))
        return std::make_unique<QCoreApplication>(argc, argv);
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // Starting the platform may remark on the session (no runtime folder on a server): that is
    // no business of a command-line job's error output.
    const QtMessageHandler previous =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    auto app = std::make_unique<QGuiApplication>(argc, argv);
    qInstallMessageHandler(previous);
    return app;
}

} // namespace

int main(int argc, char* argv[])
{
    const std::unique_ptr<QCoreApplication> app = application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("kilnova-cli"));
    QTextStream out(stdout);
    QTextStream err(stderr);
    const int status = kilnova::CliCommands(out, err).run(QCoreApplication::arguments().mid(1));
    out.flush();
    err.flush();
    return status;
}
