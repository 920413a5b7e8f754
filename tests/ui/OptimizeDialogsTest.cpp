#include "UiTests.h"

#include "chemistry/ClinkerProcessParameters.h"
#include "database/ProjectDatabase.h"
#include "support/ScriptedPrompt.h"
#include "ui/COptimizeAdditives.h"
#include "ui/COptimizeBlasts.h"
#include "ui/COptimizeCoal.h"
#include "ui/COptimizeStockpiles.h"
#include "ui/NumberField.h"

#include <QComboBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

namespace kilnova::test {

namespace {

/// One optimisation dialog as the shared tests drive it: how to open it over a project, and what
/// OK stored (mode, optimised element's name, target, requested tonnage).
struct DialogKind {
    const char* name;
    std::function<std::unique_ptr<QDialog>(ProjectDatabase&, UserPrompt&, int& shown)> open;
    std::function<std::tuple<int, QString, double, double>(const QDialog&)> stored;
};

template <class Parameters> std::tuple<int, QString, double, double> objectiveOf(const Parameters& p)
{
    return {p.mode, p.optimizedElement, p.target, p.requestedTonnage};
}

std::vector<DialogKind> dialogKinds()
{
    return {
        {"blasts",
         [](ProjectDatabase& db, UserPrompt& ui, int& shown) {
             return std::make_unique<COptimizeBlasts>(db, COptimizationParameters{}, ui,
                                                      [&shown](const auto&) { ++shown; });
         },
         [](const QDialog& d) {
             return objectiveOf(static_cast<const COptimizeBlasts&>(d).parameters());
         }},
        {"stockpiles",
         [](ProjectDatabase& db, UserPrompt& ui, int& shown) {
             return std::make_unique<COptimizeStockpiles>(
                 db, CSTKOptParameters{}, ui, [&shown](const auto&) { ++shown; },
                 []() -> std::optional<QString> { return std::nullopt; });
         },
         [](const QDialog& d) {
             return objectiveOf(static_cast<const COptimizeStockpiles&>(d).parameters());
         }},
        {"clinker",
         [](ProjectDatabase& db, UserPrompt& ui, int& shown) {
             return std::make_unique<COptimizeAdditives>(db, CClinkerOptParameters{},
                                                         ClinkerProcessParameters{}, 0.0, ui,
                                                         [&shown](const auto&) { ++shown; });
         },
         [](const QDialog& d) {
             return objectiveOf(static_cast<const COptimizeAdditives&>(d).parameters());
         }},
        {"coal",
         [](ProjectDatabase& db, UserPrompt& ui, int& shown) {
             return std::make_unique<COptimizeCoal>(db, CCoalOptParameters{}, ui,
                                                    [&shown](const auto&) { ++shown; });
         },
         [](const QDialog& d) {
             return objectiveOf(static_cast<const COptimizeCoal&>(d).parameters());
         }},
    };
}

QPushButton* button(const QDialog& d, const char* text)
{
    for (QPushButton* b : d.findChildren<QPushButton*>()) {
        if (b->text() == QLatin1String(text))
            return b;
    }
    return nullptr;
}

} // namespace

/// The objective fields and the Optimize / OK row that the four optimisation dialogs share.
class OptimizeDialogsTest : public QObject {
    Q_OBJECT

    QTemporaryDir mDir;
    std::unique_ptr<ProjectDatabase> mDb;

private slots:
    void init() { mDb = ProjectDatabase::create(mDir.filePath("p.kndb")); }
    void cleanup() { mDb.reset(); }

    void theTargetFieldIsOpenInTargetModeOnly()
    {
        for (const DialogKind& kind : dialogKinds()) {
            ScriptedPrompt ui;
            int shown = 0;
            const std::unique_ptr<QDialog> d = kind.open(*mDb, ui, shown);
            auto* mode = d->findChild<QComboBox*>("mode");
            auto* target = d->findChild<NumberField*>("target");
            QVERIFY2(mode && target, kind.name);
            for (int i = 0; i < mode->count(); ++i) {
                mode->setCurrentIndex(i);
                QCOMPARE(target->isEnabled(), mode->itemText(i) == QLatin1String("Target"));
            }
        }
    }

    void aFieldThatIsNotANumberStopsOptimizeAndOk()
    {
        for (const DialogKind& kind : dialogKinds()) {
            for (const char* field : {"target", "requestedTonnage"}) {
                ScriptedPrompt ui;
                int shown = 0;
                const std::unique_ptr<QDialog> d = kind.open(*mDb, ui, shown);
                d->findChild<NumberField*>(field)->setText("12,a");
                button(*d, "Optimize")->click();
                button(*d, "OK")->click();
                QCOMPARE(ui.messageTexts(), QStringList(2, QStringLiteral("Please enter a number.")));
                QCOMPARE(shown, 0);
                QCOMPARE(d->result(), int(QDialog::Rejected));
            }
        }
    }

    void okStoresTheObjectiveAsEdited()
    {
        for (const DialogKind& kind : dialogKinds()) {
            ScriptedPrompt ui;
            int shown = 0;
            const std::unique_ptr<QDialog> d = kind.open(*mDb, ui, shown);
            auto* mode = d->findChild<QComboBox*>("mode");
            auto* element = d->findChild<QComboBox*>("element");
            mode->setCurrentIndex(mode->findText("Target"));
            element->setCurrentIndex(2);
            d->findChild<NumberField*>("target")->setText("3.25");
            d->findChild<NumberField*>("requestedTonnage")->setText("1234.5");
            button(*d, "OK")->click();
            QVERIFY2(ui.messages.empty(), kind.name);
            QCOMPARE(d->result(), int(QDialog::Accepted));
            const auto [storedMode, storedElement, target, tonnage] = kind.stored(*d);
            QCOMPARE(storedMode, 0);
            QCOMPARE(storedElement, element->itemText(2));
            QCOMPARE(target, 3.25);
            QCOMPARE(tonnage, 1234.5);
        }
    }
};

static RegisterUiTest<OptimizeDialogsTest> registerOptimizeDialogsTest("OptimizeDialogsTest");

} // namespace kilnova::test

#include "OptimizeDialogsTest.moc"
