#pragma once

#include "import/ImportSpecification.h"

#include <QString>
#include <QStringList>

namespace kilnova {

/// What the layout dialog edits: a copy of an import specification, the field chosen in it, and the
/// preview of the file. Position, length and decimals are stored into the chosen field at once, on
/// each change; the caller takes specification() when the user presses OK.
class ImportSpecEditor final {
public:
    static constexpr int kMinPosition = 1;
    static constexpr int kMaxPosition = 99999;
    static constexpr int kMaxLength = 99999;
    static constexpr int kMaxDecimals = 99;

    ImportSpecEditor(ImportSpecification spec, QString title, QString preview, bool decimalsEnabled = false);

    const ImportSpecification& specification() const { return mSpec; }
    const QString& title() const { return mTitle; }
    const QString& preview() const { return mPreview; }
    bool decimalsEnabled() const { return mDecimalsEnabled; }

    QStringList fieldNames() const;
    int currentField() const { return mCurrent; }
    /// Ignored outside the fields of the specification.
    void setCurrentField(int index);

    int position() const;
    int length() const;
    int decimals() const;
    /// Each stores the value into the chosen field and returns true; a value outside its range (or
    /// decimals while they are disabled) changes nothing and returns false.
    bool setPosition(int position);
    bool setLength(int length);
    bool setDecimals(int decimals);

    /// Turns a selection in the shown preview into the chosen field's position and length. start and
    /// end are character offsets in text; each is taken as a column of the line that holds it. When
    /// the end column lies after the start column the field becomes (start + 1, end - start) and true
    /// is returned; otherwise nothing changes.
    bool applySelection(const QString& text, int start, int end);

private:
    bool hasField() const { return mCurrent >= 0 && mCurrent < mSpec.fieldCount(); }

    ImportSpecification mSpec;
    QString mTitle;
    QString mPreview;
    bool mDecimalsEnabled;
    int mCurrent = 0;
};

} // namespace kilnova
