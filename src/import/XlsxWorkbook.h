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
    explicit XlsxWorkbook(const QString& path);

    QStringList sheetNames() const override;
    std::optional<SheetArea> definedName(const QString& name) const override;
    std::optional<CellArea> usedArea(int sheet) override;
    QVariant cell(int sheet, int row, int column) override;

private:
    struct Sheet {
        QString name;
        QString part;
        bool loaded = false;
        QHash<qint64, QVariant> cells;
        int lastRow = -1;
        int lastColumn = -1;
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
