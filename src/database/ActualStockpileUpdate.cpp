#include "database/ActualStockpileUpdate.h"

#include "chemistry/ChemistryFunctions.h"
#include "common/MessageTable.h"
#include "common/UserPrompt.h"
#include "database/DatabaseError.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "database/Transaction.h"

namespace kilnova {

namespace {

/// The components a blend mixes, in this order.
constexpr Element kBlended[] = {Element::Titration, Element::SiO2, Element::Al2O3, Element::Fe2O3,
                                Element::CaO,       Element::MgO,  Element::LOI,   Element::SO3,
                                Element::K2O,       Element::Na2O, Element::TiO2,  Element::P2O5,
                                Element::CostFactor};

QString keyText(const RecordKey& key)
{
    return QStringLiteral("%1 (%2)").arg(key.name, key.source);
}

bool sameKey(const RecordKey& a, const RecordKey& b)
{
    return a.name.compare(b.name, Qt::CaseInsensitive) == 0 &&
           a.source.compare(b.source, Qt::CaseInsensitive) == 0;
}

std::optional<QString> quantityRefusal(const Record& r)
{
    if (r.number(QStringLiteral("Quantity")) == kMissing)
        return message(Msg::BlendQuantityMissing, {keyText(r.key())});
    return std::nullopt;
}

} // namespace

std::optional<QString> ActualStockpileUpdate::refusal(const Request& request)
{
    if (request.sources.empty() || request.destination.name.isEmpty())
        return message(Msg::BlendNeedsSources);
    for (const RecordKey& source : request.sources) {
        if (sameKey(source, request.destination))
            return message(Msg::BlendIntoItself, {keyText(request.destination)});
    }
    return std::nullopt;
}

std::optional<QString> ActualStockpileUpdate::read(ProjectDatabase& db, const Request& request,
                                                   Records& records)
{
    RecordTable stockpiles(db, Table::Stockpile);
    std::optional<Record> destination = stockpiles.find(request.destination);
    if (!destination)
        return message(Msg::BlendStockpileGone, {keyText(request.destination)});
    if (std::optional<QString> refused = quantityRefusal(*destination))
        return refused;
    records.destination = std::move(*destination);
    records.sources.clear();
    for (const RecordKey& key : request.sources) {
        std::optional<Record> source = stockpiles.find(key);
        if (!source)
            return message(Msg::BlendStockpileGone, {keyText(key)});
        if (std::optional<QString> refused = quantityRefusal(*source))
            return refused;
        records.sources.push_back(std::move(*source));
    }
    return std::nullopt;
}

Record ActualStockpileUpdate::blended(const Records& records)
{
    auto at = [](const Analysis& a, Element e) {
        return static_cast<double>(a[static_cast<std::size_t>(elementIndex(e))]);
    };

    const Analysis original = records.destination.analysis();
    double total = records.destination.number(QStringLiteral("Quantity"));
    std::array<double, std::size(kBlended)> running{};
    for (std::size_t c = 0; c < std::size(kBlended); ++c) {
        const double v = at(original, kBlended[c]);
        running[c] = v >= 0.0 ? v * total : v;
    }
    for (const Record& source : records.sources) {
        const double q = source.number(QStringLiteral("Quantity"));
        const Analysis a = source.analysis();
        for (std::size_t c = 0; c < std::size(kBlended); ++c) {
            const double v = at(a, kBlended[c]);
            running[c] = running[c] != kMissing && v != kMissing ? v * q + running[c] : kMissing;
        }
        total += q;
    }
    if (total > 0.0) {
        for (double& v : running) {
            if (v != kMissing)
                v /= total;
        }
    }

    Analysis mixed = original; // Cl stays as it was
    for (std::size_t c = 0; c < std::size(kBlended); ++c)
        mixed[static_cast<std::size_t>(elementIndex(kBlended[c]))] = static_cast<float>(running[c]);
    computeDerivedQuantities(mixed, 0.0);

    Record result = records.destination;
    result.setValue(QStringLiteral("Quantity"), total);
    result.setAnalysis(mixed);
    return result;
}

std::optional<QString> ActualStockpileUpdate::apply(ProjectDatabase& db, const Request& request)
{
    if (std::optional<QString> refused = refusal(request))
        return refused;
    if (const std::optional<QString> gone = db.missingFileMessage())
        throw DatabaseError(*gone);
    Transaction transaction(db);
    try {
        request.seen.verify(db);
    } catch (const SourceSnapshot::Changed& changed) {
        return message(changed.gone() ? Msg::BlendSourceGone : Msg::BlendSourceChanged, {changed.row()});
    }
    Records records;
    if (std::optional<QString> refused = read(db, request, records))
        return refused;
    RecordTable stockpiles(db, Table::Stockpile);
    stockpiles.update(blended(records));
    if (request.deleteSources) {
        for (const Record& source : records.sources)
            stockpiles.removeRecord(source);
    }
    transaction.commit();
    return std::nullopt;
}

bool ActualStockpileUpdate::applyAsking(ProjectDatabase& db, UserPrompt& ui, const Request& request)
{
    try {
        if (const std::optional<QString> refused = apply(db, request)) {
            ui.showMessage(*refused, UserPrompt::Icon::Warning);
            return false;
        }
        return true;
    } catch (const DatabaseError& e) {
        ui.showMessage(message(Msg::DatabaseOperationFailed), UserPrompt::Icon::Error, e.message());
        return false;
    }
}

} // namespace kilnova
