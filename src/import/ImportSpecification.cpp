#include "import/ImportSpecification.h"

#include "common/ArchiveError.h"
#include "common/Cp1252.h"

#include <QtEndian>

#include <cstring>
#include <stdexcept>
#include <string>

namespace kilnova {

namespace {

void checkIndex(int index)
{
    if (index < 0 || index >= ImportSpecification::kMaxFields)
        throw std::out_of_range("import field index " + std::to_string(index) + " outside 0..49");
}

struct DefaultField {
    const char* name;
    qint32 position;
    qint32 length;
};

ImportSpecification fromDefaults(std::initializer_list<DefaultField> defaults)
{
    ImportSpecification spec;
    spec.setFieldCount(static_cast<int>(defaults.size()));
    int i = 0;
    for (const DefaultField& f : defaults)
        spec.setField(i++, {QString::fromLatin1(f.name), f.position, f.length, 0});
    return spec;
}

} // namespace

ImportSpecification::ImportSpecification()
    : mBlock(kSize, '\0')
{
}

ImportSpecification ImportSpecification::defaultBlast()
{
    return fromDefaults({
        {"Name", 1, 6},
        {"East", 7, 8},
        {"North", 15, 10},
        {"Elevation", 25, 10},
        {"Quantity", 35, 10},
        {"Titration", 45, 10},
        {"SiO2", 55, 10},
        {"Al2O3", 65, 10},
        {"Fe2O3", 75, 10},
        {"CaO", 85, 10},
        {"MgO", 95, 10},
        {"LOI", 105, 10},
        {"SO3", 115, 10},
        {"K2O", 125, 10},
        {"Na2O", 135, 10},
        {"TiO2", 145, 10},
        {"P2O5", 155, 10},
        {"CostFactor", 165, 10},
    });
}

ImportSpecification ImportSpecification::defaultStockpile()
{
    return fromDefaults({
        {"Name", 1, 6},
        {"Source", 7, 8},
        {"Quantity", 15, 10},
        {"Titration", 25, 10},
        {"SiO2", 35, 10},
        {"Al2O3", 45, 10},
        {"Fe2O3", 55, 10},
        {"CaO", 65, 10},
        {"MgO", 75, 10},
        {"LOI", 85, 10},
        {"SO3", 95, 10},
        {"K2O", 105, 10},
        {"Na2O", 115, 10},
        {"TiO2", 125, 10},
        {"P2O5", 135, 10},
    });
}

ImportSpecification ImportSpecification::fromBytes(const QByteArray& block)
{
    if (block.size() != kSize) {
        throw ArchiveError(
            QStringLiteral("an import specification of %1 bytes instead of %2").arg(block.size()).arg(kSize));
    }
    ImportSpecification spec;
    spec.mBlock = block;
    const qint32 count = spec.intAt(kFieldCountOffset);
    if (count < 0 || count > kMaxFields)
        throw ArchiveError(QStringLiteral("an import specification with %1 fields (at most 50)").arg(count));
    return spec;
}

qint32 ImportSpecification::intAt(int offset) const
{
    return qFromLittleEndian<qint32>(mBlock.constData() + offset);
}

void ImportSpecification::setIntAt(int offset, qint32 value)
{
    qToLittleEndian(value, mBlock.data() + offset);
}

int ImportSpecification::fieldCount() const
{
    return intAt(kFieldCountOffset);
}

void ImportSpecification::setFieldCount(int count)
{
    if (count < 0 || count > kMaxFields)
        throw std::out_of_range("import field count " + std::to_string(count) + " outside 0..50");
    setIntAt(kFieldCountOffset, count);
}

QString ImportSpecification::fieldName(int index) const
{
    checkIndex(index);
    const char* slot = mBlock.constData() + kNamesOffset + index * kNameSize;
    // A damaged slot without a terminator still yields its 25 characters.
    const void* zero = std::memchr(slot, 0, kNameSize);
    const qsizetype size = zero ? static_cast<const char*>(zero) - slot : kNameSize;
    return fromCp1252(QByteArrayView(slot, size));
}

void ImportSpecification::setFieldName(int index, const QString& name)
{
    checkIndex(index);
    const QByteArray bytes = toCp1252(name).left(kNameSize - 1);
    char* slot = mBlock.data() + kNamesOffset + index * kNameSize;
    std::memset(slot, 0, kNameSize);
    std::memcpy(slot, bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

qint32 ImportSpecification::position(int index) const
{
    checkIndex(index);
    return intAt(kPositionsOffset + 4 * index);
}

void ImportSpecification::setPosition(int index, qint32 column)
{
    checkIndex(index);
    setIntAt(kPositionsOffset + 4 * index, column);
}

qint32 ImportSpecification::length(int index) const
{
    checkIndex(index);
    return intAt(kLengthsOffset + 4 * index);
}

void ImportSpecification::setLength(int index, qint32 length)
{
    checkIndex(index);
    setIntAt(kLengthsOffset + 4 * index, length);
}

qint32 ImportSpecification::decimals(int index) const
{
    checkIndex(index);
    return intAt(kDecimalsOffset + 4 * index);
}

void ImportSpecification::setDecimals(int index, qint32 decimals)
{
    checkIndex(index);
    setIntAt(kDecimalsOffset + 4 * index, decimals);
}

ImportSpecification::Field ImportSpecification::field(int index) const
{
    return {fieldName(index), position(index), length(index), decimals(index)};
}

void ImportSpecification::setField(int index, const Field& field)
{
    setFieldName(index, field.name);
    setPosition(index, field.position);
    setLength(index, field.length);
    setDecimals(index, field.decimals);
}

QList<ImportSpecification::Field> ImportSpecification::fields() const
{
    QList<Field> list;
    const int count = fieldCount();
    list.reserve(count);
    for (int i = 0; i < count; ++i)
        list.append(field(i));
    return list;
}

} // namespace kilnova
