#pragma once

#include "chemistry/Elements.h"
#include "database/Record.h"

#include <QString>

#include <optional>

namespace kilnova {

/// One chosen source of the clinker optimisation, as loaded from its table: the kind letter ('R'
/// crude, 'S' stockpile, 'A' additive, 'C' coal), the record's key, the tonnes it holds (additives
/// have none: they are bought as needed), the 22 analysis values and, for coal, the ash share and
/// the heat value.
struct SOURCE {
    static constexpr char kCrude = 'R';
    static constexpr char kStockpile = 'S';
    static constexpr char kAdditive = 'A';
    static constexpr char kCoal = 'C';

    char kind = kCrude;
    QString name;
    QString source; ///< the Source column of crudes and stockpiles; empty for additives and coal
    std::optional<double> quantity;
    Analysis values = missingAnalysis();
    double ash = -1.0; ///< % of the coal
    double btu = -1.0; ///< BTU per pound

    bool isCoal() const { return kind == kCoal; }
    /// "Crude", "Stockpile", "Additive", "Coal", or "unknown".
    static QString kindWord(char kind);
    Table table() const;
    /// The kind letter of a source read from `table`.
    static char kindOf(Table table);
    RecordKey key() const { return {name, source}; }
    /// A record of Crude, Stockpile, Additives or Coal as a source.
    static SOURCE fromRecord(const Record& record);
    /// How the source lists show it: "Name (Source)" for crudes and stockpiles, else the name.
    QString listText() const;
    static QString listText(const QString& name, const QString& source);
};

} // namespace kilnova
