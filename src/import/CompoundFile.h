#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace kilnova {

/// The streams of a compound document, the container an Excel 97 workbook is stored in. Only reading,
/// only what a workbook needs: streams directly below the root, big and small ones.
class CompoundFile final {
public:
    /// Throws WorkbookError when the bytes are not a sound compound document.
    explicit CompoundFile(QByteArray bytes);

    static bool hasSignature(const QByteArray& bytes);

    /// The stream of that name below the root, compared without regard to case.
    std::optional<QByteArray> stream(const QString& name) const;

private:
    struct Entry {
        QString name;
        int type;
        quint32 left;
        quint32 right;
        quint32 child;
        quint32 start;
        quint64 size;
    };

    quint32 u32(qsizetype offset) const;
    QByteArray sector(quint32 index) const;
    /// The sectors of a chain in order; throws on a loop or a sector outside the file.
    std::vector<quint32> chain(quint32 start, const std::vector<quint32>& table) const;
    QByteArray readChain(quint32 start, quint64 size) const;
    QByteArray readMiniChain(quint32 start, quint64 size) const;

    QByteArray mBytes;
    int mSectorSize = 512;
    int mMiniSectorSize = 64;
    quint32 mMiniCutoff = 4096;
    std::vector<quint32> mFat;
    std::vector<quint32> mMiniFat;
    QByteArray mMiniStream;
    std::vector<Entry> mEntries;
};

} // namespace kilnova
