#include "import/TextImporter.h"

#include "chemistry/ChemistryFunctions.h"
#include "database/DatabaseError.h"
#include "import/AnalysisColumns.h"
#include "import/FieldExtractor.h"
#include "import/ImportWriter.h"
#include "import/LineReader.h"

#include <QIODevice>

namespace kilnova {

TextImporter::TextImporter(ImportTarget target, const ImportSpecification& blastSpec,
                           const ImportSpecification& stockpileSpec)
    : mTarget(target)
    , mTable(tableOf(target))
    , mFirstAnalysisField(target == ImportTarget::Blast ? 5 : 3)
    , mBlank(mTable)
{
    // Column indexes are looked up once: the import runs through many thousands of lines.
    const TableDef& def = mBlank.definition();
    for (Element e : kKeptElements)
        mKept.push_back({e, def.columnIndex(elementColumn(e))});
    for (Element e : kDerivedElements)
        mDerived.push_back({e, def.columnIndex(elementColumn(e))});

    const ImportSpecification& spec = target == ImportTarget::Blast ? blastSpec : stockpileSpec;
    mFieldCount = spec.fieldCount();
    for (int i = 0; i < mFieldCount; ++i)
        mFields[static_cast<std::size_t>(i)] = {spec.position(i), spec.length(i), spec.fieldName(i)};
    mStockpileQuantity = {blastSpec.position(2), blastSpec.length(2), spec.fieldName(2)};
}

Record TextImporter::recordFromLine(const char* line) const
{
    Record record = mBlank;
    auto field = [this](int i) {
        return mFields[static_cast<std::size_t>(i)];
    };
    auto present = [this, &field](int i) {
        return i < mFieldCount && field(i).length > 0;
    };

    // Name, then East, North, Elevation, Quantity of a blast, or Source and Quantity of a stockpile.
    if (present(0))
        record.setValue(0, FieldExtractor::text(line, field(0).position, field(0).length));
    if (mTarget == ImportTarget::Blast) {
        for (int i = 1; i < mFirstAnalysisField; ++i) {
            if (present(i))
                record.setValue(i, FieldExtractor::number(line, field(i).position, field(i).length));
        }
    } else {
        if (present(1))
            record.setValue(1, FieldExtractor::text(line, field(1).position, field(1).length));
        if (present(2)) {
            record.setValue(
                2, FieldExtractor::number(line, mStockpileQuantity.position, mStockpileQuantity.length));
        }
    }

    for (int i = mFirstAnalysisField; i < mFieldCount; ++i) {
        if (!present(i))
            continue;
        if (i >= record.columnCount()) {
            throw DatabaseError(QStringLiteral("Field %1 of the layout has no column in the %2 table.")
                                    .arg(i + 1)
                                    .arg(record.definition().name));
        }
        record.setValue(i,
                        static_cast<float>(FieldExtractor::number(line, field(i).position, field(i).length)));
    }

    // The derived columns come from the values read, never from what the line held in their place.
    Analysis kept = missingAnalysis();
    for (const ElementColumn& k : mKept) {
        if (k.column >= mFirstAnalysisField && present(k.column))
            kept[static_cast<std::size_t>(elementIndex(k.element))] =
                static_cast<float>(record.value(k.column).toDouble());
    }
    computeDerivedQuantities(kept, 0.0);
    for (const ElementColumn& d : mDerived)
        record.setValue(d.column,
                        static_cast<double>(kept[static_cast<std::size_t>(elementIndex(d.element))]));
    return record;
}

ImportResult TextImporter::import(ProjectDatabase& db, QIODevice& device) const
{
    ImportResult result;
    LineReader reader(device);
    ImportWriter writer(db, mTable);
    long lineNumber = 0;
    while (reader.readLine()) {
        ++lineNumber;
        try {
            writer.save(recordFromLine(reader.line()));
        } catch (const DatabaseError& e) {
            result.stoppedAt = QStringLiteral("line %1").arg(lineNumber);
            result.reason = e.message();
            break;
        }
        ++result.count;
    }
    writer.commit(result);
    return result;
}

std::vector<TextImporter::ReadField> TextImporter::fieldsRead() const
{
    std::vector<ReadField> read;
    for (int i = 0; i < mFieldCount; ++i) {
        const Field& f = mFields[static_cast<std::size_t>(i)];
        if (f.length <= 0)
            continue;
        const bool text = i == 0 || (i == 1 && mTarget == ImportTarget::Stockpile);
        const bool quantity = i == 2 && mTarget == ImportTarget::Stockpile;
        const Field& cut = quantity ? mStockpileQuantity : f;
        bool stored = !text;
        for (const ElementColumn& d : mDerived)
            stored = stored && !(i >= mFirstAnalysisField && d.column == i);
        read.push_back({i, f.name, cut.position, cut.length, !text, stored});
    }
    return read;
}

bool TextImporter::looksLikeText(QIODevice& device)
{
    return !device.peek(64 * 1024).contains('\0');
}

} // namespace kilnova
