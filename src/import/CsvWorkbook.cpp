#include "import/CsvWorkbook.h"

#include "common/Cp1252.h"
#include "import/WorkbookError.h"

#include <QStringDecoder>

namespace kilnova {

CsvWorkbook::CsvWorkbook(const QByteArray& bytes, const QString& sheetName)
    : mSheetName(sheetName)
{
    if (bytes.contains('\0'))
        throw WorkbookError(QStringLiteral("it is not a text file."));

    QStringDecoder utf8(QStringDecoder::Utf8);
    QString text = utf8(bytes);
    if (utf8.hasError())
        text = fromCp1252(bytes);
    if (text.startsWith(QChar(0xFEFF)))
        text.remove(0, 1);

    const QString firstLine = text.left(text.indexOf(u'\n'));
    const QChar separator = firstLine.contains(u';') && !firstLine.contains(u',') ? u';' : u',';
    const std::vector<QStringList> rows = parse(text, separator);
    if (rows.size() > static_cast<std::size_t>(CellStore::kMaxRows))
        throw WorkbookError(QStringLiteral("it has more than %1 lines.").arg(CellStore::kMaxRows));
    for (std::size_t r = 0; r < rows.size(); ++r) {
        if (rows[r].size() > CellStore::kMaxColumns)
            throw WorkbookError(QStringLiteral("its line %1 has more than %2 fields.")
                                    .arg(r + 1)
                                    .arg(CellStore::kMaxColumns));
        for (qsizetype c = 0; c < rows[r].size(); ++c)
            mCells.set(static_cast<int>(r), static_cast<int>(c), rows[r][c]);
    }
}

std::vector<QStringList> CsvWorkbook::parse(const QString& text, QChar separator)
{
    std::vector<QStringList> rows;
    QStringList row;
    QString field;
    bool quoted = false;
    bool lineHasContent = false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (quoted) {
            if (c == u'"') {
                if (i + 1 < text.size() && text[i + 1] == u'"') {
                    field += u'"';
                    ++i;
                } else {
                    quoted = false;
                }
            } else {
                field += c;
            }
            continue;
        }
        if (c == u'"') {
            quoted = true;
            lineHasContent = true;
        } else if (c == separator) {
            row << field;
            field.clear();
            lineHasContent = true;
        } else if (c == u'\n' || c == u'\r') {
            if (c == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n')
                ++i;
            row << field;
            rows.push_back(lineHasContent || !field.isEmpty() ? row : QStringList());
            row.clear();
            field.clear();
            lineHasContent = false;
        } else {
            field += c;
            lineHasContent = true;
        }
    }
    if (lineHasContent || !field.isEmpty()) {
        row << field;
        rows.push_back(row);
    }
    return rows;
}

const CellStore& CsvWorkbook::cells(int sheet)
{
    if (sheet != 0)
        throw WorkbookError(QStringLiteral("its sheet %1 cannot be read.").arg(sheet + 1));
    return mCells;
}

} // namespace kilnova
