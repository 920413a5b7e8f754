#pragma once

#include "database/Record.h"

#include <optional>
#include <vector>

namespace kilnova {

/// The content of the record form of Add and Modify: one text per column of the record, and for a
/// blast one per column of its standard deviations. Texts are checked and turned into records by
/// apply(), which also computes the derived columns (MS ... C4AF, free lime 0) that the form shows
/// read-only. The form knows whether it adds a record or rewrites the one it was opened on.
class RecordForm final {
public:
    enum class Part { Record, Deviations };

    struct Field {
        Part part;
        int column;      ///< index in the record or in the deviations record
        QString label;   ///< the column name
        QString caption; ///< how messages name the field
        ColumnType type;
        bool derived; ///< computed from the oxides, never typed
    };

    struct Problem {
        int field;
        QString message;
    };

    /// A form over a record (a new one holds the table defaults); deviations only for a blast.
    explicit RecordForm(Record record, std::optional<Record> deviations = std::nullopt);

    Table table() const { return mRecord.table(); }
    /// True until the record has been stored: saving adds it rather than rewriting it.
    bool isNew() const { return !mRecord.rowId(); }

    const std::vector<Field>& fields() const { return mFields; }
    int fieldCount() const { return static_cast<int>(mFields.size()); }
    /// The field of a column, or -1.
    int fieldIndex(Part part, const QString& column) const;
    const QString& text(int field) const { return mTexts.at(static_cast<std::size_t>(field)); }
    /// Typing into a derived field is ignored; those follow the oxides.
    void setText(int field, const QString& text);
    void setText(const QString& column, const QString& text);

    /// Recomputes the derived fields from the oxide texts as they stand; an oxide that does not read
    /// as a number counts as missing.
    void refreshDerived();

    /// Reads every field into the record (and deviations) and computes the derived columns. Returns
    /// the first field that is empty, too long or not a number; the records are then unchanged.
    std::optional<Problem> apply();
    /// What the last apply() refused, if it refused.
    const std::optional<Problem>& lastProblem() const { return mLastProblem; }

    /// The record as last applied; before apply(), as opened.
    const Record& record() const { return mRecord; }
    const std::optional<Record>& deviations() const { return mDeviations; }

    /// After a store: the record now lives at these row ids, so a second save rewrites it.
    void markStored(qint64 rowId, std::optional<qint64> deviationsRowId);

    /// How the form shows a stored number: the shortest text that reads back as the same value.
    static QString numberText(ColumnType type, double value);

private:
    std::optional<Problem> check();
    void fillTexts();
    /// The analysis as the texts stand, unreadable numbers as missing.
    Analysis typedAnalysis() const;
    void showDerived(const Analysis& analysis);

    Record mRecord;
    std::optional<Record> mDeviations;
    std::vector<Field> mFields;
    std::vector<QString> mTexts;
    std::optional<Problem> mLastProblem;
};

} // namespace kilnova
