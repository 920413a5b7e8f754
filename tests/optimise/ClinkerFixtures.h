#pragma once

#include "database/RecordTable.h"
#include "optimise/ClinkerModel.h"

#include <initializer_list>

namespace kilnova::test {

/// A clinker source from its kind, name, Source column, tonnes and the twelve oxides Titration …
/// P2O5 (-1 for a missing one), its Cost Factor and Cl; the derived values are set to 1 so that a
/// constraint on them finds them present.
inline SOURCE clinkerSource(char kind, const char* name, const char* source, std::optional<double> quantity,
                            std::initializer_list<float> oxides, float cost, float chloride, double ash = -1,
                            double btu = -1)
{
    SOURCE s;
    s.kind = kind;
    s.name = QString::fromUtf8(name);
    s.source = QString::fromUtf8(source);
    s.quantity = quantity;
    int k = 0;
    for (float v : oxides)
        s.values[static_cast<std::size_t>(k++)] = v;
    for (Element e : {Element::MS, Element::MA, Element::LSF, Element::C3S, Element::C2S, Element::C3A,
                      Element::NaEq, Element::C4AF})
        s.values[static_cast<std::size_t>(elementIndex(e))] = 1.0f;
    s.values[static_cast<std::size_t>(elementIndex(Element::CostFactor))] = cost;
    s.values[static_cast<std::size_t>(elementIndex(Element::Cl))] = chloride;
    s.ash = ash;
    s.btu = btu;
    return s;
}

/// Two crudes of 2000 t and a coal of 500 t (10 % ash, 12,600 BTU/lb, that is 7,000 KCal/kg), a kiln
/// that keeps no LOI and every SO3, K2O and Na2O, takes up none of the ash and burns 700 KCal/kg:
/// each crude makes 0.65 t of clinker a tonne, and 650 t of clinker need 65 t of coal.
inline ClinkerRequest crudeAndCoal()
{
    ClinkerRequest r;
    //                                                     Titr SiO2 Al2O3 Fe2O3 CaO MgO LOI SO3  K2O  Na2O
    //                                                     TiO2 P2O5
    r.sources = {clinkerSource('R', "Meal A", "Mill 1", 2000,
                               {80, 13, 3, 2, 44, 1, 35, 0.2f, 0.5f, 0.1f, 0.2f, 0.1f}, 4, 0.01f),
                 clinkerSource('R', "Meal B", "Mill 2", 2000,
                               {76, 15.2f, 3.5f, 2.2f, 40, 1.2f, 35, 0.3f, 0.6f, 0.2f, 0.2f, 0.1f}, 3, 0.02f),
                 clinkerSource('C', "Coal A", "", 500, {-1, 50, 25, 8.2f, 5, 1, 2, 1, 1, 0.5f, 1, 0.5f}, 90,
                               0.05f, 10, 12600)};
    r.mode = -1;
    r.element = elementIndex(Element::CaO);
    r.requestedTonnage = 650;
    r.process.EnergyConsumptionFactor = 700;
    return r;
}

/// A stockpile of 5000 t, sand bought as needed and a coal of 800 t (12 % ash, 7,000 KCal/kg), burnt
/// in a kiln that keeps 2 % LOI, half of the SO3 and K2O, all Na2O, half of the ash, at 800 KCal/kg
/// and 1.5 % free lime.
inline ClinkerRequest stockpileAdditiveAndCoal()
{
    ClinkerRequest r;
    r.stockpiles = true;
    r.sources = {clinkerSource('S', "Bed 1", "Quarry", 5000,
                               {78, 14, 3.5f, 2, 43, 1, 35, 0.4f, 0.6f, 0.2f, 0.2f, 0.1f}, 3, 0.01f),
                 clinkerSource('A', "Sand", "", std::nullopt,
                               {2, 90, 3, 1.5f, 1, 0.3f, 1, 0.1f, 0.8f, 0.2f, 0.1f, 0.05f}, 12, 0.005f),
                 clinkerSource('C', "Coal B", "", 800,
                               {-1, 52, 26, 8.2f, 5, 1.2f, 2, 1.5f, 1.2f, 0.5f, 1, 0.4f}, 80, 0.04f, 12,
                               12600)};
    r.mode = 1;
    r.element = elementIndex(Element::LSF);
    r.requestedTonnage = 2700;
    r.process = {2, 50, 50, 100, 800, 50, 1.5f};
    r.freeLime = 1.5;
    return r;
}

/// Writes a source into its table.
inline void addSource(ProjectDatabase& db, const SOURCE& s)
{
    Record r(s.table());
    r.setValue("Name", s.name);
    if (r.definition().hasColumn("Source"))
        r.setValue("Source", s.source);
    if (s.quantity)
        r.setValue("Quantity", *s.quantity);
    r.setAnalysis(s.values);
    if (s.isCoal()) {
        r.setValue("Ash", s.ash);
        r.setValue("BTU", s.btu);
    }
    RecordTable(db, s.table()).add(r);
}

/// The sources of crudeAndCoal() and stockpileAdditiveAndCoal() in a project database, and a second
/// crude named Meal A from the other mill.
inline void addClinkerSources(ProjectDatabase& db)
{
    const ClinkerRequest fixture = crudeAndCoal();
    addSource(db, fixture.sources[0]);
    addSource(db, fixture.sources[1]);
    SOURCE other = fixture.sources[0];
    other.source = "Mill 2";
    addSource(db, other);
    addSource(db, fixture.sources[2]);
    const ClinkerRequest piles = stockpileAdditiveAndCoal();
    addSource(db, piles.sources[0]);
    addSource(db, piles.sources[1]);
}

} // namespace kilnova::test
