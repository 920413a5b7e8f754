#pragma once

#include "optimise/ConstraintEntry.h"

#include <QString>

#include <array>

namespace kilnova {

class ArchiveReader;
class ArchiveWriter;

/// Settings of the coal optimisation dialog, kept in the project document.
///
/// Stored layout: mode (int), optimised element (string), target (double), requested tonnage
/// (double); 25 entries, each minimum (double), maximum (double), text (string), flag (int).
class CCoalOptParameters final {
public:
    /// One entry per coal property (BTU, Ash, … in the order of CoalProperties).
    static constexpr int kEntryCount = 25;

    qint32 mode = 1;                                  ///< as in COptimizationParameters
    QString optimizedElement = QStringLiteral("BTU"); ///< a coal property's name
    double target = 0.0;
    double requestedTonnage = 0.0;
    std::array<ConstraintEntry, kEntryCount> constraints{};

    bool operator==(const CCoalOptParameters&) const = default;

    void serialize(ArchiveWriter& out) const;
    /// Reads into this object; on ArchiveError its state is partial and it should be discarded.
    void load(ArchiveReader& in);

    /// Entry 0..24 as the constraint list shows it, under the caller's name for that quantity.
    QString describeConstraint(int entry, QStringView name) const;
};

} // namespace kilnova
