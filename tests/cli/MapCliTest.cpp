#include "CliFixture.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "project/ProjectFile.h"

#include <QFile>
#include <QImage>

#include <gtest/gtest.h>

namespace kilnova {
namespace {

/// Pixels of exactly this colour.
int count(const QImage& image, QRgb colour)
{
    int n = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            n += (image.pixel(x, y) & 0xffffff) == (colour & 0xffffff) ? 1 : 0;
    }
    return n;
}

QByteArray contents(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

constexpr QRgb kLowest = 0xffffcc, kHighest = 0x800026, kSelected = 0x1c5dd8;

class MapCliTest : public CliFixture {
protected:
    void SetUp() override
    {
        auto db = ProjectDatabase::create(mDir.filePath("plant.kndb"));
        const struct {
            const char* name;
            double east, north;
            float SiO2, CaO;
        } blasts[] = {
            {"Lime", 512400, 4861600, 10, 50}, {"Marl", 512700, 4861300, 20, 40}, {"Lost", 0, 0, 15, 45}};
        for (const auto& b : blasts) {
            Record r(Table::Blast);
            r.setValue("Name", b.name);
            r.setValue("Quantity", 1000.0);
            r.setValue("East", b.east);
            r.setValue("North", b.north);
            Analysis a = missingAnalysis();
            a[elementIndex(Element::SiO2)] = b.SiO2;
            a[elementIndex(Element::CaO)] = b.CaO;
            r.setAnalysis(a);
            RecordTable(*db, Table::Blast).add(r);
        }
        ProjectSettings s;
        s.databasePath = mDir.filePath("plant.kndb");
        COptimizationParameters& p = s.blastOptimization;
        p.optimizedElement = "CaO";
        p.requestedTonnage = 1000;
        p.constraints[static_cast<std::size_t>(elementIndex(Element::SiO2))] = {12, 15,
                                                                                "12.00 <= SiO2 <= 15.00", 1};
        p.selectedSources = {"Lime", "Marl"};
        ProjectFile::save(s, mDir.filePath("plant.knv"));
    }
};

TEST_F(MapCliTest, DrawsEachBlastInTheColourOfItsLime)
{
    const CliRun r = run({"map", path("plant.knv"), "--out", path("map.png")});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err, "");
    const QImage map(path("map.png"));
    ASSERT_EQ(map.size(), QSize(1200, 860));
    EXPECT_GT(count(map, kHighest), 100) << "Lime, at the top of the scale";
    EXPECT_GT(count(map, kLowest), 100) << "Marl, at its foot";
    const int legendRing = count(map, kSelected); // the key shows what a selection looks like

    ASSERT_EQ(
        run({"map", path("plant.knv"), "--element", "MgO", "--select", "Lime", "--out", path("mgo.png")})
            .status,
        0);
    const QImage hollow(path("mgo.png"));
    EXPECT_EQ(count(hollow, kHighest), 0) << "no blast has MgO: every one is a ring";
    EXPECT_GT(count(hollow, kSelected), legendRing + 40) << "Lime's selection ring";
}

TEST_F(MapCliTest, WritesPdfAndSvgToo)
{
    ASSERT_EQ(run({"map", path("plant.knv"), "--out", path("map.pdf")}).status, 0);
    EXPECT_TRUE(contents(path("map.pdf")).startsWith("%PDF"));
    ASSERT_EQ(run({"map", path("plant.knv"), "--element", "Cost Factor", "--out", path("map.svg")}).status,
              0);
    const QByteArray svg = contents(path("map.svg"));
    EXPECT_TRUE(svg.contains("<svg"));
    EXPECT_TRUE(svg.contains("1 blast without coordinates is not shown"));
}

TEST_F(MapCliTest, BadRequestsSaySoAndWriteNothing)
{
    const struct {
        QStringList args;
        int status;
        const char* message;
    } cases[] = {
        {{"map", path("plant.knv"), "--element", "Lime", "--out", path("x.png")},
         2,
         "no element named \"Lime\""},
        {{"map", path("plant.knv"), "--out", path("x.jpg")}, 2, "not \""},
        {{"map", path("plant.knv")}, 2, "map needs --out"},
        {{"map", path("plant.knv"), "--select", "Lime", "O'Brien", "--out", path("x.png")},
         1,
         "no blast named \"O'Brien\""},
        {{"map", path("plant.knv"), "--out", path("no folder/x.png")},
         1,
         "The picture could not be written to"},
        {{"map", path("missing.knv"), "--out", path("x.png")}, 1, "cannot be opened"},
    };
    for (const auto& c : cases) {
        const CliRun r = run(c.args);
        EXPECT_EQ(r.status, c.status) << c.args.join(' ').toStdString();
        EXPECT_TRUE(r.err.contains(QString::fromUtf8(c.message))) << r.err.toStdString();
    }
    EXPECT_FALSE(QFile::exists(path("x.png")));
}

TEST_F(MapCliTest, OptimizeWritesTheBlendChartBesideItsReport)
{
    const CliRun r = run({"optimize", "blasts", path("plant.knv"), "--chart", path("chart.svg")});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_TRUE(r.out.startsWith("Blast Optimization Results\n")) << "the report is printed as before";
    const QByteArray svg = contents(path("chart.svg"));
    EXPECT_TRUE(svg.contains("SiO2 (%)"));
    EXPECT_TRUE(svg.contains("CaO (%)"));
    EXPECT_TRUE(svg.contains("Blend of 1000.00 t"));
    EXPECT_TRUE(svg.contains("at the minimum")) << "maximising lime holds SiO2 at 12";

    ASSERT_EQ(run({"optimize", "blasts", path("plant.knv"), "--chart", path("chart.png")}).status, 0);
    EXPECT_EQ(QImage(path("chart.png")).width(), 820);

    const CliRun wrong = run({"optimize", "blasts", path("plant.knv"), "--chart", path("chart.bmp")});
    EXPECT_EQ(wrong.status, 2);
    EXPECT_TRUE(wrong.err.contains("the chart is written as .png, .pdf or .svg"));
    const CliRun unwritable =
        run({"optimize", "blasts", path("plant.knv"), "--chart", path("none/chart.pdf")});
    EXPECT_EQ(unwritable.status, 1);
    EXPECT_TRUE(unwritable.err.contains("The picture could not be written to"))
        << unwritable.err.toStdString();
}

} // namespace
} // namespace kilnova
