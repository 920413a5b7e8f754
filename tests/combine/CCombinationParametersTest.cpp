#include "combine/CCombinationParameters.h"
#include "common/ByteBuilder.h"

#include <gtest/gtest.h>

using namespace kilnova;
using kilnova::test::ByteBuilder;

namespace {

TEST(CCombinationParameters, StoresItsFieldsInOrderEachInItsOwnWidth)
{
    // Neighbouring fields of one type get different values, so a swap shows.
    CCombinationParameters p;
    p.targetTonnage = 12000.0;
    for (int i = 0; i < kElementCount; ++i)
        p.targets[i] = {i * 1.5, QStringLiteral("p%1").arg(i), i % 2};
    p.coordinateFilter = 1;
    p.eastMinimum = 10;
    p.eastMaximum = 20;
    p.northMinimum = 30;
    p.northMaximum = 40;
    p.elevationMinimum = 50;
    p.elevationMaximum = 60;
    p.costRestriction = 1;
    p.costMinimumPercent = 15.5;
    p.quantityRestriction = 0;
    p.quantityMinimumPercent = 25.5;
    p.combinedUpperBound = 3.5f;
    p.combinedLowerBound = 2.5f;
    p.inventoryRestriction = 1;
    p.inventoryUpperBound = 80.5f;
    p.inventoryLowerBound = 70.5f;
    p.inventoryRestrictionProperty = QStringLiteral("CaO");
    p.combinedRestrictionProperty = QStringLiteral("SiO2");
    p.combinedRestriction = 1;
    p.classificationMode = CCombinationParameters::kSmallestStdDeviation;
    p.combinedGradeTarget = 77.25f;
    p.stdDeviationProperty = QStringLiteral("MgO");
    p.combinedGradeProperty = QStringLiteral("Titration");
    p.inventoryGradeTarget = 1.75f;
    p.inventoryGradeProperty = QStringLiteral("Al2O3");

    ByteBuilder b;
    b.f64(12000.0);
    for (int i = 0; i < kElementCount; ++i)
        b.f64(i * 1.5).str("p" + QByteArray::number(i)).i32(i % 2);
    b.i32(1).f64(10).f64(20).f64(30).f64(40).f64(50).f64(60);
    b.i32(1).f64(15.5).i32(0).f64(25.5);
    b.f32(3.5f).f32(2.5f).i32(1).f32(80.5f).f32(70.5f).str("CaO").str("SiO2");
    b.i32(1).i32(2).f32(77.25f).str("MgO").str("Titration").f32(1.75f).str("Al2O3");
    test::expectStoredAs(p, b.bytes());
}

TEST(CCombinationParameters, DescribesATargetByItsProperty)
{
    CCombinationParameters p;
    p.targets[1].value = 12.5;
    p.targets[19].value = 0.005;
    EXPECT_EQ(p.describeTarget(1), QStringLiteral("SiO2 = 12.50"));
    EXPECT_EQ(p.describeTarget(19), QStringLiteral("Cost Factor = 0.01"));
}

} // namespace
