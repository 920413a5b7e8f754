#include "project/ProjectFile.h"

#include "common/ArchiveError.h"
#include "common/ArchiveReader.h"
#include "common/ArchiveWriter.h"
#include "project/ProjectFileError.h"

#include <QFile>
#include <QSaveFile>

#include <cmath>

namespace kilnova {

namespace {

constexpr qsizetype kChemistrySize = 19 * 4;

// Field 11, in its own order (neither the dialog's nor the formulas').
void writeChemistry(ArchiveWriter& out, const ChemEquationCoefficients& c)
{
    for (float v : {c.C2SCaO, c.C2SSiO2, c.C2SAl2O3, c.C2SFe2O3})
        out.writeFloat(v);
    out.writeInt32(c.C2SUseFreeLime);
    for (float v : {c.C3AAl2O3, c.C3AFe2O3, c.NaEqK2O, c.NaEqNa2O, c.C4AFFe2O3, c.LSFCaO, c.LSFSiO2,
                    c.LSFAl2O3, c.LSFFe2O3, c.C3SCaO, c.C3SSiO2, c.C3SAl2O3, c.C3SFe2O3})
        out.writeFloat(v);
    out.writeInt32(c.C3SUseFreeLime);
}

/// A coefficient every computed value goes through: one that is not a number would make every value
/// computed from it "missing", and the user would look for the fault in the records.
float readSetting(ArchiveReader& in, const char* setting)
{
    const qsizetype at = in.position();
    const float value = in.readFloat();
    if (!std::isfinite(value))
        throw ArchiveError(QStringLiteral("the setting \"%1\" is %2, not a number, at byte %3")
                               .arg(QLatin1StringView(setting), QString::number(value))
                               .arg(at));
    return value;
}

void readChemistry(ArchiveReader& in, ChemEquationCoefficients& c)
{
    const std::pair<float*, const char*> c2s[] = {{&c.C2SCaO, "C2S: CaO coefficient"},
                                                  {&c.C2SSiO2, "C2S: SiO2 coefficient"},
                                                  {&c.C2SAl2O3, "C2S: Al2O3 coefficient"},
                                                  {&c.C2SFe2O3, "C2S: Fe2O3 coefficient"}};
    for (const auto& [v, setting] : c2s)
        *v = readSetting(in, setting);
    c.C2SUseFreeLime = in.readInt32();
    const std::pair<float*, const char*> rest[] = {
        {&c.C3AAl2O3, "C3A: Al2O3 coefficient"},   {&c.C3AFe2O3, "C3A: Fe2O3 coefficient"},
        {&c.NaEqK2O, "NaEq: K2O coefficient"},     {&c.NaEqNa2O, "NaEq: Na2O coefficient"},
        {&c.C4AFFe2O3, "C4AF: Fe2O3 coefficient"}, {&c.LSFCaO, "LSF: CaO coefficient"},
        {&c.LSFSiO2, "LSF: SiO2 coefficient"},     {&c.LSFAl2O3, "LSF: Al2O3 coefficient"},
        {&c.LSFFe2O3, "LSF: Fe2O3 coefficient"},   {&c.C3SCaO, "C3S: CaO coefficient"},
        {&c.C3SSiO2, "C3S: SiO2 coefficient"},     {&c.C3SAl2O3, "C3S: Al2O3 coefficient"},
        {&c.C3SFe2O3, "C3S: Fe2O3 coefficient"}};
    for (const auto& [v, setting] : rest)
        *v = readSetting(in, setting);
    c.C3SUseFreeLime = in.readInt32();
}

ImportSpecification readImportSpec(ArchiveReader& in)
{
    return ImportSpecification::fromBytes(in.readRaw(ImportSpecification::kSize));
}

QString damaged(const QString& detail)
{
    return QStringLiteral("The file is damaged or is not a Kilnova project: %1.").arg(detail);
}

// Runs one field's reader and names the field if it fails, so the user learns where reading stopped.
template <typename Read> void readSection(const char* section, Read read)
{
    try {
        read();
    } catch (const ArchiveError& e) {
        throw ProjectFileError(damaged(
            QStringLiteral("reading stopped in the %1 (%2)").arg(QLatin1StringView(section), e.reason())));
    }
}

} // namespace

QByteArray ProjectFile::serialize(const ProjectSettings& s)
{
    ArchiveWriter out;
    out.writeString(s.databasePath);
    out.writeRaw(s.blastImportSpec.toBytes());
    const ClinkerProcessParameters& p = s.clinkerProcess;
    for (float v : {p.FixedLOI, p.SO3InClinker, p.K2OInClinker, p.Na2OInClinker, p.EnergyConsumptionFactor,
                    p.AshRecoveryFactor, p.FreeLime})
        out.writeFloat(v);
    s.blastOptimization.serialize(out);
    s.stockpileOptimization.serialize(out);
    s.clinkerOptimization.serialize(out);
    out.writeRaw(s.stockpileImportSpec.toBytes());
    s.combination.serialize(out);
    s.coalOptimization.serialize(out);
    writeChemistry(out, s.chemistry);
    return out.takeData();
}

ProjectFile::Loaded ProjectFile::parse(const QByteArray& bytes)
{
    if (bytes.isEmpty())
        throw ProjectFileError(damaged(QStringLiteral("the file is empty")));

    ArchiveReader in(bytes);
    Loaded loaded;
    ProjectSettings& s = loaded.settings;
    readSection("database path", [&] { s.databasePath = in.readString(); });
    readSection("blast import specification", [&] { s.blastImportSpec = readImportSpec(in); });
    readSection("clinker process parameters", [&] {
        ClinkerProcessParameters& p = s.clinkerProcess;
        const std::pair<float*, const char*> settings[] = {
            {&p.FixedLOI, "Fixed LOI"},
            {&p.SO3InClinker, "SO3 in clinker"},
            {&p.K2OInClinker, "K2O in clinker"},
            {&p.Na2OInClinker, "Na2O in clinker"},
            {&p.EnergyConsumptionFactor, "energy consumption factor"},
            {&p.AshRecoveryFactor, "ash recovery factor"},
            {&p.FreeLime, "free lime"}};
        for (const auto& [v, setting] : settings)
            *v = readSetting(in, setting);
    });
    readSection("blast optimisation settings", [&] { s.blastOptimization.load(in); });
    readSection("stockpile optimisation settings", [&] { s.stockpileOptimization.load(in); });
    readSection("clinker optimisation settings", [&] { s.clinkerOptimization.load(in); });
    readSection("stockpile import specification", [&] { s.stockpileImportSpec = readImportSpec(in); });
    readSection("blast combination settings", [&] { s.combination.load(in); });
    readSection("coal optimisation settings", [&] { s.coalOptimization.load(in); });

    if (in.remaining() < kChemistrySize) {
        // Written before the coefficients were stored, or cut inside them: all 19 revert together.
        s.chemistry = ChemEquationCoefficients{};
        loaded.chemistryDefaulted = true;
        return loaded;
    }
    readSection("chemical equation parameters", [&] { readChemistry(in, s.chemistry); });
    if (!in.atEnd()) {
        throw ProjectFileError(
            damaged(QStringLiteral("%1 unexpected bytes follow the chemical equation parameters")
                        .arg(in.remaining())));
    }
    return loaded;
}

void ProjectFile::save(const ProjectSettings& s, const QString& path)
{
    const QByteArray bytes = serialize(s);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        throw ProjectFileError(
            QStringLiteral("Cannot save the project \"%1\": %2").arg(path, file.errorString()));
    if (file.write(bytes) != bytes.size() || !file.commit()) {
        throw ProjectFileError(
            QStringLiteral("Cannot save the project \"%1\": %2").arg(path, file.errorString()));
    }
}

ProjectFile::Loaded ProjectFile::load(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw ProjectFileError(
            QStringLiteral("Cannot open the project \"%1\": %2").arg(path, file.errorString()));
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        throw ProjectFileError(
            QStringLiteral("Cannot read the project \"%1\": %2").arg(path, file.errorString()));
    try {
        return parse(bytes);
    } catch (const ProjectFileError& e) {
        throw ProjectFileError(QStringLiteral("Cannot open the project \"%1\". %2").arg(path, e.message()));
    }
}

} // namespace kilnova
