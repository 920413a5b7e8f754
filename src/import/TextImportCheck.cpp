#include "import/TextImportCheck.h"

#include "common/MessageTable.h"
#include "import/LineReader.h"

namespace kilnova {

namespace {

using Fit = FieldExtractor::NumberFit;

bool unreadable(Fit fit)
{
    return fit == Fit::None || fit == Fit::Leading;
}

} // namespace

TextImportCheck::TextImportCheck(const TextImporter& importer, ImportTarget target)
    : mFields(importer.fieldsRead())
    , mTarget(target)
{
}

void TextImportCheck::inspectLine(const char* line, long number, Inspection& seen, Layout& fit) const
{
    int numbers = 0;
    int notNumbers = 0;
    const TextImporter::ReadField* firstBad = nullptr;
    bool numberInText = false;
    for (const TextImporter::ReadField& f : mFields) {
        const FieldExtractor::NumberFit how = FieldExtractor::numberFit(line, f.position, f.length);
        if (!f.numeric) {
            // A name may well be digits ("1205"), but not with a decimal point: that is a coordinate or
            // a tonnage. A stockpile's Source names where the material came from: a number there means
            // the columns are those of another layout.
            const QString text = FieldExtractor::text(line, f.position, f.length).trimmed();
            const bool number = how == Fit::Whole && (f.index != 0 || text.contains(u'.'));
            if (number && !numberInText) {
                numberInText = true;
                if (fit.numberInTextLines == 0) {
                    fit.firstNumberInText = number;
                    fit.textField = f.name;
                    fit.textNumber = text;
                }
            }
            continue;
        }
        if (how != Fit::Blank)
            ++numbers;
        if (unreadable(how)) {
            ++notNumbers;
            if (!firstBad)
                firstBad = &f;
        }
        if (f.stored && how != Fit::Whole) {
            seen.warnings.add({number, f.name, FieldExtractor::text(line, f.position, f.length).trimmed(),
                               how, FieldExtractor::number(line, f.position, f.length)});
        }
    }
    if (numberInText)
        ++fit.numberInTextLines;
    if (numbers > 0 && 2 * notNumbers > numbers) {
        if (fit.misfitLines == 0) {
            fit.firstMisfit = number;
            fit.misfitField = firstBad->name;
            fit.misfitText = FieldExtractor::text(line, firstBad->position, firstBad->length).trimmed();
        }
        ++fit.misfitLines;
    }
}

std::optional<QString> TextImportCheck::layoutProblem(const Layout& fit, long lines) const
{
    const QString table =
        mTarget == ImportTarget::Blast ? QStringLiteral("Blast") : QStringLiteral("Stockpile");
    if (2 * fit.numberInTextLines > lines) {
        return message(Msg::ImportNumberInTextField,
                       {table, QString::number(fit.numberInTextLines), QString::number(lines), fit.textField,
                        fit.textNumber, QString::number(fit.firstNumberInText)});
    }
    if (2 * fit.misfitLines > lines) {
        return message(Msg::ImportFieldsUnreadable,
                       {table, QString::number(fit.misfitLines), QString::number(lines), fit.misfitField,
                        fit.misfitText, QString::number(fit.firstMisfit)});
    }
    return std::nullopt;
}

TextImportCheck::Inspection TextImportCheck::inspect(QIODevice& device, long maxLines) const
{
    Inspection seen;
    Layout fit;
    LineReader reader(device);
    while ((maxLines <= 0 || seen.lines < maxLines) && reader.readLine()) {
        ++seen.lines;
        inspectLine(reader.line(), seen.lines, seen, fit);
    }
    seen.layoutProblem = layoutProblem(fit, seen.lines);
    return seen;
}

} // namespace kilnova
