#include "project/ProjectFile.h"
#include "common/ByteBuilder.h"
#include "project/ProjectFileError.h"
#include "project/ProjectSettingsJson.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>

#include <random>

using namespace kilnova;
using kilnova::test::ByteBuilder;

namespace {

// ---- The default document, spelled out byte by byte ------------------------------------------------

QByteArray specBlock(const QList<QByteArray>& names, const QList<int>& lengths)
{
    QByteArray block(2116, '\0');
    qToLittleEndian<qint32>(static_cast<qint32>(names.size()), block.data() + 256);
    int position = 1;
    for (int i = 0; i < names.size(); ++i) {
        block.replace(260 + 25 * i, names[i].size(), names[i]);
        qToLittleEndian<qint32>(position, block.data() + 1512 + 4 * i);
        qToLittleEndian<qint32>(lengths[i], block.data() + 1712 + 4 * i);
        position += lengths[i];
    }
    return block;
}

const QList<QByteArray> kAnalyses = {"Titration", "SiO2", "Al2O3", "Fe2O3", "CaO",  "MgO",
                                     "LOI",       "SO3",  "K2O",   "Na2O",  "TiO2", "P2O5"};

QByteArray defaultBlastBlock()
{
    QList<QByteArray> names = {"Name", "East", "North", "Elevation", "Quantity"};
    names += kAnalyses;
    names += "CostFactor";
    QList<int> lengths = {6, 8};
    lengths.resize(18, 10);
    return specBlock(names, lengths);
}

QByteArray defaultStockpileBlock()
{
    QList<QByteArray> names = {"Name", "Source", "Quantity"};
    names += kAnalyses;
    QList<int> lengths = {6, 8};
    lengths.resize(15, 10);
    return specBlock(names, lengths);
}

struct HandBuilt {
    QByteArray bytes;
    QList<qsizetype> ends; // offset just after each of the 11 fields
};

HandBuilt defaultDocument()
{
    ByteBuilder b;
    QList<qsizetype> ends;
    auto field = [&] {
        ends.append(b.bytes().size());
    };
    auto emptyEntries = [&](int n) {
        for (int i = 0; i < n; ++i)
            b.f64(0).f64(0).str("").i32(0);
    };

    b.str("");
    field();
    b.raw(defaultBlastBlock());
    field();
    b.f32(0).f32(100).f32(100).f32(100);
    field();
    b.f32(1500).f32(0).f32(0);
    field();
    b.i32(1).str("Titration").f64(0).f64(0); // blast optimisation
    emptyEntries(22);
    b.i32(0).f64(0).f64(0).f64(0).f64(0).f64(0).f64(0).list({}).list({});
    field();
    b.i32(1).str("Titration").f64(0).f64(0); // stockpile optimisation
    for (int i = 0; i < 44; ++i)
        b.f64(0).f64(0).str("").i32(0).i32(0);
    b.i32(0).list({});
    field();
    b.i32(1).str("Titration").f64(0).f64(0); // clinker optimisation
    emptyEntries(22);
    b.i32(0).i32(0).list({}).list({}).list({});
    field();
    b.raw(defaultStockpileBlock());
    field();
    b.f64(0); // combination
    for (int i = 0; i < 22; ++i)
        b.f64(0).str("").i32(0);
    b.i32(0).f64(0).f64(0).f64(0).f64(0).f64(0).f64(0);
    b.i32(0).f64(0).i32(1).f64(0);
    b.f32(0).f32(0).i32(0).f32(0).f32(0).str("").str("");
    b.i32(0).i32(0).f32(0).str("").str("").f32(0).str("");
    field();
    b.i32(1).str("BTU").f64(0).f64(0); // coal optimisation
    emptyEntries(25);
    field();
    b.f32(-3.0695f).f32(8.5974f).f32(5.0654f).f32(1.0782f).i32(1);
    b.f32(2.65f).f32(-1.692f).f32(0.658f).f32(1.0f).f32(3.04f);
    b.f32(1.0f).f32(2.8f).f32(1.1f).f32(0.7f);
    b.f32(4.071f).f32(-7.6f).f32(-6.718f).f32(-1.43f).i32(1);
    field();
    return {b.bytes(), ends};
}

const char* const kSections[] = {
    "database path",
    "blast import specification",
    "clinker process parameters",
    "clinker process parameters",
    "blast optimisation settings",
    "stockpile optimisation settings",
    "clinker optimisation settings",
    "stockpile import specification",
    "blast combination settings",
    "coal optimisation settings",
};

// ---- A document in which every part differs from a new one -----------------------------------------

ProjectSettings everythingChanged()
{
    ProjectSettings s;
    s.databasePath = QStringLiteral("C:\\Plants\\Nord – Ærø\\kiln2.mdb");

    QByteArray blast = ImportSpecification::defaultBlast().toBytes();
    blast[17] = 'r'; // the reserved area travels with the file
    s.blastImportSpec = ImportSpecification::fromBytes(blast);
    s.blastImportSpec.setFieldCount(17);
    s.blastImportSpec.setPosition(0, 3);
    s.blastImportSpec.setDecimals(6, 2);

    s.clinkerProcess = {5.5f, 90.0f, 80.0f, 70.0f, 1600.0f, 50.0f, 1.5f};

    COptimizationParameters& blastOpt = s.blastOptimization;
    blastOpt.mode = COptimizationParameters::kMinimize;
    blastOpt.optimizedElement = QStringLiteral("SiO2");
    blastOpt.target = 14.0;
    blastOpt.requestedTonnage = 25000.0;
    blastOpt.constraints[19] = {0.5, 2.0, QStringLiteral("0.50 <= Cost Factor <= 2.00"), 1};
    blastOpt.constraints[3] = {1.0, 3.0, QString(300, QChar(u'x')), 1}; // a long text: 3-byte prefix
    blastOpt.coordinateFilter = 1;
    blastOpt.eastMaximum = 500.25;
    blastOpt.elevationMinimum = -12.0;
    blastOpt.selectedSources = QStringList{"B-101", "B-102"};
    blastOpt.otherSources = QStringList{"old"};

    CSTKOptParameters& stk = s.stockpileOptimization;
    stk.mode = 0;
    stk.productConstraints[14] = {0.9, 1.0, QStringLiteral("0.90 <= LSF <= 1.00"), 1, 0};
    stk.remainderConstraints[1] = {10, 20, {}, 0, 1};
    stk.stockpileCount = 3;
    stk.sources = QStringList{"Pile 1"};

    CClinkerOptParameters& clinker = s.clinkerOptimization;
    clinker.mode = CClinkerOptParameters::kTarget;
    clinker.optimizedElement = QStringLiteral("C3S");
    clinker.target = 58.0;
    clinker.requestedTonnage = 4000.0;
    clinker.constraints[21] = {0, 0.1, QStringLiteral("0.00 <= Cl <= 0.10"), 1};
    clinker.sourceSelection = CClinkerOptParameters::kStockpileAdditivesAndCoal;
    clinker.tonnageConstraints = {{"Pile 1", "North", 100, 900, "100.00 <= Pile 1 (North) <= 900.00"}};
    clinker.crudeSources = QStringList{"Pile 1"};
    clinker.additiveSources = QStringList{"Bauxite"};
    clinker.coalSources = QStringList{"Coal A"};

    s.stockpileImportSpec = ImportSpecification::defaultStockpile();
    s.stockpileImportSpec.setLength(2, 12);

    CCombinationParameters& comb = s.combination;
    comb.targetTonnage = 8000;
    comb.targets[4] = {44.0, QStringLiteral("CaO"), 1};
    comb.quantityRestriction = 0;
    comb.combinedLowerBound = 1.25f;
    comb.inventoryRestrictionProperty = QStringLiteral("MgO");
    comb.classificationMode = CCombinationParameters::kInventoryGradeClosest;
    comb.inventoryGradeTarget = 2.5f;

    CCoalOptParameters& coal = s.coalOptimization;
    coal.mode = -1;
    coal.constraints[24] = {1, 2, QStringLiteral("1.00 <= Volatiles <= 2.00"), 1};

    ChemEquationCoefficients& c = s.chemistry;
    float v = 0.25f;
    for (float* f : {&c.C3SCaO, &c.C3SSiO2, &c.C3SAl2O3, &c.C3SFe2O3, &c.C2SCaO, &c.C2SSiO2, &c.C2SAl2O3,
                     &c.C2SFe2O3, &c.C3AAl2O3, &c.C3AFe2O3, &c.C4AFFe2O3, &c.LSFCaO, &c.LSFSiO2, &c.LSFAl2O3,
                     &c.LSFFe2O3, &c.NaEqK2O, &c.NaEqNa2O}) {
        *f = v;
        v += 0.5f;
    }
    c.C3SUseFreeLime = 0;
    c.C2SUseFreeLime = 0;
    return s;
}

ProjectSettings withDefaultChemistry(ProjectSettings s)
{
    s.chemistry = ChemEquationCoefficients{};
    return s;
}

QString errorOf(const QByteArray& bytes)
{
    try {
        ProjectFile::parse(bytes);
    } catch (const ProjectFileError& e) {
        return e.message();
    }
    return {};
}

// ---- Tests ------------------------------------------------------------------------------------------

TEST(ProjectFile, NewDocumentIsWrittenByteForByte)
{
    const HandBuilt expected = defaultDocument();
    const QByteArray actual = ProjectFile::serialize(ProjectSettings{});
    ASSERT_EQ(actual.size(), expected.bytes.size());
    for (int f = 0; f < expected.ends.size(); ++f) {
        const qsizetype start = f == 0 ? 0 : expected.ends[f - 1];
        EXPECT_EQ(actual.mid(start, expected.ends[f] - start).toHex(' '),
                  expected.bytes.mid(start, expected.ends[f] - start).toHex(' '))
            << "field " << f + 1;
    }
    const ProjectFile::Loaded loaded = ProjectFile::parse(expected.bytes);
    EXPECT_FALSE(loaded.chemistryDefaulted);
    EXPECT_EQ(loaded.settings, ProjectSettings{});
}

TEST(ProjectFile, EveryChangedSettingSurvivesARoundTrip)
{
    const ProjectSettings changed = everythingChanged();
    const ProjectSettings fresh;
    EXPECT_NE(changed.databasePath, fresh.databasePath);
    EXPECT_NE(changed.blastImportSpec, fresh.blastImportSpec);
    EXPECT_NE(changed.clinkerProcess, fresh.clinkerProcess);
    EXPECT_FALSE(changed.blastOptimization == fresh.blastOptimization);
    EXPECT_FALSE(changed.stockpileOptimization == fresh.stockpileOptimization);
    EXPECT_FALSE(changed.clinkerOptimization == fresh.clinkerOptimization);
    EXPECT_NE(changed.stockpileImportSpec, fresh.stockpileImportSpec);
    EXPECT_FALSE(changed.combination == fresh.combination);
    EXPECT_FALSE(changed.coalOptimization == fresh.coalOptimization);
    EXPECT_NE(changed.chemistry, fresh.chemistry);

    const QByteArray bytes = ProjectFile::serialize(changed);
    const ProjectFile::Loaded loaded = ProjectFile::parse(bytes);
    EXPECT_FALSE(loaded.chemistryDefaulted);
    EXPECT_EQ(loaded.settings, changed);
    EXPECT_EQ(ProjectFile::serialize(loaded.settings), bytes);
}

TEST(ProjectFile, FileCutShortIsRefusedUnlessOnlyTheCoefficientsAreMissing)
{
    // Every cut of the new document, so every field boundary and every point inside a field.
    const HandBuilt doc = defaultDocument();
    const qsizetype afterField10 = doc.ends[9];
    for (qsizetype cut = 1; cut < doc.bytes.size(); ++cut) {
        const QByteArray bytes = doc.bytes.left(cut);
        if (cut >= afterField10) {
            const ProjectFile::Loaded loaded = ProjectFile::parse(bytes);
            EXPECT_TRUE(loaded.chemistryDefaulted) << cut;
            EXPECT_EQ(loaded.settings, ProjectSettings{}) << cut;
            continue;
        }
        int field = 0;
        while (doc.ends[field] <= cut)
            ++field;
        const QString message = errorOf(bytes);
        EXPECT_TRUE(message.contains(QLatin1StringView(kSections[field])))
            << cut << ": " << message.toStdString();
    }
    EXPECT_TRUE(errorOf({}).contains(QStringLiteral("empty")));
}

TEST(ProjectFile, CutInsideTheCoefficientsResetsAllNineteen)
{
    const ProjectSettings changed = everythingChanged();
    const QByteArray bytes = ProjectFile::serialize(changed);
    const qsizetype coefficientsStart = bytes.size() - 76;
    std::mt19937 random(7);
    std::uniform_int_distribution<qsizetype> anywhere(0, coefficientsStart - 1);
    for (qsizetype cut : {coefficientsStart, coefficientsStart + 4, coefficientsStart + 19,
                          coefficientsStart + 72, coefficientsStart + 75}) {
        const ProjectFile::Loaded loaded = ProjectFile::parse(bytes.left(cut));
        EXPECT_TRUE(loaded.chemistryDefaulted) << cut;
        EXPECT_EQ(loaded.settings, withDefaultChemistry(changed)) << cut;
    }
    for (int i = 0; i < 300; ++i) {
        const qsizetype cut = anywhere(random);
        EXPECT_THROW(ProjectFile::parse(bytes.left(cut)), ProjectFileError) << cut;
    }
}

TEST(ProjectFile, RefusesForeignAndDamagedFiles)
{
    const QByteArray good = ProjectFile::serialize(everythingChanged());
    QByteArray badCount = good;
    const qsizetype blastSpecStart = 1 + good.at(0); // the path is under 255 bytes
    qToLittleEndian<qint32>(51, badCount.data() + blastSpecStart + 256);

    struct Case {
        const char* what;
        QByteArray bytes;
        const char* mentions;
    };
    const Case cases[] = {
        {"one byte too many", good + '\0', "unexpected bytes"},
        {"a second document behind the first", good + good, "unexpected bytes"},
        {"51 import fields", badCount, "blast import specification"},
        {"a text file", QByteArray("Name      East    North\r\n"), "database path"},
    };
    for (const Case& c : cases) {
        const QString message = errorOf(c.bytes);
        EXPECT_TRUE(message.contains(QLatin1StringView(c.mentions)))
            << c.what << ": " << message.toStdString();
    }

    std::mt19937 random(2024);
    for (int i = 0; i < 200; ++i) {
        QByteArray noise(std::uniform_int_distribution<int>(1, 20000)(random), '\0');
        for (char& ch : noise)
            ch = static_cast<char>(random());
        EXPECT_THROW(ProjectFile::parse(noise), ProjectFileError) << "noise " << i;
    }
}

TEST(ProjectFile, ADamagedByteIsEitherRefusedOrKeptAsRead)
{
    // Whatever parses is written back unchanged: nothing is normalised on the way through.
    const QByteArray good = ProjectFile::serialize(everythingChanged());
    std::mt19937 random(99);
    std::uniform_int_distribution<qsizetype> position(0, good.size() - 1);
    int refused = 0;
    for (int i = 0; i < 500; ++i) {
        QByteArray bytes = good;
        bytes[position(random)] = static_cast<char>(random());
        try {
            const ProjectFile::Loaded loaded = ProjectFile::parse(bytes);
            if (!loaded.chemistryDefaulted) {
                EXPECT_EQ(ProjectFile::serialize(loaded.settings), bytes) << i;
            }
        } catch (const ProjectFileError&) {
            ++refused;
        }
    }
    EXPECT_GT(refused, 0);
    EXPECT_LT(refused, 500);
}

TEST(ProjectFile, SaveReplacesTheWholeFileAndLoadReadsItBack)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("plant.knv"));
    {
        QFile old(path);
        ASSERT_TRUE(old.open(QIODevice::WriteOnly));
        old.write(QByteArray(100000, 'z')); // longer than any document
    }
    const ProjectSettings changed = everythingChanged();
    ProjectFile::save(changed, path);

    QFile saved(path);
    ASSERT_TRUE(saved.open(QIODevice::ReadOnly));
    EXPECT_EQ(saved.readAll(), ProjectFile::serialize(changed));
    EXPECT_EQ(ProjectFile::load(path).settings, changed);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList{"plant.knv"}) << "no temporary file left";
}

TEST(ProjectFile, FailuresToReadOrWriteAreReportedAndCreateNothing)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString missingDir = dir.filePath(QStringLiteral("gone"));
    const QString inMissingDir = missingDir + QStringLiteral("/plant.knv");

    EXPECT_THROW(ProjectFile::save(ProjectSettings{}, inMissingDir), ProjectFileError);
    EXPECT_FALSE(QFileInfo::exists(missingDir));
    EXPECT_TRUE(QDir(dir.path()).isEmpty());

    EXPECT_THROW(ProjectFile::load(inMissingDir), ProjectFileError);

    const QString empty = dir.filePath(QStringLiteral("empty.knv"));
    QFile(empty).open(QIODevice::WriteOnly);
    try {
        ProjectFile::load(empty);
        FAIL() << "an empty file loaded";
    } catch (const ProjectFileError& e) {
        EXPECT_TRUE(e.message().contains(QStringLiteral("empty.knv"))) << e.what();
        EXPECT_TRUE(e.message().contains(QStringLiteral("empty"))) << e.what();
    }
}

// ---- JSON view ----------------------------------------------------------------------------------------

QJsonValue at(QJsonValue value, const QString& path)
{
    for (const QString& key : path.split(u'.')) {
        bool isIndex = false;
        const int index = key.toInt(&isIndex);
        value = isIndex ? value.toArray().at(index) : value.toObject().value(key);
    }
    return value;
}

TEST(ProjectSettingsJson, ShowsEverySettingUnderReadableKeys)
{
    struct Case {
        const char* path;
        QJsonValue expected;
    };
    const QJsonObject fresh = projectSettingsToJson(ProjectSettings{});
    const Case freshCases[] = {
        {"blastImportSpecification.fieldCount", 18},
        {"blastImportSpecification.fields.17.name", "CostFactor"},
        {"blastImportSpecification.fields.17.position", 165},
        {"stockpileImportSpecification.fields.1.name", "Source"},
        {"clinkerProcess.energyConsumptionFactor", 1500.0},
        {"blastOptimization.modeName", "Maximize"},
        {"blastOptimization.optimizedElement", "Titration"},
        {"blastOptimization.constraints.19.element", "Cost Factor"},
        {"combination.quantityRestriction.enabled", true},
        {"chemicalEquations.C3SCaO", 4.071},
        {"chemicalEquations.C2SSiO2", 8.5974},
        {"chemicalEquations.C3SUseFreeLime", true},
    };
    for (const Case& c : freshCases)
        EXPECT_EQ(at(fresh, c.path), c.expected) << c.path;

    const QJsonObject changed = projectSettingsToJson(everythingChanged());
    const Case changedCases[] = {
        {"databasePath", QStringLiteral("C:\\Plants\\Nord – Ærø\\kiln2.mdb")},
        {"blastImportSpecification.fieldCount", 17},
        {"blastImportSpecification.fields.6.decimals", 2},
        {"clinkerProcess.freeLime", 1.5},
        {"blastOptimization.constraints.19.minimum", 0.5},
        {"blastOptimization.constraints.19.active", true},
        {"blastOptimization.coordinateFilter.eastMaximum", 500.25},
        {"blastOptimization.selectedSources.1", "B-102"},
        {"stockpileOptimization.remainderConstraints.1.element", "SiO2"},
        {"stockpileOptimization.remainderConstraints.1.position", 1},
        {"clinkerOptimization.sourceSelectionName", "Stockpile + Additives + Coal"},
        {"clinkerOptimization.tonnageConstraints.0.source", "North"},
        {"clinkerOptimization.coalSources.0", "Coal A"},
        {"combination.targets.4.element", "CaO"},
        {"combination.targets.4.value", 44.0},
        {"combination.classification.inventoryGradeTarget", 2.5},
        {"coalOptimization.constraints.24.property", "C4AF"},
        {"coalOptimization.constraints.5.property", "SiO2"},
        {"coalOptimization.constraints.24.maximum", 2.0},
        {"chemicalEquations.C2SUseFreeLime", false},
    };
    for (const Case& c : changedCases)
        EXPECT_EQ(at(changed, c.path), c.expected) << c.path;
}

} // namespace

TEST(ProjectFile, ACoefficientThatIsNotANumberIsRefusedByName)
{
    const QByteArray good = ProjectFile::serialize(everythingChanged());
    const qsizetype clinker = 1 + good.at(0) + 2116; // after the path (under 255 bytes) and the layout
    const qsizetype chemistry = good.size() - 19 * 4;
    struct Case {
        qsizetype offset;
        quint32 bits;
        const char* setting;
    };
    const Case cases[] = {
        {clinker, 0x7FC00000, "Fixed LOI"},                         // NaN
        {clinker + 6 * 4, 0x7F800000, "free lime"},                 // +infinity
        {chemistry, 0xFFC00000, "C2S: CaO coefficient"},            // -NaN
        {chemistry + 5 * 4, 0x7F800000, "C3A: Al2O3 coefficient"},  // after the first flag
        {chemistry + 17 * 4, 0xFF800000, "C3S: Fe2O3 coefficient"}, // -infinity, the last one
    };
    for (const Case& c : cases) {
        QByteArray bytes = good;
        qToLittleEndian<quint32>(c.bits, bytes.data() + c.offset);
        const QString message = errorOf(bytes);
        EXPECT_TRUE(message.contains(QStringLiteral("the setting \"%1\" is").arg(c.setting)))
            << c.setting << ": " << message.toStdString();
        EXPECT_TRUE(message.contains(QStringLiteral("at byte %1").arg(c.offset))) << message.toStdString();
    }
}
