#pragma once

#include "import/Workbook.h"
#include "import/ZipArchive.h"

#include <QHash>

#include <memory>
#include <vector>

namespace kilnova {

/// An Excel 2007 and later workbook (.xlsx): a zip of XML parts. Worksheets, defined names and
/// shared strings are read; a sheet's cells are read the first time the sheet is asked for.
class XlsxWorkbook final : public Workbook {
public:
    /// Throws WorkbookError for a damaged, encrypted or foreign file.
    explicit XlsxWorkbook(QByteArray bytes);

    QStringList sheetNames() const override;
    std::optional<SheetArea> definedName(const QString& name) const override;
    const CellStore& cells(int sheet) override;

private:
    struct Sheet {
        QString name;
        QString part;
        bool loaded = false;
        CellStore cells;
    };
    struct Name {
        QString name;
        bool local;
        QString formula;
    };

    QByteArray part(const QString& name) const;
    void readWorkbook(const QString& workbookPart);
    void readSharedStrings(const QString& partName);
    Sheet& loaded(int sheet);

    std::unique_ptr<ZipArchive> mZip;
    std::vector<Sheet> mSheets;
    std::vector<Name> mNames;
    QStringList mSharedStrings;
};

} // namespace kilnova
