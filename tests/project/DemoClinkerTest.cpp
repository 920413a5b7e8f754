#include "database/ProjectDatabase.h"
#include "optimise/ClinkerOptimization.h"
#include "project/DemoDataError.h"
#include "project/DemoProject.h"
#include "project/ProjectFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace kilnova {
namespace {

const QString kDemoData = QStringLiteral(KILNOVA_TEST_DATA_DIR "/../../examples/demo");

TEST(DemoClinker, TheStoredClinkerOptimisationGivesAClinkerAPlantAccepts)
{
    QTemporaryDir dir;
    DemoProject::build(kDemoData, dir.path());
    const ProjectSettings s = ProjectFile::load(dir.filePath("demo.knv")).settings;
    EXPECT_EQ(s.clinkerProcess, (ClinkerProcessParameters{0.5f, 80, 70, 85, 780, 100, 1.2f}));
    std::unique_ptr<ProjectDatabase> db = ProjectDatabase::open(s.databasePath);
    const ClinkerOptimization o(*db, s.clinkerOptimization, s.clinkerProcess,
                                static_cast<double>(s.clinkerProcess.FreeLime));
    const ClinkerOptimization::Result r = o.optimize();
    ASSERT_TRUE(r.outcome.solved) << r.outcome.message.toStdString();
    EXPECT_FALSE(r.balance.degenerated);
    EXPECT_TRUE(r.balance.coalUsed);
    struct Range {
        Element element;
        double low, high;
    };
    for (const Range& range : {Range{Element::LSF, 0.92, 0.98}, Range{Element::MS, 2.2, 2.8},
                               Range{Element::MA, 1.3, 2.0}, Range{Element::C3S, 50, 70}}) {
        const double v = r.balance.clinker[static_cast<std::size_t>(elementIndex(range.element))];
        EXPECT_GE(v, range.low) << elementName(elementIndex(range.element)).toStdString();
        EXPECT_LE(v, range.high) << elementName(elementIndex(range.element)).toStdString();
    }
    // A kiln burns about an eighth of a tonne of coal and a tonne and a half of meal per tonne of clinker.
    double coal = 0;
    for (std::size_t j = 0; j < r.request.sources.size(); ++j)
        coal += r.request.sources[j].isCoal() ? r.outcome.tonnes(j) : 0.0;
    EXPECT_NEAR(coal / r.balance.clinkerTonnage, 0.12, 0.02);
    EXPECT_NEAR(r.balance.crudeTonnage / r.balance.clinkerTonnage, 1.53, 0.05);
}

TEST(DemoClinker, BadClinkerDataIsNamedAndWritesNothing)
{
    struct Case {
        const char* file;
        const char* text;
        QString says;
    };
    const std::vector<Case> cases = {
        {"clinker-process.csv", "Parameter,Value\nFixedLOI,1\n",
         "clinker-process.csv must give all seven clinker process parameters."},
        {"clinker-process.csv", "Parameter,Value\nK2OInClinker,120\n",
         "clinker-process.csv line 2: a retention lies within 0 and 100."},
        {"clinker-process.csv", "Parameter,Value\nFixedLOI,1\nFixedLOI,2\n",
         "clinker-process.csv line 3: \"FixedLOI\" is not a clinker process parameter, or is given twice."},
        {"clinker-optimisation.csv", "Setting,Value,Minimum,Maximum\nCrude,RM9 (Raw mill 9),,\n",
         "clinker-optimisation.csv line 2: there is no source \"RM9 (Raw mill 9)\"."},
        {"clinker-optimisation.csv", "Setting,Value,Minimum,Maximum\nMode,Maximize Tonnage,,\n",
         "clinker-optimisation.csv line 2: \"Maximize Tonnage\" is not a mode."},
    };
    for (const Case& c : cases) {
        QTemporaryDir data, out;
        for (const QString& name : QDir(kDemoData).entryList({"*.csv"}, QDir::Files))
            ASSERT_TRUE(QFile::copy(QDir(kDemoData).filePath(name), data.filePath(name)));
        QFile bad(data.filePath(c.file));
        ASSERT_TRUE(bad.remove() && bad.open(QIODevice::WriteOnly));
        bad.write(c.text);
        bad.close();
        try {
            DemoProject::build(data.path(), out.path());
            ADD_FAILURE() << c.file << " was taken";
        } catch (const DemoDataError& e) {
            EXPECT_EQ(e.message(), c.says);
        }
        EXPECT_FALSE(QFile::exists(out.filePath("demo.kndb")));
    }
}

} // namespace
} // namespace kilnova
