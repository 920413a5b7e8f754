#include "common/Cp1252.h"

#include <array>

namespace kilnova {

namespace {

// 0x80-0x9F; the undefined positions keep their own value.
constexpr std::array<char16_t, 32> kHighControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, // 0x80
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F, // 0x88
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014, // 0x90
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178, // 0x98
};

char encodeCodePoint(char32_t c)
{
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF))
        return static_cast<char>(c);
    for (std::size_t i = 0; i < kHighControls.size(); ++i) {
        if (kHighControls[i] == c)
            return static_cast<char>(0x80 + i);
    }
    return '?';
}

} // namespace

QByteArray toCp1252(QStringView text)
{
    QByteArray out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            ++i; // one character, one '?'
            out.append('?');
            continue;
        }
        out.append(encodeCodePoint(c.unicode()));
    }
    return out;
}

QString fromCp1252(QByteArrayView bytes)
{
    QString out(bytes.size(), Qt::Uninitialized);
    QChar* dst = out.data();
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const auto b = static_cast<unsigned char>(bytes[i]);
        dst[i] = (b >= 0x80 && b < 0xA0) ? QChar(kHighControls[b - 0x80]) : QChar(b);
    }
    return out;
}

} // namespace kilnova
