#include "GeneratedQuarry.h"

#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "database/Transaction.h"
#include "optimise/ConstraintEntry.h"
#include "optimise/OptimizationModel.h"

namespace kilnova {

QStringList GeneratedQuarry::fill(ProjectDatabase& db, int blasts)
{
    unsigned seed = 12345;
    auto uniform = [&seed](double low, double high) {
        seed = seed * 1103515245u + 12345u;
        return low + (high - low) * ((seed >> 8) & 0xFFFF) / 65535.0;
    };
    QStringList names;
    Transaction transaction(db);
    RecordTable table(db, Table::Blast);
    for (int i = 0; i < blasts; ++i) {
        const int kind = i % 3; // limestone, marl, clay
        Record b(Table::Blast);
        b.setValue("Name", QStringLiteral("Q%1").arg(i, 5, 10, QLatin1Char('0')));
        b.setValue("Quantity", std::round(uniform(5000, 60000)));
        b.setValue("East", std::round(uniform(0, 2000)));
        b.setValue("North", std::round(uniform(0, 1500)));
        b.setValue("Elevation", std::round(uniform(300, 420)));
        Analysis a = missingAnalysis();
        auto set = [&a](Element e, double v) {
            a[static_cast<std::size_t>(elementIndex(e))] = static_cast<float>(std::round(v * 100) / 100);
        };
        set(Element::SiO2, kind == 0 ? uniform(2, 8) : kind == 1 ? uniform(12, 22) : uniform(45, 60));
        set(Element::Al2O3, kind == 0 ? uniform(0.5, 2) : kind == 1 ? uniform(3, 6) : uniform(12, 18));
        set(Element::Fe2O3, kind == 0 ? uniform(0.2, 1) : kind == 1 ? uniform(1.5, 3) : uniform(5, 8));
        set(Element::CaO, kind == 0 ? uniform(48, 53) : kind == 1 ? uniform(30, 42) : uniform(2, 8));
        set(Element::MgO, uniform(0.5, 2.5));
        set(Element::CostFactor, uniform(1, 3));
        b.setAnalysis(a);
        table.add(b);
        names << b.name();
    }
    transaction.commit();
    return names;
}

COptimizationParameters GeneratedQuarry::parameters(const QStringList& names, double tonnage, int mode)
{
    COptimizationParameters p;
    p.selectedSources = names;
    p.mode = mode;
    p.optimizedElement = "CaO";
    p.target = 42;
    p.requestedTonnage = tonnage;
    auto constrain = [&p](Element e, double low, double high) {
        p.constraints[static_cast<std::size_t>(elementIndex(e))] = {
            low, high, ConstraintEntry::format(low, elementName(elementIndex(e)), high), 1};
    };
    constrain(Element::SiO2, 12, 16);
    constrain(Element::Al2O3, 2.5, 5);
    constrain(Element::Fe2O3, 1, 3);
    constrain(Element::MgO, 0, 2.5);
    return p;
}

BlendProblem GeneratedQuarry::conflicting(int blasts)
{
    unsigned seed = 4242;
    auto uniform = [&seed](double low, double high) {
        seed = seed * 1103515245u + 12345u;
        return low + (high - low) * ((seed >> 8) & 0xFFFF) / 65535.0;
    };
    OptimizationRequest r;
    for (int i = 0; i < blasts; ++i) {
        const int kind = i % 3; // limestone, marl, clay
        Analysis a = missingAnalysis();
        auto set = [&a](Element e, double v) {
            a[static_cast<std::size_t>(elementIndex(e))] = static_cast<float>(v);
        };
        set(Element::SiO2, kind == 0 ? uniform(2, 8) : kind == 1 ? uniform(12, 22) : uniform(45, 60));
        set(Element::Al2O3, kind == 0 ? uniform(0.5, 2) : kind == 1 ? uniform(3, 6) : uniform(12, 18));
        set(Element::Fe2O3, kind == 0 ? uniform(0.2, 1) : kind == 1 ? uniform(1.5, 3) : uniform(5, 8));
        set(Element::CaO, kind == 0 ? uniform(48, 53) : kind == 1 ? uniform(30, 42) : uniform(2, 8));
        set(Element::MgO, uniform(0.5, 2.5));
        set(Element::LSF, 1.0);
        r.sources.push_back({QStringLiteral("Q%1").arg(i), uniform(5000, 60000), a});
    }
    r.mode = 1;
    r.element = elementIndex(Element::CaO);
    r.requestedTonnage = 5000.0 * blasts / 2;
    auto limit = [&r](Element e, double minimum, double maximum) {
        r.constraints[static_cast<std::size_t>(elementIndex(e))] = {minimum, maximum, QString(), 1};
    };
    limit(Element::SiO2, 0, 12);
    limit(Element::LSF, 0, 0.7);
    limit(Element::Al2O3, 0, 10);
    limit(Element::Fe2O3, 0, 5);
    limit(Element::MgO, 0, 3);
    return OptimizationModel::problemOf(r);
}

} // namespace kilnova
