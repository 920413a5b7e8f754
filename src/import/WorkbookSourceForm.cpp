#include "import/WorkbookSourceForm.h"

#include "common/MessageTable.h"
#include "import/FileFilter.h"

namespace kilnova {

namespace {

QString withoutTrailingBlanks(QString text)
{
    qsizetype size = text.size();
    while (size > 0 && text[size - 1] == u' ')
        --size;
    text.truncate(size);
    return text;
}

} // namespace

QString WorkbookSourceForm::sourceName() const
{
    switch (mKind) {
    case Kind::Worksheet: {
        const QString name = withoutTrailingBlanks(mWorksheet);
        return name.isEmpty() ? name : name + u'$';
    }
    case Kind::NamedRange:
        return withoutTrailingBlanks(mNamedRange);
    case Kind::CellRange:
        return withoutTrailingBlanks(mCellRange);
    }
    return {};
}

UserPrompt::FileRequest WorkbookSourceForm::browseRequest() const
{
    UserPrompt::FileRequest request;
    request.title = message(Msg::WorkbookDialogTitle);
    // Excel 95/97 first, as always; the newer workbooks and comma-separated files plants have today after.
    request.filter = FileFilter::fromPairs(message(Msg::WorkbookFilter)) + QStringLiteral(";;") +
                     FileFilter::fromPairs(message(Msg::OtherWorkbookFilters));
    request.defaultSuffix = QStringLiteral("xls");
    request.initialPath = mWorkbookPath;
    return request;
}

bool WorkbookSourceForm::browse(UserPrompt& ui)
{
    const std::optional<QString> path = ui.chooseFile(browseRequest());
    if (!path)
        return false;
    mWorkbookPath = *path;
    return true;
}

} // namespace kilnova
