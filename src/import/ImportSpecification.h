#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace kilnova {

/// Column layout of a fixed-column text file: up to 50 fields, each with a name, a 1-based start
/// column, a length (0 = absent from the file) and a number of decimals.
///
/// The record is kept as its 2116-byte little-endian block, which the project file stores as it
/// stands:
///
///     offset  size     field
///        0    256      reserved text area (unused, all zero in a new document)
///      256      4      field count, 0..50
///      260    50 x 25  field names, zero-terminated cp1252, at most 24 characters
///     1510      2      padding
///     1512    50 x 4   start positions
///     1712    50 x 4   lengths
///     1912    50 x 4   decimals
///     2112      4      unused
///
/// Holding the block itself means that bytes nobody interprets (the reserved area, the padding, the
/// unused tail, whatever follows a name's terminator) survive a load and save byte for byte.
class ImportSpecification final {
public:
    static constexpr int kSize = 2116;
    static constexpr int kMaxFields = 50;
    static constexpr int kNameSize = 25;
    static constexpr int kReservedOffset = 0;
    static constexpr int kReservedSize = 256;
    static constexpr int kFieldCountOffset = 256;
    static constexpr int kNamesOffset = 260;
    static constexpr int kPositionsOffset = 1512;
    static constexpr int kLengthsOffset = 1712;
    static constexpr int kDecimalsOffset = 1912;

    struct Field {
        QString name;
        qint32 position = 0;
        qint32 length = 0;
        qint32 decimals = 0;
        bool operator==(const Field&) const = default;
    };

    /// No fields, every byte zero.
    ImportSpecification();

    /// The 18 fields of a blast file: Name, East, North, Elevation, Quantity, then the analyses.
    static ImportSpecification defaultBlast();
    /// The 15 fields of a stockpile file: Name, Source, Quantity, then the analyses.
    static ImportSpecification defaultStockpile();

    /// Takes a stored block. Throws ArchiveError when it is not 2116 bytes or its field count lies
    /// outside 0..50 (a damaged file).
    static ImportSpecification fromBytes(const QByteArray& block);
    QByteArray toBytes() const { return mBlock; }

    int fieldCount() const;
    /// Throws std::out_of_range outside 0..50.
    void setFieldCount(int count);

    // Field accessors take an index 0..49 (std::out_of_range otherwise); fields at or beyond
    // fieldCount() are stored too but are not part of the layout.
    QString fieldName(int index) const;
    /// Cut to 24 characters; the rest of the name slot is cleared.
    void setFieldName(int index, const QString& name);
    qint32 position(int index) const;
    void setPosition(int index, qint32 column);
    qint32 length(int index) const;
    void setLength(int index, qint32 length);
    qint32 decimals(int index) const;
    void setDecimals(int index, qint32 decimals);

    Field field(int index) const;
    void setField(int index, const Field& field);
    /// The first fieldCount() fields.
    QList<Field> fields() const;

    QByteArray reservedArea() const { return mBlock.mid(kReservedOffset, kReservedSize); }

    bool operator==(const ImportSpecification&) const = default;

private:
    qint32 intAt(int offset) const;
    void setIntAt(int offset, qint32 value);

    QByteArray mBlock;
};

} // namespace kilnova
