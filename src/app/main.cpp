#include "project/CKilnovaDoc.h"
#include "ui/CMainFrame.h"
#include "ui/ScreenshotTaker.h"

#include <QApplication>
#include <QCommandLineParser>

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Kilnova"));
    QApplication::setApplicationName(QStringLiteral("Kilnova"));
    QApplication::setApplicationDisplayName(QStringLiteral("Kilnova"));
    QApplication::setApplicationVersion(QStringLiteral(KILNOVA_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Raw-material planning for the cement plant"));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("project"), QStringLiteral("A project file (.knv) to open."));
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
    parser.process(app);
    if (parser.isSet(screenshot))
        return kilnova::ScreenshotTaker::run(parser.positionalArguments().value(0),
                                             parser.value(screenshotDialog), parser.value(screenshot));

    kilnova::CKilnovaDoc doc;
    kilnova::CMainFrame frame(doc);
    frame.showMaximized();
    const QStringList files = parser.positionalArguments();
    if (!files.isEmpty() && !frame.openProject(files.first()))
        return 1;
    return app.exec();
}
