#pragma once

#include "project/ProjectSettings.h"

#include <QByteArray>
#include <QString>

namespace kilnova {

/// The project document file (".knv"): a flat little-endian archive with no header or version, its
/// fields in a fixed order:
///
///      1  database path                          string
///      2  blast import specification             2116-byte block
///      3  Fixed LOI, SO3, K2O, Na2O in clinker   4 float32
///      4  energy, ash recovery, free lime        3 float32
///      5  blast optimisation                     COptimizationParameters
///      6  stockpile optimisation                 CSTKOptParameters
///      7  clinker optimisation                   CClinkerOptParameters
///      8  stockpile import specification         2116-byte block
///      9  blast combination analysis             CCombinationParameters
///     10  coal optimisation                      CCoalOptParameters
///     11  chemical equation coefficients         19 x 4 bytes
///
/// Files written before the coefficients were stored end after field 10; they load with default
/// coefficients, and so does a file cut inside field 11.
class ProjectFile final {
public:
    struct Loaded {
        ProjectSettings settings;
        bool chemistryDefaulted = false; ///< field 11 was absent or incomplete
    };

    ProjectFile() = delete;

    static QByteArray serialize(const ProjectSettings& s);
    /// Throws ProjectFileError when the bytes are not a complete project (empty, cut before field
    /// 11, a value no writer produces, bytes after field 11); nothing is returned half read.
    static Loaded parse(const QByteArray& bytes);

    /// Writes a temporary file next to path and renames it over the old one, so a failure leaves the
    /// old file as it was. Throws ProjectFileError.
    static void save(const ProjectSettings& s, const QString& path);
    /// Throws ProjectFileError.
    static Loaded load(const QString& path);
};

} // namespace kilnova
