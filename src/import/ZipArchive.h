#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace kilnova {

/// The members of a zip file, read whole into memory: enough for the parts of an .xlsx workbook.
/// Stored and deflated members are read; each is checked against its CRC.
class ZipArchive final {
public:
    /// No part of a workbook of records comes near these; a larger one is refused before it is
    /// unpacked.
    static constexpr quint32 kMaxMemberSize = 256u * 1024 * 1024;
    static constexpr quint64 kMaxUnpacked = 512u * 1024 * 1024;

    /// Throws WorkbookError when the bytes are not a zip file or its directory is damaged.
    explicit ZipArchive(QByteArray bytes);

    static bool hasSignature(const QByteArray& bytes);

    QStringList names() const;
    /// The uncompressed content of a member; nothing when there is no member of that name. Throws
    /// WorkbookError when the member is damaged or compressed in a way this reader does not know.
    std::optional<QByteArray> read(const QString& name) const;

private:
    struct Member {
        QString name;
        int method;
        quint32 crc;
        quint32 compressedSize;
        quint32 size;
        quint32 localHeader;
    };

    QByteArray mBytes;
    std::vector<Member> mMembers;
    /// What the parts read so far unpacked to, against kMaxUnpacked.
    mutable quint64 mUnpacked = 0;
};

} // namespace kilnova
