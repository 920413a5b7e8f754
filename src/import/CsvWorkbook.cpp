#include "import/CsvWorkbook.h"

#include "common/Cp1252.h"
#include "import/WorkbookError.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

namespace kilnova {

CsvWorkbook::CsvWorkbook(const QString& path)
    : mSheetName(QFileInfo(path).completeBaseName())
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw WorkbookError(file.errorString());
    const QByteArray bytes = file.readAll();
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
    mRows = parse(text, separator);
    for (const QStringList& row : mRows)
        mColumns = std::max(mColumns, static_cast<int>(row.size()));
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

std::optional<CellArea> CsvWorkbook::usedArea(int)
{
    if (mRows.empty() || mColumns == 0)
        return std::nullopt;
    return CellArea{0, 0, static_cast<int>(mRows.size()) - 1, mColumns - 1};
}

QVariant CsvWorkbook::cell(int, int row, int column)
{
    if (row < 0 || row >= static_cast<int>(mRows.size()))
        return {};
    const QStringList& fields = mRows[static_cast<std::size_t>(row)];
    if (column < 0 || column >= fields.size() || fields[column].isEmpty())
        return {};
    return fields[column];
}

} // namespace kilnova
