#include "UiTests.h"

#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "support/ScriptedPrompt.h"
#include "ui/CCombineBlasts.h"
#include "ui/COptimizeBlasts.h"
#include "ui/NumberField.h"
#include "ui/QuarryMapPane.h"
#include "ui/QuarryMapView.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QWheelEvent>

namespace kilnova::test {

/// The quarry map in the two blast dialogs, driven with the mouse as a planner would.
class QuarryMapTest : public QObject {
    Q_OBJECT

    QTemporaryDir mDir;
    std::unique_ptr<ProjectDatabase> mDb;

    void addBlast(const char* name, double east, double north, double elevation, float CaO)
    {
        Record b(Table::Blast);
        b.setValue("Name", name);
        b.setValue("Quantity", 1000.0);
        b.setValue("East", east);
        b.setValue("North", north);
        b.setValue("Elevation", elevation);
        Analysis a = missingAnalysis();
        a[elementIndex(Element::SiO2)] = 12;
        a[elementIndex(Element::CaO)] = CaO;
        a[elementIndex(Element::Al2O3)] = 3;
        a[elementIndex(Element::Fe2O3)] = 2;
        b.setAnalysis(a);
        RecordTable(*mDb, Table::Blast).add(b);
        Record d(Table::StdBlast);
        d.setValue("Name", name);
        RecordTable(*mDb, Table::StdBlast).add(d);
    }

    static QStringList selected(const QListWidget* list, int role = Qt::DisplayRole)
    {
        QStringList names;
        for (int i = 0; i < list->count(); ++i) {
            if (list->item(i)->isSelected())
                names << list->item(i)->data(role).toString();
        }
        return names;
    }

    static QPoint at(const QuarryMapView* view, double east, double north)
    {
        return view->renderer().transform().toPixel(east, north).toPoint();
    }

    static void drag(QuarryMapView* view, QPoint from, QPoint to, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::mousePress(view, Qt::LeftButton, modifiers, from);
        QTest::mouseMove(view, (from + to) / 2);
        QTest::mouseMove(view, to);
        QTest::mouseRelease(view, Qt::LeftButton, modifiers, to);
    }

    static double field(const QDialog& d, const char* name)
    {
        return d.findChild<NumberField*>(name)->value().value_or(-12345);
    }

private slots:
    void init()
    {
        QVERIFY(mDir.isValid());
        mDb = ProjectDatabase::create(mDir.filePath("p.kndb"));
        addBlast("Pit A", 100, 100, 400, 50);
        addBlast("Pit B", 300, 100, 410, 40);
        addBlast("Pit C", 200, 300, 420, 45);
        addBlast("Far", 900, 900, 430, 44);
    }
    void cleanup() { mDb.reset(); }

    void clicksAndRubberBandsSelectInTheListAndBack()
    {
        ScriptedPrompt ui;
        COptimizeBlasts d(*mDb, COptimizationParameters{}, ui, {});
        d.show();
        QuarryMapView* view = d.map()->view();
        auto* list = d.findChild<QListWidget*>("sources");
        QCOMPARE(view->data().size(), std::size_t{4});

        QTest::mouseClick(view, Qt::LeftButton, {}, at(view, 300, 100));
        QCOMPARE(selected(list), QStringList{"Pit B"});
        QCOMPARE(d.optimization().selection(), QStringList{"Pit B"});
        QVERIFY(d.findChild<QLineEdit*>("runningTotal")->text().startsWith("Quantity 1000.00;"));

        QTest::mouseClick(view, Qt::LeftButton, Qt::ControlModifier, at(view, 100, 100));
        QCOMPARE(selected(list), QStringList({"Pit A", "Pit B"}));
        QTest::mouseClick(view, Qt::LeftButton, Qt::ControlModifier, at(view, 300, 100));
        QCOMPARE(selected(list), QStringList{"Pit A"});

        // The list leads, the map follows.
        for (int i = 0; i < list->count(); ++i)
            list->item(i)->setSelected(list->item(i)->text() == "Pit C" || list->item(i)->text() == "Far");
        QCOMPARE(view->data().selection(), QStringList({"Far", "Pit C"}));

        // A band from north-west of Pit A to between Pit C and Far takes A, B and C.
        drag(view, at(view, 50, 350), at(view, 400, 50));
        QCOMPARE(selected(list), QStringList({"Pit A", "Pit B", "Pit C"}));
        QCOMPARE(d.optimization().selection(), QStringList({"Pit A", "Pit B", "Pit C"}));

        // A click beside every blast clears the selection.
        QTest::mouseClick(view, Qt::LeftButton, {}, at(view, 600, 600));
        QCOMPARE(selected(list), QStringList());
        QCOMPARE(d.findChild<QLineEdit*>("runningTotal")->text(), QString());

        QCOMPARE(view->tooltipAt(at(view, 300, 100)), QStringLiteral("Pit B\n1000.00 t\nCaO 40.00 %"));
        d.map()->elementChoice()->setCurrentIndex(elementIndex(Element::MgO));
        QCOMPARE(view->tooltipAt(at(view, 300, 100)), QStringLiteral("Pit B\n1000.00 t\nMgO missing"));
        QCOMPARE(view->tooltipAt(at(view, 600, 600)), QString());
    }

    void zoomAndPanKeepTheQuarryUnderTheMouse()
    {
        ScriptedPrompt ui;
        COptimizeBlasts d(*mDb, COptimizationParameters{}, ui, {});
        d.show();
        QuarryMapView* view = d.map()->view();
        const double fitted = view->renderer().transform().scale();

        const QPoint pitB = at(view, 300, 100);
        QWheelEvent wheel(QPointF(pitB), view->mapToGlobal(QPointF(pitB)), QPoint(), QPoint(0, 240),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(view, &wheel);
        QVERIFY(std::abs(view->renderer().transform().scale() - fitted * 1.44) < 1e-9 * fitted);
        QVERIFY((at(view, 300, 100) - pitB).manhattanLength() <= 1);

        QTest::mousePress(view, Qt::RightButton, {}, QPoint(200, 200));
        QTest::mouseMove(view, QPoint(220, 190));
        QTest::mouseMove(view, QPoint(240, 175));
        QTest::mouseRelease(view, Qt::RightButton, {}, QPoint(240, 175));
        QVERIFY((at(view, 300, 100) - (pitB + QPoint(40, -25))).manhattanLength() <= 1);

        QTest::mouseClick(view, Qt::LeftButton, {}, at(view, 300, 100));
        QCOMPARE(view->data().selection(), QStringList{"Pit B"});

        d.map()->findChild<QPushButton*>("fit")->click();
        QCOMPARE(view->renderer().transform().scale(), fitted);
    }

    void draggingTheFilterSetsItsFields()
    {
        ScriptedPrompt ui;
        COptimizeBlasts d(*mDb, COptimizationParameters{}, ui, {});
        d.show();
        QuarryMapView* view = d.map()->view();
        const double metre = 1.0 / view->renderer().transform().scale();

        // Shift+drag draws a filter around Pit B alone; elevation, never set, takes every bench.
        drag(view, at(view, 250, 250), at(view, 350, 50), Qt::ShiftModifier);
        QVERIFY(std::abs(field(d, "eastMinimum") - 250) <= metre);
        QVERIFY(std::abs(field(d, "eastMaximum") - 350) <= metre);
        QVERIFY(std::abs(field(d, "northMinimum") - 50) <= metre);
        QVERIFY(std::abs(field(d, "northMaximum") - 250) <= metre);
        QCOMPARE(field(d, "elevationMinimum"), 400.0);
        QCOMPARE(field(d, "elevationMaximum"), 430.0);
        QVERIFY(d.findChild<QCheckBox*>("filter")->isChecked());
        auto* list = d.findChild<QListWidget*>("sources");
        QCOMPARE(list->count(), 1);
        QCOMPARE(list->item(0)->text(), QStringLiteral("Pit B"));
        QCOMPARE(d.findChild<QLabel*>("sourceCaption")->text(), QStringLiteral("Blasts (filtered)"));
        QVERIFY(!view->data()[*view->data().indexOf("Pit A")].listed);

        // A blast the list does not offer cannot be chosen on the map.
        QTest::mouseClick(view, Qt::LeftButton, {}, at(view, 100, 100));
        QCOMPARE(view->data().selection(), QStringList());

        // The east edge, dragged out to Far, moves only the East maximum; the elevation stays.
        d.findChild<NumberField*>("elevationMaximum")->setText("425");
        const QRectF filter = *view->renderer().filterRect();
        drag(view, QPointF(filter.right(), filter.center().y()).toPoint(),
             QPoint(at(view, 950, 0).x(), static_cast<int>(filter.center().y())));
        QVERIFY(std::abs(field(d, "eastMaximum") - 950) <= metre);
        QVERIFY(std::abs(field(d, "eastMinimum") - 250) <= metre);
        QVERIFY(std::abs(field(d, "northMaximum") - 250) <= metre);
        QCOMPARE(field(d, "elevationMaximum"), 425.0);

        // The tab moves the whole rectangle.
        const double before = field(d, "eastMinimum"), width = field(d, "eastMaximum") - before;
        const QPoint tab = view->renderer().filterTab()->center().toPoint();
        drag(view, tab, tab + QPoint(static_cast<int>(std::round(100 / metre)), 0));
        QVERIFY(std::abs(field(d, "eastMinimum") - (before + 100)) <= 2 * metre);
        QVERIFY(std::abs(field(d, "eastMaximum") - field(d, "eastMinimum") - width) <= 2 * metre);

        // Typed bounds show on the map.
        auto* north = d.findChild<NumberField*>("northMaximum");
        north->setText("800");
        emit north->editingFinished();
        QVERIFY(std::abs(view->renderer().filterRect()->top() -
                         view->renderer().transform().toPixel(0, 800).y()) < 1e-6);
    }

    void optimizeLabelsTheBlastsTakenAndThePictureSaves()
    {
        ScriptedPrompt ui;
        COptimizationParameters p;
        p.optimizedElement = "CaO";
        p.requestedTonnage = 1500;
        p.selectedSources = {"Pit A", "Pit B"};
        bool shown = false;
        COptimizeBlasts d(*mDb, p, ui, [&shown](const BlastOptimization::Result&) { shown = true; });
        d.show();
        d.optimize();
        QVERIFY2(shown, qPrintable(ui.messageTexts().join("; ")));
        // The most lime: all of Pit A (CaO 50) and 500 t of Pit B.
        const QuarryMapData& data = d.map()->view()->data();
        QCOMPARE(data[*data.indexOf("Pit A")].taken, 1000.0);
        QCOMPARE(data[*data.indexOf("Pit B")].taken, 500.0);
        QCOMPARE(data[*data.indexOf("Pit C")].taken, 0.0);
        d.reloadMap(); // the labels outlive reading the blasts again
        QCOMPARE(d.map()->view()->data()[*data.indexOf("Pit A")].taken, 1000.0);

        ui.fileAnswers = {mDir.filePath("map.png"), mDir.filePath("missing folder/map.pdf")};
        QVERIFY(d.map()->savePicture());
        const QImage picture(mDir.filePath("map.png"));
        QVERIFY(picture.width() >= 1000);
        QVERIFY(!d.map()->savePicture());
        QVERIFY(ui.messageTexts().last().startsWith("The picture could not be written to"));
    }

    void theCombinationDialogsMapFollowsItsList()
    {
        ScriptedPrompt ui;
        CCombineBlasts d(*mDb, CCombinationParameters{}, ui);
        QVERIFY(d.ready());
        d.show();
        QuarryMapView* view = d.map()->view();
        QCOMPARE(view->data().size(), std::size_t{4});
        auto* list = d.findChild<QListWidget*>("sources");

        QTest::mouseClick(view, Qt::LeftButton, {}, at(view, 200, 300));
        QCOMPARE(selected(list, Qt::UserRole), QStringList{"Pit C"});
        QCOMPARE(d.combiner().selectedNames(), QStringList{"Pit C"});

        list->item(0)->setSelected(true);
        QCOMPARE(view->data().selection().size(), qsizetype{2});
        QVERIFY(view->data().selection().contains(list->item(0)->data(Qt::UserRole).toString()));

        drag(view, at(view, 50, 50), at(view, 250, 350), Qt::ShiftModifier);
        QVERIFY(d.findChild<QCheckBox*>("coordinateFilter")->isChecked());
        QCOMPARE(list->count(), 2); // Pit A and Pit C lie inside
    }
};

static const RegisterUiTest<QuarryMapTest> registered("QuarryMapTest");

} // namespace kilnova::test

#include "QuarryMapTest.moc"
