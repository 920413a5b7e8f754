#pragma once

#include "chemistry/Elements.h"
#include "optimise/ConstraintEntry.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <array>

namespace kilnova {

class ArchiveReader;
class ArchiveWriter;

/// Settings of the clinker optimisation dialog, kept in the project document between runs.
///
/// Stored layout, in the style of the other parameter blocks (int = 4-byte little-endian signed,
/// double = 8-byte IEEE little-endian, string = length prefix and cp1252 bytes, list = 4-byte count
/// and strings):
///
///     int     mode: -1 Minimize, 1 Maximize, 0 Target
///     string  optimised element
///     double  target value
///     double  requested clinker tonnage
///     22 x    chemistry constraint, elements in element order:
///               double minimum, double maximum, string constraint text, int flag
///     int     source selection: 0 "Crude + Coal", 1 "Stockpile + Additives + Coal"
///     int     number of stockpile tonnage constraints (n >= 0)
///     n x     stockpile tonnage constraint:
///               string stockpile name, string stockpile source, double minimum tonnage,
///               double maximum tonnage, string constraint text
///     list    selected crude sources (stockpiles under the second selection)
///     list    selected additives
///     list    selected coal sources
///
/// A default block is 512 bytes.
class CClinkerOptParameters final {
public:
    static constexpr qint32 kMinimize = -1;
    static constexpr qint32 kMaximize = 1;
    static constexpr qint32 kTarget = 0;

    static constexpr qint32 kCrudeAndCoal = 0;
    static constexpr qint32 kStockpileAdditivesAndCoal = 1;

    /// Bounds on the tonnes taken from one chosen stockpile (stockpiles are keyed by name and source).
    struct TonnageConstraint {
        QString stockpile;
        QString source;
        double minimum = 0.0;
        double maximum = 0.0;
        QString text;

        bool operator==(const TonnageConstraint&) const = default;

        /// e.g. "100.00 <= Pile 3 (North) <= 2500.00".
        QString describe() const;
    };

    qint32 mode = kMaximize;
    QString optimizedElement = QStringLiteral("Titration");
    double target = 0.0;
    double requestedTonnage = 0.0; ///< of clinker
    std::array<ConstraintEntry, kElementCount> constraints{};
    qint32 sourceSelection = kCrudeAndCoal;
    QList<TonnageConstraint> tonnageConstraints;
    QStringList crudeSources; ///< crudes, or stockpiles under kStockpileAdditivesAndCoal
    QStringList additiveSources;
    QStringList coalSources;

    bool operator==(const CClinkerOptParameters&) const = default;

    void serialize(ArchiveWriter& out) const;
    /// Reads into this object; on ArchiveError its state is partial and it should be discarded.
    void load(ArchiveReader& in);

    /// The chemistry constraint on element 0..21 as the constraint list shows it.
    QString describeConstraint(int element) const;
};

} // namespace kilnova
