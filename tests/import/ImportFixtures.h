#pragma once

#include "chemistry/ChemEquationCoefficients.h"
#include "database/RecordTable.h"
#include "support/TempProject.h"

#include <QString>

#include <cmath>
#include <map>

namespace kilnova::test {

/// A file of tests/data/import.
inline QString importFixture(const char* name)
{
    return QStringLiteral(KILNOVA_TEST_DATA_DIR "/import/") + QString::fromLatin1(name);
}

/// A fresh project database with the default chemistry, for tests that import into it.
class ImportProject : public TempProject {
protected:
    void SetUp() override
    {
        TempProject::SetUp();
        chemCoefficients() = ChemEquationCoefficients{};
    }

    std::vector<Record> records(Table table) { return RecordTable(*mDb, table).all(); }
    QStringList names(Table table) { return RecordTable(*mDb, table).names(); }
};

/// Column values a record must hold; Single columns to within a few units of their last digit.
using Expected = std::map<QString, QVariant>;

inline void expectValues(const Record& record, const Expected& expected, const std::string& what)
{
    for (const auto& [column, value] : expected) {
        const ColumnDef& def =
            record.definition().columns.at(static_cast<std::size_t>(record.definition().columnIndex(column)));
        if (def.type == ColumnType::Text)
            EXPECT_EQ(record.text(column), value.toString()) << what << " " << column.toStdString();
        else if (def.type == ColumnType::Single)
            // Hand-worked values carry the decimals of the coefficients, not their float rounding.
            EXPECT_NEAR(record.number(column), value.toDouble(),
                        1e-5 * std::max(1.0, std::abs(value.toDouble())))
                << what << " " << column.toStdString();
        else
            EXPECT_DOUBLE_EQ(record.number(column), value.toDouble()) << what << " " << column.toStdString();
    }
}

} // namespace kilnova::test
