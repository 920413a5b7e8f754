#include "common/ArchiveError.h"
#include "common/ArchiveReader.h"
#include "common/ByteBuilder.h"
#include "optimise/CClinkerOptParameters.h"
#include "optimise/CCoalOptParameters.h"
#include "optimise/COptimizationParameters.h"
#include "optimise/CSTKOptParameters.h"

#include <gtest/gtest.h>

using namespace kilnova;
using kilnova::test::ByteBuilder;

namespace {

// Every sample sets each stored value to something distinct from its neighbours and from its default,
// so a swapped or skipped field shows in the bytes.

QByteArray text(int i)
{
    return "c" + QByteArray::number(i);
}

ConstraintEntry entry(int i)
{
    return {i + 0.5, i + 10.25, QString::fromLatin1(text(i)), i % 3};
}

ByteBuilder& entryBytes(ByteBuilder& b, int i)
{
    return b.f64(i + 0.5).f64(i + 10.25).str(text(i)).i32(i % 3);
}

TEST(ParameterBlocks, BlastOptimisationLayout)
{
    COptimizationParameters p;
    p.mode = COptimizationParameters::kTarget;
    p.optimizedElement = QStringLiteral("LSF");
    p.target = 0.95;
    p.requestedTonnage = 1200.0;
    for (int i = 0; i < kElementCount; ++i)
        p.constraints[i] = entry(i);
    p.coordinateFilter = 1;
    p.eastMinimum = 1;
    p.eastMaximum = 2;
    p.northMinimum = 3;
    p.northMaximum = 4;
    p.elevationMinimum = 5;
    p.elevationMaximum = 6;
    p.selectedSources = QStringList{"B1", "B2"};
    p.otherSources = QStringList{"X"};

    ByteBuilder b;
    b.i32(0).str("LSF").f64(0.95).f64(1200.0);
    for (int i = 0; i < kElementCount; ++i)
        entryBytes(b, i);
    b.i32(1).f64(1).f64(2).f64(3).f64(4).f64(5).f64(6).list({"B1", "B2"}).list({"X"});
    test::expectStoredAs(p, b.bytes());
}

TEST(ParameterBlocks, StockpileOptimisationLayout)
{
    CSTKOptParameters p;
    p.mode = -1;
    p.optimizedElement = QStringLiteral("CaO");
    p.target = 44.5;
    p.requestedTonnage = 900.0;
    for (int i = 0; i < kElementCount; ++i) {
        p.productConstraints[i] = {i + 0.5, i + 10.25, QString::fromLatin1(text(i)), 1, i};
        p.remainderConstraints[i] = {-i - 0.5, i + 20.0, QString::fromLatin1(text(100 + i)), 0, 2 * i + 1};
    }
    p.stockpileCount = 7;
    p.sources = QStringList{"S1", "", "S3"};

    ByteBuilder b;
    b.i32(-1).str("CaO").f64(44.5).f64(900.0);
    for (int i = 0; i < kElementCount; ++i)
        b.f64(i + 0.5).f64(i + 10.25).str(text(i)).i32(1).i32(i);
    for (int i = 0; i < kElementCount; ++i)
        b.f64(-i - 0.5).f64(i + 20.0).str(text(100 + i)).i32(0).i32(2 * i + 1);
    b.i32(7).list({"S1", "", "S3"});
    test::expectStoredAs(p, b.bytes());
}

TEST(ParameterBlocks, CoalOptimisationLayout)
{
    CCoalOptParameters p;
    p.mode = 0;
    p.optimizedElement = QStringLiteral("SO3");
    p.target = 1.25;
    p.requestedTonnage = 300.0;
    for (int i = 0; i < CCoalOptParameters::kEntryCount; ++i)
        p.constraints[i] = entry(i);

    ByteBuilder b;
    b.i32(0).str("SO3").f64(1.25).f64(300.0);
    for (int i = 0; i < 25; ++i)
        entryBytes(b, i);
    test::expectStoredAs(p, b.bytes());
}

TEST(ParameterBlocks, ClinkerOptimisationLayout)
{
    CClinkerOptParameters p;
    p.mode = CClinkerOptParameters::kMinimize;
    p.optimizedElement = QStringLiteral("C3S");
    p.target = 60.0;
    p.requestedTonnage = 5000.0;
    for (int i = 0; i < kElementCount; ++i)
        p.constraints[i] = entry(i);
    p.sourceSelection = CClinkerOptParameters::kStockpileAdditivesAndCoal;
    p.tonnageConstraints = {{"Pile 3", "North", 100.0, 2500.0, "first"},
                            {"Actual 1", "Actual", 0.0, 50.0, ""}};
    p.crudeSources = QStringList{"Pile 3", "Actual 1"};
    p.additiveSources = QStringList{"Sand"};
    p.coalSources = QStringList{"Coal A", "Coal B"};

    ByteBuilder b;
    b.i32(-1).str("C3S").f64(60.0).f64(5000.0);
    for (int i = 0; i < kElementCount; ++i)
        entryBytes(b, i);
    b.i32(1).i32(2);
    b.str("Pile 3").str("North").f64(100.0).f64(2500.0).str("first");
    b.str("Actual 1").str("Actual").f64(0.0).f64(50.0).str("");
    b.list({"Pile 3", "Actual 1"}).list({"Sand"}).list({"Coal A", "Coal B"});
    test::expectStoredAs(p, b.bytes());
}

TEST(ParameterBlocks, ClinkerRefusesTonnageCountsTheDataCannotHold)
{
    ArchiveWriter out;
    CClinkerOptParameters().serialize(out);
    const qsizetype countOffset = 4 + 10 + 8 + 8 + 22 * 21 + 4;
    ASSERT_EQ(out.data().size(), countOffset + 4 + 12);

    for (qint32 count : {-1, 1, 1 << 30}) {
        QByteArray bytes = out.data();
        ByteBuilder n;
        n.i32(count);
        bytes.replace(countOffset, 4, n.bytes());
        ArchiveReader in(bytes);
        CClinkerOptParameters p;
        EXPECT_THROW(p.load(in), ArchiveError) << count;
    }
}

TEST(ParameterBlocks, ConstraintDescriptionsRoundLikePrintf)
{
    struct Case {
        QString actual;
        const char* expected;
    };
    COptimizationParameters blast;
    blast.constraints[1] = {1.5, 2.25, {}, 1};
    blast.constraints[19] = {0.125, 1e6, {}, 1};
    CSTKOptParameters stockpile;
    stockpile.remainderConstraints[14] = {-0.004, 0.995, {}, 1, 0}; // 0.995 is stored just below
    CClinkerOptParameters clinker;
    clinker.constraints[21] = {0.0, 0.1, {}, 1};
    CCoalOptParameters coal;
    coal.constraints[24] = {10.0, 12.5, {}, 1};
    const Case cases[] = {
        {blast.describeConstraint(1), "1.50 <= SiO2 <= 2.25"},
        {blast.describeConstraint(19), "0.12 <= Cost Factor <= 1000000.00"}, // 0.125 is a tie: to even
        {stockpile.describeRemainderConstraint(14), "-0.00 <= LSF <= 0.99"},
        {clinker.describeConstraint(21), "0.00 <= Cl <= 0.10"},
        {coal.describeConstraint(24, u"Volatiles"), "10.00 <= Volatiles <= 12.50"},
        {CClinkerOptParameters::TonnageConstraint{"Pile 3", "North", 100, 2500, {}}.describe(),
         "100.00 <= Pile 3 (North) <= 2500.00"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(c.actual, QString::fromLatin1(c.expected));
}

} // namespace
