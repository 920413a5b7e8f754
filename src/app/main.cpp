#include "project/CKilnovaDoc.h"
#include "ui/CMainFrame.h"

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
    parser.process(app);

    kilnova::CKilnovaDoc doc;
    kilnova::CMainFrame frame(doc);
    frame.showMaximized();
    const QStringList files = parser.positionalArguments();
    if (!files.isEmpty() && !frame.openProject(files.first()))
        return 1;
    return app.exec();
}
