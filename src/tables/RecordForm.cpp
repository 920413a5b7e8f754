#include "tables/RecordForm.h"

#include "chemistry/ChemistryFunctions.h"
#include "common/MessageTable.h"
#include "tables/RecordListModel.h"

#include <QLocale>

#include <charconv>
#include <cmath>

namespace kilnova {

namespace {

constexpr Element kDerived[] = {Element::MS,  Element::MA,  Element::LSF,  Element::C3S,
                                Element::C2S, Element::C3A, Element::NaEq, Element::C4AF};

QString columnName(int element)
{
    const std::string_view name = elementColumnName(element);
    return QString::fromLatin1(name.data(), static_cast<qsizetype>(name.size()));
}

bool isDerivedColumn(const QString& column)
{
    for (Element e : kDerived) {
        if (column == columnName(elementIndex(e)))
            return true;
    }
    return false;
}

std::optional<double> readNumber(const QString& text)
{
    bool ok = false;
    const double v = QLocale::c().toDouble(text.trimmed(), &ok);
    if (!ok || !std::isfinite(v))
        return std::nullopt;
    return v;
}

} // namespace

RecordForm::RecordForm(Record record, std::optional<Record> deviations)
    : mRecord(std::move(record))
    , mDeviations(std::move(deviations))
{
    const TableDef& def = mRecord.definition();
    for (int c = 0; c < mRecord.columnCount(); ++c) {
        const ColumnDef& column = def.columns[static_cast<std::size_t>(c)];
        mFields.push_back(
            {Part::Record, c, column.name, column.name, column.type, isDerivedColumn(column.name)});
    }
    if (mDeviations) {
        const TableDef& devDef = mDeviations->definition();
        // Column 0 is the Name, which follows the blast's.
        for (int c = 1; c < mDeviations->columnCount(); ++c) {
            const ColumnDef& column = devDef.columns[static_cast<std::size_t>(c)];
            mFields.push_back({Part::Deviations, c, column.name,
                               column.name + QStringLiteral(" standard deviation"), column.type, false});
        }
    }
    fillTexts();
}

int RecordForm::fieldIndex(Part part, const QString& column) const
{
    for (std::size_t i = 0; i < mFields.size(); ++i) {
        if (mFields[i].part == part && mFields[i].label.compare(column, Qt::CaseInsensitive) == 0)
            return static_cast<int>(i);
    }
    return -1;
}

void RecordForm::setText(int field, const QString& text)
{
    if (!mFields.at(static_cast<std::size_t>(field)).derived)
        mTexts[static_cast<std::size_t>(field)] = text;
}

void RecordForm::setText(const QString& column, const QString& text)
{
    const int field = fieldIndex(Part::Record, column);
    if (field >= 0)
        setText(field, text);
}

QString RecordForm::numberText(ColumnType type, double value)
{
    // The shortest fixed-point text that reads back as the same float or double: a stored 0.1f
    // shows as "0.1", and saving an untouched form changes nothing.
    char buffer[400];
    const std::to_chars_result r =
        type == ColumnType::Single
            ? std::to_chars(buffer, buffer + sizeof buffer, static_cast<float>(value),
                            std::chars_format::fixed)
            : std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed);
    return QString::fromLatin1(buffer, r.ptr - buffer);
}

void RecordForm::fillTexts()
{
    mTexts.clear();
    for (const Field& f : mFields) {
        const Record& source = f.part == Part::Record ? mRecord : *mDeviations;
        const QVariant& value = source.value(f.column);
        if (f.type == ColumnType::Text)
            mTexts.push_back(value.toString());
        else if (f.derived)
            mTexts.push_back(RecordListModel::displayText(
                source.definition().columns[static_cast<std::size_t>(f.column)], value));
        else
            mTexts.push_back(numberText(f.type, value.toDouble()));
    }
}

Analysis RecordForm::typedAnalysis() const
{
    Analysis a = mRecord.analysis();
    for (std::size_t i = 0; i < mFields.size(); ++i) {
        const Field& f = mFields[i];
        if (f.part != Part::Record || f.derived)
            continue;
        if (const std::optional<int> element = elementFromName(f.label.toStdString())) {
            const std::optional<double> v = readNumber(mTexts[i]);
            a[static_cast<std::size_t>(*element)] = static_cast<float>(v ? *v : kMissing);
        }
    }
    return a;
}

void RecordForm::showDerived(const Analysis& analysis)
{
    const TableDef& def = mRecord.definition();
    for (std::size_t i = 0; i < mFields.size(); ++i) {
        const Field& f = mFields[i];
        if (!f.derived)
            continue;
        const std::optional<int> element = elementFromName(f.label.toStdString());
        mTexts[i] =
            RecordListModel::displayText(def.columns[static_cast<std::size_t>(f.column)],
                                         static_cast<double>(analysis[static_cast<std::size_t>(*element)]));
    }
}

void RecordForm::refreshDerived()
{
    Analysis a = typedAnalysis();
    computeDerivedQuantities(a, 0.0);
    showDerived(a);
}

std::optional<RecordForm::Problem> RecordForm::apply()
{
    mLastProblem = check();
    return mLastProblem;
}

std::optional<RecordForm::Problem> RecordForm::check()
{
    Record record = mRecord;
    std::optional<Record> deviations = mDeviations;
    std::vector<QString> texts = mTexts;
    for (std::size_t i = 0; i < mFields.size(); ++i) {
        const Field& f = mFields[i];
        if (f.derived)
            continue;
        Record& into = f.part == Part::Record ? record : *deviations;
        const QString text = mTexts[i].trimmed();
        const int field = static_cast<int>(i);
        if (text.isEmpty())
            return Problem{field, message(Msg::FieldEmpty, {f.caption})};
        if (f.type == ColumnType::Text) {
            // The database counts characters, not UTF-16 units.
            const qsizetype length = text.toUcs4().size();
            if (length > Schema::kTextLength)
                return Problem{field, message(Msg::FieldTooLong, {f.caption, text, QString::number(length)})};
            into.setValue(f.column, text);
            texts[i] = text;
            continue;
        }
        const std::optional<double> v = readNumber(text);
        if (!v || (f.type == ColumnType::Single && !std::isfinite(static_cast<float>(*v))))
            return Problem{field, message(Msg::FieldNotANumber, {f.caption, text})};
        into.setValue(f.column, *v);
    }

    // The derived columns always follow the oxides; free lime is a clinker matter, 0 here.
    Analysis a = record.analysis();
    computeDerivedQuantities(a, 0.0);
    record.setAnalysis(a);
    if (deviations)
        deviations->setValue(0, record.name());

    mRecord = std::move(record);
    mDeviations = std::move(deviations);
    mTexts = std::move(texts);
    showDerived(a);
    return std::nullopt;
}

void RecordForm::markStored(qint64 rowId, std::optional<qint64> deviationsRowId)
{
    mRecord.setRowId(rowId);
    if (mDeviations)
        mDeviations->setRowId(deviationsRowId);
}

} // namespace kilnova
