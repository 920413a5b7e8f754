#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

namespace kilnova {

class ArchiveReader;
class ArchiveWriter;

/// One entry of an optimisation's constraint table: the bounds on one element, the text the
/// constraint list shows for it, and whether it is in force (0 off, non-zero on; kept as stored).
struct ConstraintEntry {
    double minimum = 0.0;
    double maximum = 0.0;
    QString text;
    qint32 active = 0;

    bool operator==(const ConstraintEntry&) const = default;

    bool isActive() const { return active != 0; }

    /// Stored as minimum (double), maximum (double), text (string), flag (int).
    void serialize(ArchiveWriter& out) const;
    void load(ArchiveReader& in);

    /// The entry as the constraint list shows it, e.g. "1.50 <= SiO2 <= 2.25".
    QString describe(QStringView name) const { return format(minimum, name, maximum); }
    /// "%.2lf <= %s <= %.2lf" with printf's rounding.
    static QString format(double minimum, QStringView name, double maximum);
};

/// Display name of element index 0..21 ("Cost Factor" for 19).
QString elementName(int index);
/// The 22 display names in element order.
const QStringList& elementNames();

} // namespace kilnova
