#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace kilnova {

class CoefficientMatrix;

/// The debug dump of a programme as text: per row every coefficient "%10.2lf" without separators,
/// the right-hand side "%10.2lf", " IBT: " and the kind "%4d"; then an empty line pair and every
/// objective coefficient "%10.2lf" on its own line.
///
/// A dump is m x n fields, most of them zeros: numbers are formatted by std::to_chars (correctly
/// rounded, as printf is), and the text goes to the file as a list of pieces, runs of zeros taken
/// from one prepared run, so that it is copied only once, into the file. A dump that would pass `limit` bytes
/// stops after the last whole row that fits, with a closing note giving its full size: at thousands of
/// sources the whole text would run to gigabytes, take longer to write than the optimisation takes, and be of
/// no use to a reader.
class ProgrammeDump final {
public:
    /// The limit used by the optimisations.
    static constexpr std::size_t kLimit = 50'000'000;

    /// Writes the dump to `fileName`; nothing if the file cannot be opened. Returns the size the
    /// whole dump has (written or not), 0 when the file could not be opened.
    static std::uint64_t write(const std::string& fileName, const CoefficientMatrix& a,
                               std::span<const double> rhs, std::span<const int> kind,
                               std::span<const double> objective, std::size_t limit = kLimit);

    /// Appends `value` as printf's "%10.2lf" writes it.
    static void appendField(std::string& out, double value);
    /// The note that closes a dump cut at `limit` bytes.
    static std::string cutNote(std::size_t limit, std::uint64_t wholeSize, int rows, int columns);
};

} // namespace kilnova
