#include "BlastRows.h"

#include "combine/BlastCombiner.h"

#include "CombinationRun.h"
#include "support/ScriptedPrompt.h"
#include "support/TempProject.h"

#include <QDir>
#include <QFile>
#include <QSettings>

// Each folder under data/combine holds a series (blasts.csv: a header of column names, then one blast
// per line; analysis values not given are 0), the dialog settings (parameters.ini) and the report the
// run must print, byte for byte (expected.txt, worked out by hand).

namespace kilnova {
namespace {

using CombinationGoldenTest = test::TempProject;

void loadBlasts(ProjectDatabase& db, const QString& path)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text)) << path.toStdString();
    const QStringList lines = QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts);
    const QStringList columns = lines.first().split(',');
    RecordTable blasts(db, Table::Blast);
    RecordTable deviations(db, Table::StdBlast);
    for (const QString& line : lines.mid(1)) {
        const QStringList fields = line.split(',');
        ASSERT_EQ(fields.size(), columns.size()) << line.toStdString();
        Record r(Table::Blast);
        r.setAnalysis(Analysis{});
        for (qsizetype c = 0; c < columns.size(); ++c)
            r.setValue(columns[c], c == 0 ? QVariant(fields[c]) : QVariant(fields[c].toDouble()));
        blasts.add(r);
        Record d(Table::StdBlast);
        d.setValue("Name", r.name());
        deviations.add(d);
    }
}

CCombinationParameters loadParameters(const QString& path)
{
    QSettings ini(path, QSettings::IniFormat);
    ini.beginGroup("combination");
    CCombinationParameters p;
    p.targetTonnage = ini.value("tonnage").toDouble();
    if (ini.contains("target")) {
        const QString name = ini.value("target").toString();
        p.targets.at(static_cast<std::size_t>(*elementFromName(name.toStdString()))) = {
            ini.value("targetValue").toDouble(), name, 1};
    }
    if (ini.value("quantity").toString() == "off")
        p.quantityRestriction = 0;
    if (ini.contains("quantityMinimum"))
        p.quantityMinimumPercent = ini.value("quantityMinimum").toDouble();
    if (ini.contains("costMinimum")) {
        p.costRestriction = 1;
        p.costMinimumPercent = ini.value("costMinimum").toDouble();
    }
    if (ini.contains("combinedProperty")) {
        p.combinedRestriction = 1;
        p.combinedRestrictionProperty = ini.value("combinedProperty").toString();
        p.combinedLowerBound = ini.value("combinedLower").toFloat();
        p.combinedUpperBound = ini.value("combinedUpper").toFloat();
    }
    if (ini.contains("inventoryProperty")) {
        p.inventoryRestriction = 1;
        p.inventoryRestrictionProperty = ini.value("inventoryProperty").toString();
        p.inventoryLowerBound = ini.value("inventoryLower").toFloat();
        p.inventoryUpperBound = ini.value("inventoryUpper").toFloat();
    }
    p.classificationMode = ini.value("mode").toInt();
    p.combinedGradeProperty = p.inventoryGradeProperty = ini.value("rankingProperty").toString();
    p.combinedGradeTarget = p.inventoryGradeTarget = ini.value("rankingTarget").toFloat();
    p.stdDeviationProperty = ini.value("deviationProperty").toString();
    return p;
}

TEST_F(CombinationGoldenTest, ReportsMatchTheCasesWorkedOutByHand)
{
    const QDir root(QStringLiteral(KILNOVA_TEST_DATA_DIR "/combine"));
    const QStringList cases = root.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    ASSERT_GE(cases.size(), 3);
    for (const QString& name : cases) {
        SCOPED_TRACE(name.toStdString());
        const QDir dir(root.filePath(name));
        RecordTable(*mDb, Table::Blast).removeAll();
        loadBlasts(*mDb, dir.filePath("blasts.csv"));
        QFile expected(dir.filePath("expected.txt"));
        ASSERT_TRUE(expected.open(QIODevice::ReadOnly));

        test::ScriptedPrompt ui;
        BlastCombiner combiner(*mDb, loadParameters(dir.filePath("parameters.ini")), ui);
        ASSERT_TRUE(combiner.open());
        combiner.selectAll();
        const std::optional<test::CombinationRun> outcome =
            test::collect([&combiner](ReportSink& sink) { return combiner.combine(sink); });
        ASSERT_TRUE(outcome) << ui.messageTexts().join('\n').toStdString();
        EXPECT_EQ(outcome->report.toUtf8().toStdString(), expected.readAll().toStdString());
        EXPECT_TRUE(ui.messages.empty());
    }
}

} // namespace
} // namespace kilnova
