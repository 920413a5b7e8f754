// A row of the plant's stkpiles table as the ODBC driver may hand it over: whatever the columns hold,
// a clear refusal or a row every value of which the analysis can keep.
//
// One column a line: a tag, then its payload. ~ NULL number, _ NULL text, x no column at all,
// s text, a bytes, d a number written as text (strtod: "inf", "nan", "1e999" too), r a double's
// 8 raw bytes, i an integer, b a truth value. Lines beyond C4AF are ignored; lines short of it
// leave the rest missing.
#include "FuzzInput.h"

#include "database/ExternalSourceError.h"
#include "database/ExternalStockpiles.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <vector>

namespace {

QVariant column(const QByteArray& line)
{
    const QByteArray payload = line.mid(1);
    switch (line.isEmpty() ? 's' : line[0]) {
    case '~':
        return QVariant(QMetaType::fromType<double>());
    case '_':
        return QVariant(QMetaType::fromType<QString>());
    case 'x':
        return QVariant();
    case 'a':
        return QVariant(payload);
    case 'd':
        return QVariant(std::strtod(payload.constData(), nullptr));
    case 'r': {
        double d = 0.0;
        std::memcpy(&d, payload.constData(), std::min<std::size_t>(sizeof d, std::size_t(payload.size())));
        return QVariant(d);
    }
    case 'i':
        return QVariant(static_cast<qlonglong>(std::strtoll(payload.constData(), nullptr, 10)));
    case 'b':
        return QVariant(payload.startsWith('1'));
    default:
        return QVariant(QString::fromUtf8(payload));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kilnova;
    std::vector<QVariant> values;
    for (const QByteArray& line : fuzz::bytesOf(data, size).split('\n'))
        values.push_back(column(line));
    try {
        const ExternalStockpiles::Row row = ExternalStockpiles::rowFrom(values);
        if (!std::isfinite(row.quantity))
            std::abort(); // a tonnage no sum survives
        for (double v : row.values) {
            if (!(std::abs(v) <= std::numeric_limits<float>::max()))
                std::abort(); // would not narrow to the analysis
        }
    } catch (const ExternalSourceError& e) {
        if (e.message().isEmpty())
            std::abort(); // a refusal that says nothing
    }
    return 0;
}
