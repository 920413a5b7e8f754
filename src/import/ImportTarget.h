#pragma once

#include "database/Schema.h"

namespace kilnova {

/// The two tables the importers fill.
enum class ImportTarget { Blast, Stockpile };

inline Table tableOf(ImportTarget target)
{
    return target == ImportTarget::Blast ? Table::Blast : Table::Stockpile;
}

} // namespace kilnova
