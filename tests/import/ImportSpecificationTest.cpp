#include "import/ImportSpecification.h"
#include "common/ArchiveError.h"

#include <QtEndian>

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

using namespace kilnova;

namespace {

qint32 intAt(const QByteArray& block, int offset)
{
    return qFromLittleEndian<qint32>(block.constData() + offset);
}

QByteArray nameSlot(const QByteArray& block, int field)
{
    return block.mid(260 + 25 * field, 25);
}

QByteArray paddedName(const char* name)
{
    QByteArray slot(name);
    slot.resize(25, '\0');
    return slot;
}

bool allZero(const QByteArray& bytes)
{
    return bytes.count('\0') == bytes.size();
}

TEST(ImportSpecification, DefaultBlastBlockHasTheDocumentedLayout)
{
    const QByteArray b = ImportSpecification::defaultBlast().toBytes();
    ASSERT_EQ(b.size(), 2116);

    struct Int {
        int offset;
        qint32 value;
    };
    const Int ints[] = {
        {256, 18}, // field count
        {1512, 1},
        {1712, 6}, // Name
        {1512 + 4 * 1, 7},
        {1712 + 4 * 1, 8}, // East
        {1512 + 4 * 4, 35},
        {1712 + 4 * 4, 10}, // Quantity
        {1512 + 4 * 17, 165},
        {1712 + 4 * 17, 10}, // CostFactor
        {1512 + 4 * 18, 0},
        {1712 + 4 * 18, 0}, // first unused field
    };
    for (const Int& i : ints)
        EXPECT_EQ(intAt(b, i.offset), i.value) << "offset " << i.offset;

    EXPECT_EQ(nameSlot(b, 0), paddedName("Name"));
    EXPECT_EQ(nameSlot(b, 3), paddedName("Elevation"));
    EXPECT_EQ(nameSlot(b, 17), paddedName("CostFactor"));
    EXPECT_TRUE(allZero(b.mid(260 + 25 * 18, 1512 - (260 + 25 * 18)))) << "unused names and padding";
    EXPECT_TRUE(allZero(b.left(256))) << "reserved area";
    EXPECT_TRUE(allZero(b.mid(1912))) << "decimals and the unused tail";
}

TEST(ImportSpecification, DefaultsListTheirFieldsAndStartFromTheThirdAtTenIMinusFive)
{
    const std::pair<ImportSpecification, QStringList> cases[] = {
        {ImportSpecification::defaultBlast(),
         {"Name", "East", "North", "Elevation", "Quantity", "Titration", "SiO2", "Al2O3", "Fe2O3", "CaO",
          "MgO", "LOI", "SO3", "K2O", "Na2O", "TiO2", "P2O5", "CostFactor"}},
        {ImportSpecification::defaultStockpile(),
         {"Name", "Source", "Quantity", "Titration", "SiO2", "Al2O3", "Fe2O3", "CaO", "MgO", "LOI", "SO3",
          "K2O", "Na2O", "TiO2", "P2O5"}},
    };
    for (const auto& [spec, names] : cases) {
        const QList<ImportSpecification::Field> fields = spec.fields();
        ASSERT_EQ(fields.size(), names.size());
        EXPECT_EQ(fields[0], (ImportSpecification::Field{names[0], 1, 6, 0}));
        EXPECT_EQ(fields[1], (ImportSpecification::Field{names[1], 7, 8, 0}));
        for (int i = 2; i < fields.size(); ++i)
            EXPECT_EQ(fields[i], (ImportSpecification::Field{names[i], 10 * i - 5, 10, 0})) << i;
    }
}

TEST(ImportSpecification, BytesNobodyInterpretsAreWrittenBackAsRead)
{
    QByteArray block = ImportSpecification::defaultStockpile().toBytes();
    block[3] = 'R';       // reserved text area
    block[1510] = '\x7f'; // padding
    block[1511] = '\x01';
    block[2115] = '\xee';       // unused tail
    block[260 + 5] = 'x';       // after the terminator of "Name"
    block[260 + 25 * 40] = 'z'; // a slot beyond the field count
    block[1912 + 4 * 3] = 2;    // decimals of Titration

    const ImportSpecification spec = ImportSpecification::fromBytes(block);
    EXPECT_EQ(spec.toBytes(), block);
    EXPECT_EQ(spec.fieldName(0), QStringLiteral("Name"));
    EXPECT_EQ(spec.decimals(3), 2);
    EXPECT_EQ(spec.reservedArea().at(3), 'R');
    EXPECT_NE(spec, ImportSpecification::defaultStockpile());
}

TEST(ImportSpecification, RefusesBlocksNoWriterProduces)
{
    const QByteArray good = ImportSpecification::defaultBlast().toBytes();
    struct Case {
        qint32 count;
        bool accepted;
    };
    const Case cases[] = {
        {0, true}, {50, true}, {-1, false}, {51, false}, {std::numeric_limits<qint32>::min(), false}};
    for (const Case& c : cases) {
        QByteArray block = good;
        qToLittleEndian(c.count, block.data() + 256);
        if (c.accepted)
            EXPECT_EQ(ImportSpecification::fromBytes(block).fieldCount(), c.count);
        else
            EXPECT_THROW(ImportSpecification::fromBytes(block), ArchiveError) << c.count;
    }
    EXPECT_THROW(ImportSpecification::fromBytes(good.left(2115)), ArchiveError);
    EXPECT_THROW(ImportSpecification::fromBytes(good + '\0'), ArchiveError);
}

TEST(ImportSpecification, NamesAreCutToTheirSlotAndClearItsTail)
{
    ImportSpecification spec = ImportSpecification::defaultBlast();
    spec.setFieldName(3, QStringLiteral("A name far longer than twenty-four"));
    spec.setFieldName(3, QStringLiteral("Größe₂"));
    EXPECT_EQ(nameSlot(spec.toBytes(), 3), paddedName("Gr\xf6\xdf"
                                                      "e?"));
    EXPECT_EQ(spec.fieldName(3), QStringLiteral("Größe?"));

    spec.setFieldName(4, QString(30, QChar(u'q')));
    EXPECT_EQ(spec.fieldName(4), QString(24, QChar(u'q')));
    EXPECT_EQ(nameSlot(spec.toBytes(), 4).at(24), '\0');

    EXPECT_THROW(spec.setPosition(50, 1), std::out_of_range);
    EXPECT_THROW(spec.setFieldCount(51), std::out_of_range);
}

} // namespace
