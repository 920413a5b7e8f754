#pragma once

#include "import/CellArea.h"

#include <QByteArray>
#include <QStringList>

#include <optional>
#include <vector>

namespace kilnova {

/// What the workbook globals of an Excel 95/97 workbook stream tell: the sheets and where their
/// records start, the shared strings the cells point at, the names defined for ranges, and whether
/// the workbook is encrypted.
class XlsGlobals final {
public:
    /// Reads the records from the start of the stream to the end of the globals. Throws WorkbookError
    /// when the stream does not start as a workbook.
    static XlsGlobals read(const QByteArray& workbookStream);

    /// True for Excel 97 and later (BIFF8), whose defined names can be read.
    bool isBiff8() const { return mBiff8; }
    /// A password protects the workbook: its records are encrypted.
    bool isEncrypted() const { return mEncrypted; }
    const QStringList& sheetNames() const { return mSheetNames; }
    /// Where the records of a sheet start in the workbook stream.
    qsizetype sheetOffset(int sheet) const { return mSheetOffsets[static_cast<std::size_t>(sheet)]; }
    /// The shared string of that index; nothing when the table has no such entry.
    std::optional<QString> sharedString(quint32 index) const;

    /// The range a name stands for: a name of the workbook, or else a name of one of its sheets.
    /// Nothing when no such name exists. Throws WorkbookError when the name is not one block of cells.
    std::optional<SheetArea> definedName(const QString& name) const;

private:
    struct Name {
        QString name;
        /// 0 for a name of the workbook, else 1 + the index of the sheet the name belongs to.
        int scope = 0;
        /// Index into the sheet references, or -1 when the formula is not one block of cells.
        int reference = -1;
        CellArea area;
    };

    void readSharedStrings(QByteArrayView stream, QByteArrayView first, qsizetype& offset);

    bool mBiff8 = false;
    bool mEncrypted = false;
    QStringList mSheetNames;
    std::vector<qsizetype> mSheetOffsets;
    QStringList mSharedStrings;
    /// The sheet each reference of a 3-D formula points at.
    std::vector<int> mReferenceSheets;
    std::vector<Name> mNames;
};

} // namespace kilnova
