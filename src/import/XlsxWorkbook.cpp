#include "import/XlsxWorkbook.h"

#include "import/WorkbookError.h"

#include <QXmlStreamReader>

namespace kilnova {

namespace {

[[noreturn]] void damaged(const QString& part)
{
    throw WorkbookError(QStringLiteral("it is damaged (its part %1 cannot be read).").arg(part));
}

/// "xl/worksheets/sheet1.xml" from the folder of the part that points at it and its target.
QString resolve(const QString& fromFolder, const QString& target)
{
    if (target.startsWith(u'/'))
        return target.mid(1);
    QStringList parts = fromFolder.isEmpty() ? QStringList() : fromFolder.split(u'/');
    for (const QString& piece : target.split(u'/')) {
        if (piece == QLatin1String(".."))
            parts.removeLast();
        else if (piece != QLatin1String(".") && !piece.isEmpty())
            parts << piece;
    }
    return parts.join(u'/');
}

QString folderOf(const QString& part)
{
    const qsizetype slash = part.lastIndexOf(u'/');
    return slash < 0 ? QString() : part.left(slash);
}

/// Id -> (type, target) of a relationships part.
QHash<QString, std::pair<QString, QString>> relationships(const QByteArray& xml)
{
    QHash<QString, std::pair<QString, QString>> result;
    QXmlStreamReader reader(xml);
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isStartElement() && reader.name() == QLatin1String("Relationship")) {
            const QXmlStreamAttributes a = reader.attributes();
            result.insert(
                a.value(QLatin1String("Id")).toString(),
                {a.value(QLatin1String("Type")).toString(), a.value(QLatin1String("Target")).toString()});
        }
    }
    return result;
}

/// The text of an element and everything inside it, phonetic runs left out.
QString textOf(QXmlStreamReader& reader)
{
    QString text;
    int depth = 1;
    bool phonetic = false;
    while (depth > 0 && !reader.atEnd()) {
        reader.readNext();
        if (reader.isStartElement()) {
            ++depth;
            if (reader.name() == QLatin1String("rPh"))
                phonetic = true;
        } else if (reader.isEndElement()) {
            --depth;
            if (reader.name() == QLatin1String("rPh"))
                phonetic = false;
        } else if (reader.isCharacters() && !phonetic) {
            text += reader.text();
        }
    }
    return text;
}

} // namespace

XlsxWorkbook::XlsxWorkbook(QByteArray bytes)
{
    if (!ZipArchive::hasSignature(bytes))
        throw WorkbookError(QStringLiteral("it is damaged or not an Excel workbook."));
    mZip = std::make_unique<ZipArchive>(std::move(bytes));

    QString workbookPart = QStringLiteral("xl/workbook.xml");
    if (mZip->read(QStringLiteral("_rels/.rels"))) {
        for (const auto& [type, target] : relationships(part(QStringLiteral("_rels/.rels")))) {
            if (type.endsWith(QLatin1String("/officeDocument")))
                workbookPart = resolve(QString(), target);
        }
    }
    readWorkbook(workbookPart);
}

QByteArray XlsxWorkbook::part(const QString& name) const
{
    std::optional<QByteArray> content = mZip->read(name);
    if (!content)
        throw WorkbookError(
            QStringLiteral("it is damaged or not an Excel workbook (it has no part %1).").arg(name));
    return *content;
}

void XlsxWorkbook::readWorkbook(const QString& workbookPart)
{
    const QString folder = folderOf(workbookPart);
    const QString relsPart = resolve(folder, QStringLiteral("_rels/") + workbookPart.mid(folder.size() + 1) +
                                                 QStringLiteral(".rels"));
    const auto rels = relationships(part(relsPart));

    QXmlStreamReader reader(part(workbookPart));
    while (!reader.atEnd()) {
        reader.readNext();
        if (!reader.isStartElement())
            continue;
        const QXmlStreamAttributes a = reader.attributes();
        if (reader.name() == QLatin1String("sheet")) {
            QString id;
            for (const QXmlStreamAttribute& attribute : a) {
                if (attribute.name() == QLatin1String("id"))
                    id = attribute.value().toString();
            }
            Sheet sheet;
            sheet.name = a.value(QLatin1String("name")).toString();
            sheet.part = resolve(folder, rels.value(id).second);
            mSheets.push_back(std::move(sheet));
        } else if (reader.name() == QLatin1String("definedName")) {
            Name name;
            name.name = a.value(QLatin1String("name")).toString();
            name.local = a.hasAttribute(QLatin1String("localSheetId"));
            name.formula = reader.readElementText();
            mNames.push_back(name);
        }
    }
    if (reader.hasError())
        damaged(workbookPart);

    QString sharedStrings;
    for (const auto& [type, target] : rels) {
        if (type.endsWith(QLatin1String("/sharedStrings")))
            sharedStrings = resolve(folder, target);
    }
    if (!sharedStrings.isEmpty())
        readSharedStrings(sharedStrings);
}

void XlsxWorkbook::readSharedStrings(const QString& partName)
{
    QXmlStreamReader reader(part(partName));
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isStartElement() && reader.name() == QLatin1String("si"))
            mSharedStrings << textOf(reader);
    }
    if (reader.hasError())
        damaged(partName);
}

QStringList XlsxWorkbook::sheetNames() const
{
    QStringList names;
    for (const Sheet& s : mSheets)
        names << s.name;
    return names;
}

std::optional<SheetArea> XlsxWorkbook::definedName(const QString& name) const
{
    const Name* found = nullptr;
    for (const Name& n : mNames) {
        if (n.name.compare(name, Qt::CaseInsensitive) == 0 && (!found || (found->local && !n.local)))
            found = &n;
    }
    if (!found)
        return std::nullopt;
    // "Data!$A$1:$F$3" or "'My data'!$B$2": one sheet, one block of cells.
    const qsizetype bang = found->formula.lastIndexOf(u'!');
    QString sheet = found->formula.left(std::max<qsizetype>(bang, 0));
    if (sheet.size() >= 2 && sheet.startsWith(u'\'') && sheet.endsWith(u'\''))
        sheet = sheet.mid(1, sheet.size() - 2).replace(QLatin1String("''"), QLatin1String("'"));
    const std::optional<CellArea> area =
        bang > 0 ? CellArea::parse(QStringView(found->formula).mid(bang + 1)) : std::nullopt;
    if (!area || sheetIndex(sheet) < 0)
        throw WorkbookError(
            QStringLiteral("the name \"%1\" does not stand for one block of cells.").arg(name));
    return SheetArea{sheet, *area};
}

XlsxWorkbook::Sheet& XlsxWorkbook::loaded(int index)
{
    if (index < 0 || index >= static_cast<int>(mSheets.size()))
        throw WorkbookError(QStringLiteral("its sheet %1 cannot be read.").arg(index + 1));
    Sheet& sheet = mSheets[static_cast<std::size_t>(index)];
    if (sheet.loaded)
        return sheet;

    QXmlStreamReader reader(part(sheet.part));
    int row = -1;
    int column = -1;
    while (!reader.atEnd()) {
        reader.readNext();
        if (!reader.isStartElement())
            continue;
        if (reader.name() == QLatin1String("row")) {
            const QXmlStreamAttributes a = reader.attributes();
            const QStringView r = a.value(QLatin1String("r"));
            row = r.isEmpty() ? row + 1 : r.toInt() - 1;
            if (row < 0 || row >= CellStore::kMaxRows)
                damaged(sheet.part);
            column = -1;
        } else if (reader.name() == QLatin1String("c")) {
            const QXmlStreamAttributes a = reader.attributes();
            const QString type = a.value(QLatin1String("t")).toString();
            if (const auto position = CellArea::parseCell(a.value(QLatin1String("r")))) {
                row = position->first;
                column = position->second;
            } else {
                ++column;
            }
            if (row < 0 || row >= CellStore::kMaxRows || column < 0 || column >= CellStore::kMaxColumns)
                damaged(sheet.part);
            QString raw;
            bool hasValue = false;
            while (reader.readNextStartElement()) {
                if (reader.name() == QLatin1String("v")) {
                    raw = reader.readElementText();
                    hasValue = true;
                } else if (reader.name() == QLatin1String("is")) {
                    raw = textOf(reader);
                    hasValue = true;
                } else {
                    reader.skipCurrentElement();
                }
            }
            if (!hasValue)
                continue;
            QVariant value;
            if (type == QLatin1String("s")) {
                const int i = raw.toInt();
                if (i < 0 || i >= mSharedStrings.size())
                    damaged(sheet.part);
                value = mSharedStrings[i];
            } else if (type == QLatin1String("str") || type == QLatin1String("inlineStr") ||
                       type == QLatin1String("e") || type == QLatin1String("d")) {
                value = raw;
            } else {
                bool ok = false;
                const double number = raw.toDouble(&ok);
                value = ok ? QVariant(number) : QVariant(raw);
            }
            sheet.cells.set(row, column, std::move(value));
        }
    }
    if (reader.hasError())
        damaged(sheet.part);
    sheet.loaded = true;
    return sheet;
}

const CellStore& XlsxWorkbook::cells(int sheet)
{
    return loaded(sheet).cells;
}

} // namespace kilnova
