#include "import/ImportSpecEditor.h"

namespace kilnova {

namespace {

/// The column of a character offset: its distance from the first character of its line.
int columnOf(const QString& text, int offset)
{
    const qsizetype clamped = std::clamp<qsizetype>(offset, 0, text.size());
    const qsizetype lineStart = clamped == 0 ? 0 : text.lastIndexOf(u'\n', clamped - 1) + 1;
    return static_cast<int>(clamped - lineStart);
}

} // namespace

ImportSpecEditor::ImportSpecEditor(ImportSpecification spec, QString title, QString preview,
                                   bool decimalsEnabled)
    : mSpec(std::move(spec))
    , mTitle(std::move(title))
    , mPreview(std::move(preview))
    , mDecimalsEnabled(decimalsEnabled)
{
}

QStringList ImportSpecEditor::fieldNames() const
{
    QStringList names;
    for (int i = 0; i < mSpec.fieldCount(); ++i)
        names << mSpec.fieldName(i);
    return names;
}

void ImportSpecEditor::setCurrentField(int index)
{
    if (index >= 0 && index < mSpec.fieldCount())
        mCurrent = index;
}

int ImportSpecEditor::position() const
{
    return hasField() ? mSpec.position(mCurrent) : 0;
}

int ImportSpecEditor::length() const
{
    return hasField() ? mSpec.length(mCurrent) : 0;
}

int ImportSpecEditor::decimals() const
{
    return hasField() ? mSpec.decimals(mCurrent) : 0;
}

bool ImportSpecEditor::setPosition(int position)
{
    if (!hasField() || position < kMinPosition || position > kMaxPosition)
        return false;
    mSpec.setPosition(mCurrent, position);
    return true;
}

bool ImportSpecEditor::setLength(int length)
{
    if (!hasField() || length < 0 || length > kMaxLength)
        return false;
    mSpec.setLength(mCurrent, length);
    return true;
}

bool ImportSpecEditor::setDecimals(int decimals)
{
    if (!hasField() || !mDecimalsEnabled || decimals < 0 || decimals > kMaxDecimals)
        return false;
    mSpec.setDecimals(mCurrent, decimals);
    return true;
}

bool ImportSpecEditor::applySelection(const QString& text, int start, int end)
{
    const int first = columnOf(text, start);
    const int last = columnOf(text, end);
    if (!hasField() || last <= first)
        return false;
    mSpec.setPosition(mCurrent, first + 1);
    mSpec.setLength(mCurrent, last - first);
    return true;
}

} // namespace kilnova
