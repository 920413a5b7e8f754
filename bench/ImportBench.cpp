// The text import of 100,000 blast lines (read, cut, convert, derive, insert the blast and its stdBlast
// companion) against the inserts alone: the same 200,000 rows through bare SQLite prepared statements
// in one transaction, with the values computed beforehand. Both write into a freshly created project
// database, schema and constraints included; creating it is not timed.
// Names are "<case>/<implementation>"; scripts/run-bench divides the first implementation's time by
// each peer's.

#include "chemistry/ChemEquationCoefficients.h"
#include "database/ProjectDatabase.h"
#include "database/Schema.h"
#include "import/ImportSpecification.h"
#include "import/LineReader.h"
#include "import/TextImporter.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <cstdio>
#include <stdexcept>
#include <vector>

namespace kilnova::bench {
namespace {

constexpr int kLines = 100000;

/// The lines of the default blast layout, every field filled, names B00000 to B99999.
QByteArray makeFile()
{
    QByteArray content;
    content.reserve(kLines * 176);
    char line[256];
    for (int i = 0; i < kLines; ++i) {
        const double f = (i % 997) / 997.0;
        std::snprintf(
            line, sizeof line,
            "B%05d%8.1f%10.2f%10.1f%10.0f%10.2f%10.2f%10.2f%10.2f%10.2f%10.2f%10.2f%10.2f%10.2f%10.2f%10.2f"
            "%10.2f%10.2f\n",
            i, 1000 + i * 0.5, 2000 + f * 300, 300 + f * 20, 3000 + f * 2000, 10 + f, 12 + 9 * f, 2.5 + 2 * f,
            1.5 + f, 40 + 25 * f, 1 + f, 33 + 3 * f, 0.2 + f / 2, 0.4 + f / 2, 0.1 + f / 10, 0.2, 0.1, 3 + f);
        content += line;
    }
    return content;
}

struct Workload {
    QTemporaryDir dir;
    QString file;
    std::vector<Record> records;
    int databases = 0;

    Workload()
    {
        file = dir.filePath("blasts.rsv");
        QFile out(file);
        if (!out.open(QIODevice::WriteOnly) || out.write(makeFile()) < 0)
            throw std::runtime_error("cannot write the bench file");
        out.close();
        // The rows the import writes, for the peer.
        QFile in(file);
        in.open(QIODevice::ReadOnly);
        LineReader reader(in);
        const TextImporter importer(ImportTarget::Blast, ImportSpecification::defaultBlast(),
                                    ImportSpecification::defaultStockpile());
        while (reader.readLine())
            records.push_back(importer.recordFromLine(reader.line()));
    }

    /// A new empty project database; returns its path.
    QString freshDatabase()
    {
        const QString path = dir.filePath(QStringLiteral("p%1.kndb").arg(databases++));
        ProjectDatabase::create(path);
        return path;
    }
};

Workload& workload()
{
    static Workload w;
    return w;
}

void check(int status, sqlite3* db)
{
    if (status != SQLITE_OK && status != SQLITE_DONE)
        throw std::runtime_error(sqlite3_errmsg(db));
}

sqlite3_stmt* prepareInsert(sqlite3* db, Table table)
{
    const TableDef& def = Schema::table(table);
    QStringList columns, marks;
    for (const ColumnDef& c : def.columns) {
        columns << Schema::quoted(c.name);
        marks << QStringLiteral("?");
    }
    const QByteArray sql = QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)")
                               .arg(Schema::quoted(def.name), columns.join(", "), marks.join(", "))
                               .toUtf8();
    sqlite3_stmt* statement = nullptr;
    check(sqlite3_prepare_v2(db, sql.constData(), -1, &statement, nullptr), db);
    return statement;
}

void bindRecord(sqlite3_stmt* statement, const Record& record)
{
    for (int c = 0; c < record.columnCount(); ++c) {
        const QVariant& v = record.value(c);
        if (v.typeId() == QMetaType::QString) {
            const QByteArray text = v.toString().toUtf8();
            sqlite3_bind_text(statement, c + 1, text.constData(), static_cast<int>(text.size()),
                              SQLITE_TRANSIENT);
        } else {
            sqlite3_bind_double(statement, c + 1, v.toDouble());
        }
    }
}

void importText(benchmark::State& state)
{
    Workload& w = workload();
    for (auto _ : state) {
        state.PauseTiming();
        const QString path = w.freshDatabase();
        std::unique_ptr<ProjectDatabase> db = ProjectDatabase::open(path);
        QFile file(w.file);
        file.open(QIODevice::ReadOnly);
        state.ResumeTiming();
        const ImportResult result = TextImporter(ImportTarget::Blast, ImportSpecification::defaultBlast(),
                                                 ImportSpecification::defaultStockpile())
                                        .import(*db, file);
        if (result.count != kLines || result.stopped())
            state.SkipWithError("the import did not read every line");
    }
    state.SetItemsProcessed(state.iterations() * kLines);
}

void bareInserts(benchmark::State& state)
{
    Workload& w = workload();
    for (auto _ : state) {
        state.PauseTiming();
        const QByteArray path = w.freshDatabase().toUtf8();
        sqlite3* db = nullptr;
        check(sqlite3_open_v2(path.constData(), &db, SQLITE_OPEN_READWRITE, nullptr), db);
        check(sqlite3_exec(db, "PRAGMA foreign_keys = ON", nullptr, nullptr, nullptr), db);
        state.ResumeTiming();
        check(sqlite3_exec(db, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), db);
        sqlite3_stmt* blast = prepareInsert(db, Table::Blast);
        sqlite3_stmt* deviation = prepareInsert(db, Table::StdBlast);
        Record companion(Table::StdBlast);
        for (const Record& record : w.records) {
            bindRecord(blast, record);
            check(sqlite3_step(blast), db);
            sqlite3_reset(blast);
            companion.setValue(0, record.value(0));
            bindRecord(deviation, companion);
            check(sqlite3_step(deviation), db);
            sqlite3_reset(deviation);
        }
        sqlite3_finalize(blast);
        sqlite3_finalize(deviation);
        check(sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr), db);
        state.PauseTiming();
        sqlite3_close(db);
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * kLines);
}

} // namespace
} // namespace kilnova::bench

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    kilnova::chemCoefficients() = kilnova::ChemEquationCoefficients{};
    // Times are CPU times, as scripts/run-bench compares them; Google Benchmark also prints wall time.
    benchmark::RegisterBenchmark("textImport100k/kilnova", kilnova::bench::importText)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("textImport100k/sqlite", kilnova::bench::bareInserts)
        ->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
