#include "project/CKilnovaDoc.h"
#include "project/ProgramInfo.h"
#include "ui/AppIcon.h"
#include "ui/CMainFrame.h"
#include "ui/InstanceHandoff.h"
#include "ui/ScreenshotTaker.h"

#include <QApplication>
#include <QCommandLineParser>

#include <cstdio>
#include <cstring>

namespace {

void nameApplication()
{
    QCoreApplication::setOrganizationName(QStringLiteral("Kilnova"));
    QCoreApplication::setApplicationName(QStringLiteral("Kilnova"));
    QCoreApplication::setApplicationVersion(kilnova::ProgramInfo::version());
}

/// --help and --version answer without a display: on a server over ssh, and when the manual page
/// is made from them during the build.
bool asksForTextOnly(int argc, char* argv[])
{
    for (int i = 1; i < argc; ++i) {
        for (const char* option : {"-h", "--help", "--help-all", "-?", "-v", "--version"}) {
            if (std::strcmp(argv[i], option) == 0)
                return true;
        }
    }
    return false;
}

} // namespace

int main(int argc, char* argv[])
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Raw-material planning for the cement plant"));
    parser.addHelpOption();
    const QCommandLineOption version({QStringLiteral("v"), QStringLiteral("version")},
                                     QStringLiteral("Displays version information."));
    parser.addOption(version);
    parser.addPositionalArgument(
        QStringLiteral("project"),
        QStringLiteral("A project file (.knv) to open. If Kilnova is already open, that window opens it."),
        QStringLiteral("[project.knv]"));
    // For the documentation's pictures: save the window (or one table dialog) as PNG and quit.
    QCommandLineOption screenshot(QStringLiteral("screenshot"), QStringLiteral("Save a picture and quit."),
                                  QStringLiteral("file.png"));
    QCommandLineOption screenshotDialog(QStringLiteral("screenshot-dialog"),
                                        QStringLiteral("The dialog to picture, e.g. modify-blast."),
                                        QStringLiteral("name"));
    screenshot.setFlags(QCommandLineOption::HiddenFromHelp);
    screenshotDialog.setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOption(screenshot);
    parser.addOption(screenshotDialog);

    if (asksForTextOnly(argc, argv)) {
        QCoreApplication app(argc, argv);
        nameApplication();
        parser.process(app); // --help prints and ends here
        std::fputs(qPrintable(kilnova::ProgramInfo::versionText(QStringLiteral("kilnova"))), stdout);
        return 0;
    }

    QApplication app(argc, argv);
    nameApplication();
    QApplication::setApplicationDisplayName(QStringLiteral("Kilnova"));
    // The desktop entry's name: lets the desktop match the window to its menu entry and icon.
    QGuiApplication::setDesktopFileName(QStringLiteral("kilnova"));
    QApplication::setWindowIcon(kilnova::AppIcon::icon());
    parser.process(app);
    if (parser.isSet(screenshot))
        return kilnova::ScreenshotTaker::run(parser.positionalArguments().value(0),
                                             parser.value(screenshotDialog), parser.value(screenshot));

    const QStringList files = parser.positionalArguments();
    kilnova::InstanceHandoff handoff;
    switch (handoff.start(files)) {
    case kilnova::InstanceHandoff::Start::HandedOver:
        return 0;
    case kilnova::InstanceHandoff::Start::Alone:
        std::fprintf(stderr, "kilnova: %s; another start will open another window.\n",
                     qPrintable(handoff.error()));
        break;
    case kilnova::InstanceHandoff::Start::Primary:
        break;
    }

    kilnova::CKilnovaDoc doc;
    kilnova::CMainFrame frame(doc);
    QObject::connect(&handoff, &kilnova::InstanceHandoff::filesReceived, &frame,
                     &kilnova::CMainFrame::openRequested);
    frame.showMaximized();
    if (!files.isEmpty() && !frame.openProject(files.first()))
        return 1;
    return app.exec();
}
