#include "import/CellArea.h"

namespace kilnova {

namespace {

constexpr int kMaxRows = 1048576;
constexpr int kMaxColumns = 16384;

} // namespace

std::optional<std::pair<int, int>> CellArea::parseCell(QStringView reference)
{
    qsizetype i = 0;
    if (i < reference.size() && reference[i] == u'$')
        ++i;
    int column = 0;
    const qsizetype lettersStart = i;
    while (i < reference.size() && reference[i].isLetter() && reference[i].unicode() < 128) {
        column = column * 26 + (reference[i].toUpper().unicode() - u'A' + 1);
        if (column > kMaxColumns)
            return std::nullopt;
        ++i;
    }
    if (i == lettersStart)
        return std::nullopt;
    if (i < reference.size() && reference[i] == u'$')
        ++i;
    const qsizetype digitsStart = i;
    long row = 0;
    while (i < reference.size() && reference[i] >= u'0' && reference[i] <= u'9') {
        row = row * 10 + (reference[i].unicode() - u'0');
        if (row > kMaxRows)
            return std::nullopt;
        ++i;
    }
    if (i == digitsStart || i != reference.size() || row < 1)
        return std::nullopt;
    return std::make_pair(static_cast<int>(row) - 1, column - 1);
}

std::optional<CellArea> CellArea::parse(QStringView reference)
{
    const qsizetype colon = reference.indexOf(u':');
    const auto first = parseCell(colon < 0 ? reference : reference.left(colon));
    const auto last = colon < 0 ? first : parseCell(reference.mid(colon + 1));
    if (!first || !last)
        return std::nullopt;
    return CellArea{std::min(first->first, last->first), std::min(first->second, last->second),
                    std::max(first->first, last->first), std::max(first->second, last->second)};
}

std::optional<SheetArea> SheetArea::parseRange(const QString& text)
{
    const QString trimmed = text.trimmed();
    QString sheet;
    QStringView reference = trimmed;
    if (trimmed.startsWith(u'[')) {
        // "[Sheet1$]A1:F19": the sheet in brackets, its "$" marking it a worksheet.
        const qsizetype close = trimmed.indexOf(u']');
        if (close < 0)
            return std::nullopt;
        sheet = trimmed.mid(1, close - 1);
        if (sheet.endsWith(u'$'))
            sheet.chop(1);
        reference = QStringView(trimmed).mid(close + 1);
    } else if (trimmed.startsWith(u'\'')) {
        // "'My data'!A1:F19", quotes doubled inside the name.
        qsizetype i = 1;
        while (i < trimmed.size()) {
            if (trimmed[i] == u'\'') {
                if (i + 1 < trimmed.size() && trimmed[i + 1] == u'\'') {
                    sheet += u'\'';
                    i += 2;
                    continue;
                }
                break;
            }
            sheet += trimmed[i++];
        }
        if (i + 1 >= trimmed.size() || trimmed[i + 1] != u'!')
            return std::nullopt;
        reference = QStringView(trimmed).mid(i + 2);
    } else {
        // "Sheet1$A1:F19" or "Sheet1!A1:F19"; the reference itself may hold "$" marks, so the sheet
        // ends at the first "$" or "!" that is followed by a whole valid range.
        for (qsizetype i = trimmed.size() - 1; i > 0; --i) {
            const QStringView rest = QStringView(trimmed).mid(i + 1);
            if ((trimmed[i] == u'$' || trimmed[i] == u'!') && rest.contains(u':') && CellArea::parse(rest)) {
                sheet = trimmed.left(i);
                reference = rest;
            }
        }
    }
    if (!reference.contains(u':'))
        return std::nullopt;
    const std::optional<CellArea> area = CellArea::parse(reference);
    if (!area)
        return std::nullopt;
    return SheetArea{sheet, *area};
}

} // namespace kilnova
