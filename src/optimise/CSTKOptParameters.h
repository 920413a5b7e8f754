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
/// text (string), flag1 (int), flag2 (int); option (int); the sources (a 4-byte count and strings).
class CSTKOptParameters final {
public:
    struct Entry {
        double minimum = 0.0;
        double maximum = 0.0;
        QString text;
        /// The two integers stored with each entry; kept for the stockpile optimisation, which
        /// gives them their meaning (by the pattern of the other optimisations the first is the
        /// constraint-active flag).
        qint32 flag1 = 0;
        qint32 flag2 = 0;

        bool operator==(const Entry&) const = default;

        QString describe(QStringView name) const { return ConstraintEntry::format(minimum, name, maximum); }
    };

    qint32 mode = 1; ///< as in COptimizationParameters
    QString optimizedElement = QStringLiteral("Titration");
    double target = 0.0;
    double requestedTonnage = 0.0;
    std::array<Entry, kElementCount> productConstraints{};
    std::array<Entry, kElementCount> remainderConstraints{}; ///< on the material left in the stockpiles
    /// The integer stored after the entries; kept for the stockpile optimisation.
    qint32 option = 0;
    QStringList sources;

    bool operator==(const CSTKOptParameters&) const = default;

    void serialize(ArchiveWriter& out) const;
    /// Reads into this object; on ArchiveError its state is partial and it should be discarded.
    void load(ArchiveReader& in);

    QString describeProductConstraint(int element) const;
    QString describeRemainderConstraint(int element) const;
};

} // namespace kilnova
