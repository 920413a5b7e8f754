#include "import/ImportWarnings.h"

#include "common/MessageTable.h"

#include <QStringList>

namespace kilnova {

void ImportWarnings::add(Entry entry)
{
    switch (entry.fit) {
    case FieldExtractor::NumberFit::Whole:
        return;
    case FieldExtractor::NumberFit::Blank:
        ++mBlank;
        break;
    case FieldExtractor::NumberFit::None:
        ++mNoNumber;
        break;
    case FieldExtractor::NumberFit::Leading:
        ++mLeading;
        break;
    }
    if (mFirst.size() < kShown)
        mFirst.push_back(std::move(entry));
}

QString ImportWarnings::describe() const
{
    if (empty())
        return {};
    QStringList lines{message(Msg::ImportFieldsNotNumbers, {QString::number(count())})};
    for (const Entry& e : mFirst) {
        const QString line = QString::number(e.line);
        const QString value = QString::number(e.value);
        lines << (e.fit == FieldExtractor::NumberFit::Blank
                      ? message(Msg::ImportFieldBlank, {line, e.field, value})
                      : message(Msg::ImportFieldText, {line, e.field, e.text, value}));
    }
    if (count() > static_cast<long>(mFirst.size()))
        lines << message(Msg::ImportFieldsMore,
                         {QString::number(count() - static_cast<long>(mFirst.size()))});
    if (mBlank > 0)
        lines << message(Msg::ImportBlankFieldHint);
    return lines.join('\n');
}

} // namespace kilnova
