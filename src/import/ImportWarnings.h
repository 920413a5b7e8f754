#pragma once

#include "import/FieldExtractor.h"

#include <QString>

#include <vector>

namespace kilnova {

/// The number fields of a text import that were not plain numbers: a blank field or text is stored
/// as 0, a number followed by other characters as that number. Nothing in the stored values shows
/// it afterwards, so the import tells the user how many there were and the first few.
class ImportWarnings final {
public:
    static constexpr std::size_t kShown = 5;

    struct Entry {
        long line = 0;
        QString field;
        /// The characters of the field, blanks around them taken off.
        QString text;
        FieldExtractor::NumberFit fit = FieldExtractor::NumberFit::Whole;
        /// What was stored.
        double value = 0.0;
    };

    void add(Entry entry);

    long count() const { return mBlank + mNoNumber + mLeading; }
    bool empty() const { return count() == 0; }
    long blankCount() const { return mBlank; }
    long noNumberCount() const { return mNoNumber; }
    long leadingCount() const { return mLeading; }
    /// The first kShown entries, in file order.
    const std::vector<Entry>& first() const { return mFirst; }

    /// Lines for the closing message: the count, the first entries, how many more; empty when there
    /// is nothing to tell.
    QString describe() const;

private:
    long mBlank = 0;
    long mNoNumber = 0;
    long mLeading = 0;
    std::vector<Entry> mFirst;
};

} // namespace kilnova
