#pragma once

#include "chemistry/Elements.h"
#include "optimise/ConstraintEntry.h"

#include <QString>
#include <QStringList>

#include <array>

namespace kilnova {

class ArchiveReader;
class ArchiveWriter;

/// Settings of the blast optimisation dialog, kept in the project document between runs.
///
/// Stored layout: mode (int), optimised element (string), target (double), requested tonnage
/// (double); for each element 0..21 its ConstraintEntry (minimum, maximum, text, flag); the
/// coordinate-filter flag (int); East, North and Elevation minimum and maximum (6 doubles, in that
/// order); the selected sources and the second source list (each a 4-byte count and strings).
class COptimizationParameters final {
public:
    // Values of mode; 0 and 2 are solved as maximisations.
    static constexpr qint32 kMinimize = -1;
    static constexpr qint32 kMaximize = 1;
    static constexpr qint32 kTarget = 0;
    static constexpr qint32 kMaximizeTonnage = 2;

    qint32 mode = kMaximize;
    QString optimizedElement = QStringLiteral("Titration");
    double target = 0.0;
    double requestedTonnage = 0.0;
    std::array<ConstraintEntry, kElementCount> constraints{};
    qint32 coordinateFilter = 0; ///< 0 off, non-zero on
    double eastMinimum = 0.0;
    double eastMaximum = 0.0;
    double northMinimum = 0.0;
    double northMaximum = 0.0;
    double elevationMinimum = 0.0;
    double elevationMaximum = 0.0;
    QStringList selectedSources;
    /// A second list of source names the document stores; the blast optimisation does not use it.
    QStringList otherSources;

    bool operator==(const COptimizationParameters&) const = default;

    void serialize(ArchiveWriter& out) const;
    /// Reads into this object; on ArchiveError its state is partial and it should be discarded.
    void load(ArchiveReader& in);

    /// The constraint on element 0..21 as the constraint list shows it.
    QString describeConstraint(int element) const;
};

} // namespace kilnova
