#include "UiTests.h"

#include "project/CKilnovaDoc.h"
#include "support/ScriptedPrompt.h"
#include "ui/AboutBox.h"
#include "ui/AppIcon.h"
#include "ui/CMainFrame.h"

#include <QAction>
#include <QApplication>
#include <QImage>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QTest>
#include <QTimer>

#include <sqlite3.h>

namespace kilnova::test {

class AboutBoxTest : public QObject {
    Q_OBJECT

private slots:
    // The versions are those of the libraries this process runs, not of the machine that built it.
    void helpAboutShowsVersionLicenceAndTheLibrariesInUse()
    {
        CKilnovaDoc doc;
        CMainFrame frame(doc, std::make_unique<ScriptedPrompt>());
        QAction* about = nullptr;
        for (QAction* menu : frame.menuBar()->actions()) {
            if (menu->text() == "&Help")
                about = menu->menu()->actions().value(0);
        }
        QVERIFY(about);
        QCOMPARE(about->text(), QStringLiteral("&About Kilnova"));

        QString shown;
        QTimer::singleShot(0, [&shown] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!box)
                return;
            shown = box->text();
            box->accept();
        });
        about->trigger();
        QCOMPARE(shown, AboutBox::text());
        const QString text = AboutBox::text();
        for (const QString& part :
             {QStringLiteral("<h3>Kilnova %1</h3>").arg(KILNOVA_EXPECTED_VERSION),
              QStringLiteral("Licence: GNU General Public License, version 3 or later (GPL-3.0-or-later)."),
              QStringLiteral("Qt %1").arg(qVersion()), QStringLiteral("SQLite %1").arg(sqlite3_libversion())})
            QVERIFY2(text.contains(part), qPrintable(part + " is not in: " + text));
    }

    void theIconIsDrawnFromItsPictureAtEverySize_data()
    {
        QTest::addColumn<int>("size");
        for (int size : {16, 48, 256})
            QTest::addRow("%d pixels", size) << size;
    }

    // The picture is a rounded tile: clear in its corners, solid in its middle.
    void theIconIsDrawnFromItsPictureAtEverySize()
    {
        QFETCH(int, size);
        const QImage image = AppIcon::pixmap(size).toImage();
        QCOMPARE(image.size(), QSize(size, size));
        QCOMPARE(qAlpha(image.pixel(0, 0)), 0);
        QCOMPARE(qAlpha(image.pixel(size - 1, size - 1)), 0);
        QCOMPARE(qAlpha(image.pixel(size / 2, size / 2)), 255);
        QVERIFY(AppIcon::icon().availableSizes().contains(QSize(size, size)));
    }
};

static RegisterUiTest<AboutBoxTest> registerAboutBoxTest("AboutBoxTest");

} // namespace kilnova::test

#include "AboutBoxTest.moc"
