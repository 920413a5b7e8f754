#pragma once

#include "chemistry/Elements.h"

#include <QString>

#include <array>

namespace kilnova {

class ArchiveReader;
class ArchiveWriter;

/// Settings of the "Combine Blasts" dialog, kept in the project document. Members are in stored
/// order; each is written in its own width (double 8, float 4, int 4 bytes, little-endian) and
/// strings in the archive's string form. The 22 targets are always present, with no count.
/// Flags are 0 off, non-zero on, and kept as stored.
class CCombinationParameters final {
public:
    // Values of classificationMode.
    static constexpr qint32 kCombinedGradeClosest = 0;
    static constexpr qint32 kInventoryGradeClosest = 1;
    static constexpr qint32 kSmallestStdDeviation = 2;

    /// Target on one property; stored as value (double), property name (string), flag (int).
    struct Target {
        double value = 0.0;
        QString property;
        qint32 active = 0;

        bool operator==(const Target&) const = default;
    };

    double targetTonnage = 0.0;
    std::array<Target, kElementCount> targets{}; ///< in property order
    qint32 coordinateFilter = 0;
    double eastMinimum = 0.0;
    double eastMaximum = 0.0;
    double northMinimum = 0.0;
    double northMaximum = 0.0;
    double elevationMinimum = 0.0;
    double elevationMaximum = 0.0;
    qint32 costRestriction = 0; ///< "Blast Cost Proportion >="
    double costMinimumPercent = 0.0;
    qint32 quantityRestriction = 1; ///< "Blast quantity   >=", on in a new document
    double quantityMinimumPercent = 0.0;
    float combinedUpperBound = 0.0f;
    float combinedLowerBound = 0.0f;
    qint32 inventoryRestriction = 0; ///< "Inventory grade"
    float inventoryUpperBound = 0.0f;
    float inventoryLowerBound = 0.0f;
    QString inventoryRestrictionProperty;
    QString combinedRestrictionProperty;
    qint32 combinedRestriction = 0; ///< "Combined grade "
    qint32 classificationMode = kCombinedGradeClosest;
    float combinedGradeTarget = 0.0f; ///< classification 0: "Combined blasts grade closest to"
    QString stdDeviationProperty;     ///< classification 2: "Smallest Combined Std. Deviation of grade"
    QString combinedGradeProperty;
    float inventoryGradeTarget = 0.0f; ///< classification 1: "Inventory grade closest to"
    QString inventoryGradeProperty;

    bool operator==(const CCombinationParameters&) const = default;

    void serialize(ArchiveWriter& out) const;
    /// Reads into this object; on ArchiveError its state is partial and it should be discarded.
    void load(ArchiveReader& in);

    /// The target on property 0..21 as the target list shows it, e.g. "SiO2 = 12.50".
    QString describeTarget(int property) const;
};

} // namespace kilnova
