#pragma once

#include "chemistry/Elements.h"
#include "optimise/ConstraintEntry.h"

#include <QString>
#include <QStringList>

#include <array>

namespace kilnova {

class ArchiveReader;
class ArchiveWriter;

/// Settings of the stockpile optimisation dialog (stockpiles and additives into a crude), kept in the
/// project document. Constraints apply both to the product and to the material left in the
/// stockpiles.
///
/// Stored layout: mode (int), optimised element (string), target (double), requested tonnage
/// (double); 22 product entries, then 22 remainder entries, each minimum (double), maximum (double),
/// text (string), active (int), position (int); stockpileCount (int); the sources (a 4-byte count and
/// strings).
///
/// The second integer of an entry is the constraint's row in its list, from 1 (0 when the entry is
/// not in force), so that the lists come back in the order the user built them. The integer after
/// the entries is the number of selected stockpiles: the source list holds each selected stockpile as
/// two strings, its Name then its Source, followed by the names of the selected additives.
class CSTKOptParameters final {
public:
    struct Entry {
        double minimum = 0.0;
        double maximum = 0.0;
        QString text;
        qint32 active = 0;   ///< 0 off, non-zero in force
        qint32 position = 0; ///< row in the constraint list, from 1; 0 when not in force

        bool operator==(const Entry&) const = default;

        QString describe(QStringView name) const { return ConstraintEntry::format(minimum, name, maximum); }
    };

    qint32 mode = 1; ///< as in COptimizationParameters
    QString optimizedElement = QStringLiteral("Titration");
    double target = 0.0;
    double requestedTonnage = 0.0;
    std::array<Entry, kElementCount> productConstraints{};
    std::array<Entry, kElementCount> remainderConstraints{}; ///< on the material left in the stockpiles
    /// How many stockpiles `sources` holds, as Name/Source pairs before the additives' names.
    qint32 stockpileCount = 0;
    QStringList sources;

    bool operator==(const CSTKOptParameters&) const = default;

    void serialize(ArchiveWriter& out) const;
    /// Reads into this object; on ArchiveError its state is partial and it should be discarded.
    void load(ArchiveReader& in);

    QString describeProductConstraint(int element) const;
    QString describeRemainderConstraint(int element) const;
};

} // namespace kilnova
