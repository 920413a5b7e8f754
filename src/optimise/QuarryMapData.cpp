#include "optimise/QuarryMapData.h"

#include "database/RecordTable.h"
#include "optimise/OptimizationModel.h"

#include <algorithm>

namespace kilnova {

bool QuarryBlast::placed() const
{
    if (east == kMissing || north == kMissing)
        return false;
    return east != 0.0 || north != 0.0;
}

QuarryMapData::QuarryMapData(std::vector<QuarryBlast> blasts)
    : mBlasts(std::move(blasts))
{
    mIndex.reserve(static_cast<qsizetype>(mBlasts.size()));
    for (std::size_t i = 0; i < mBlasts.size(); ++i) {
        mIndex.insert(key(mBlasts[i].name), i); // a name twice: the last one answers
        if (mBlasts[i].placed()) {
            mDrawOrder.push_back(i);
            mLargestTonnage = std::max(mLargestTonnage, mBlasts[i].tonnage);
        }
    }
    std::stable_sort(mDrawOrder.begin(), mDrawOrder.end(), [this](std::size_t a, std::size_t b) {
        return mBlasts[a].tonnage > mBlasts[b].tonnage;
    });
}

QuarryMapData QuarryMapData::load(ProjectDatabase& db, Table table)
{
    std::vector<QuarryBlast> blasts;
    for (const Record& r : RecordTable(db, table).all(true)) {
        QuarryBlast b;
        b.name = r.name();
        b.tonnage = r.number(QStringLiteral("Quantity"));
        // The combination analysis offers only the working blasts with tonnes left.
        if (table == Table::TempBlast && !(b.tonnage > 0.0))
            continue;
        b.east = r.number(QStringLiteral("East"));
        b.north = r.number(QStringLiteral("North"));
        b.elevation = r.number(QStringLiteral("Elevation"));
        b.values = r.analysis();
        blasts.push_back(std::move(b));
    }
    return QuarryMapData(std::move(blasts));
}

QString QuarryMapData::key(const QString& name)
{
    // The database compares names folding ASCII letters only; so does the map.
    QString folded = name;
    for (QChar& c : folded) {
        if (c >= u'A' && c <= u'Z')
            c = QChar(c.unicode() + (u'a' - u'A'));
    }
    return folded;
}

std::optional<std::size_t> QuarryMapData::indexOf(const QString& name) const
{
    const auto it = mIndex.constFind(key(name));
    if (it == mIndex.constEnd())
        return std::nullopt;
    return *it;
}

std::optional<QuarryMapData::Extent> QuarryMapData::extent() const
{
    if (mDrawOrder.empty())
        return std::nullopt;
    const QuarryBlast& first = mBlasts[mDrawOrder.front()];
    Extent e{first.east, first.east, first.north, first.north};
    for (std::size_t i : mDrawOrder) {
        e.eastMinimum = std::min(e.eastMinimum, mBlasts[i].east);
        e.eastMaximum = std::max(e.eastMaximum, mBlasts[i].east);
        e.northMinimum = std::min(e.northMinimum, mBlasts[i].north);
        e.northMaximum = std::max(e.northMaximum, mBlasts[i].north);
    }
    return e;
}

std::optional<std::pair<double, double>> QuarryMapData::elevationRange() const
{
    if (mBlasts.empty())
        return std::nullopt;
    const auto [lowest, highest] =
        std::minmax_element(mBlasts.begin(), mBlasts.end(), [](const QuarryBlast& a, const QuarryBlast& b) {
            return a.elevation < b.elevation;
        });
    return std::pair{lowest->elevation, highest->elevation};
}

std::optional<std::pair<double, double>> QuarryMapData::valueRange(int element) const
{
    std::optional<std::pair<double, double>> range;
    for (std::size_t i : mDrawOrder) {
        const double v = static_cast<double>(mBlasts[i].values.at(static_cast<std::size_t>(element)));
        if (v == kMissing)
            continue;
        if (!range)
            range = std::pair{v, v};
        range->first = std::min(range->first, v);
        range->second = std::max(range->second, v);
    }
    return range;
}

QStringList QuarryMapData::setListed(const QStringList& names)
{
    for (QuarryBlast& b : mBlasts)
        b.listed = false;
    QStringList unknown;
    for (const QString& name : names) {
        if (const std::optional<std::size_t> i = indexOf(name))
            mBlasts[*i].listed = true;
        else
            unknown << name;
    }
    return unknown;
}

void QuarryMapData::setAllListed()
{
    for (QuarryBlast& b : mBlasts)
        b.listed = true;
}

QStringList QuarryMapData::setSelection(const QStringList& names)
{
    for (QuarryBlast& b : mBlasts)
        b.selected = false;
    QStringList unknown;
    for (const QString& name : names) {
        if (const std::optional<std::size_t> i = indexOf(name))
            mBlasts[*i].selected = true;
        else
            unknown << name;
    }
    return unknown;
}

QStringList QuarryMapData::selection() const
{
    QStringList names;
    for (const QuarryBlast& b : mBlasts) {
        if (b.selected)
            names << b.name;
    }
    return names;
}

void QuarryMapData::setTaken(const QStringList& names, const std::vector<double>& tonnes)
{
    for (QuarryBlast& b : mBlasts)
        b.taken = 0.0;
    for (qsizetype n = 0; n < names.size() && static_cast<std::size_t>(n) < tonnes.size(); ++n) {
        if (const std::optional<std::size_t> i = indexOf(names[n]))
            mBlasts[*i].taken += tonnes[static_cast<std::size_t>(n)];
    }
}

void QuarryMapData::setTaken(const OptimizationRequest& request, const OptimizationOutcome& outcome)
{
    QStringList names;
    std::vector<double> tonnes;
    for (std::size_t j = 0; j < request.sources.size(); ++j) {
        names << request.sources[j].name;
        tonnes.push_back(outcome.tonnes(j));
    }
    setTaken(names, tonnes);
}

} // namespace kilnova
