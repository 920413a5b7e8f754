#pragma once

#include "chemistry/Elements.h"
#include "database/Schema.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <optional>
#include <utility>
#include <vector>

namespace kilnova {

class ProjectDatabase;
struct OptimizationOutcome;
struct OptimizationRequest;

/// One blast as the quarry map shows it.
struct QuarryBlast {
    QString name;
    double east = 0.0;
    double north = 0.0;
    double elevation = 0.0;
    double tonnage = 0.0;
    Analysis values = missingAnalysis();
    /// In the dialog's source list (the coordinate filter lets it through); only these can be chosen.
    bool listed = true;
    bool selected = false;
    /// Tonnes the last run took from it; 0 for none.
    double taken = 0.0;

    /// A blast at 0/0, or with a missing East or North, was never surveyed: it has no place on the map.
    bool placed() const;
};

/// The blasts of the quarry map with the state the dialogs share with it: which are listed, which
/// are selected, what the last run took. Names are matched without regard to case, as the database
/// keeps them unique.
class QuarryMapData final {
public:
    /// East minimum, East maximum, North minimum, North maximum.
    struct Extent {
        double eastMinimum = 0.0;
        double eastMaximum = 0.0;
        double northMinimum = 0.0;
        double northMaximum = 0.0;
        bool operator==(const Extent&) const = default;
    };

    QuarryMapData() = default;
    explicit QuarryMapData(std::vector<QuarryBlast> blasts);

    /// The blasts of Blast, or those of temp-Blast with tonnes left (the ones the combination
    /// analysis offers), in name order. Throws DatabaseError.
    static QuarryMapData load(ProjectDatabase& db, Table table);

    const std::vector<QuarryBlast>& blasts() const { return mBlasts; }
    std::size_t size() const { return mBlasts.size(); }
    const QuarryBlast& operator[](std::size_t i) const { return mBlasts[i]; }
    std::optional<std::size_t> indexOf(const QString& name) const;

    std::size_t unplacedCount() const { return mBlasts.size() - mDrawOrder.size(); }
    /// The East/North extent of the placed blasts; nothing when none is placed.
    std::optional<Extent> extent() const;
    /// The lowest and highest elevation of any blast (placed or not), or nothing without blasts.
    std::optional<std::pair<double, double>> elevationRange() const;
    /// The largest tonnage of a placed blast (0 when none).
    double largestTonnage() const { return mLargestTonnage; }
    /// The smallest and largest value of an element among the placed blasts that have one.
    std::optional<std::pair<double, double>> valueRange(int element) const;
    /// The placed blasts, largest tonnage first, so that small blasts are drawn over big ones.
    const std::vector<std::size_t>& drawOrder() const { return mDrawOrder; }

    /// Only these names are listed; returns the names that are not blasts of the map.
    QStringList setListed(const QStringList& names);
    void setAllListed();
    /// Selects these names (listed or not) and no other; returns the names that are not blasts of the map.
    QStringList setSelection(const QStringList& names);
    void setSelected(std::size_t blast, bool selected) { mBlasts[blast].selected = selected; }
    /// The selected names, in map order.
    QStringList selection() const;
    /// The tonnes taken from these blasts; every other blast took none.
    void setTaken(const QStringList& names, const std::vector<double>& tonnes);
    /// The tonnes a solved run took from each of its sources.
    void setTaken(const OptimizationRequest& request, const OptimizationOutcome& outcome);

private:
    static QString key(const QString& name);

    std::vector<QuarryBlast> mBlasts;
    QHash<QString, std::size_t> mIndex;
    std::vector<std::size_t> mDrawOrder;
    double mLargestTonnage = 0.0;
};

} // namespace kilnova
