// Runs one writing command on a project database and is killed by CrashSafetyTest somewhere inside
// it. It says "begin" just before the command starts writing.
//
//   kilnova_crash_worker import DB FILE | store DB | restore DB
#include "chemistry/ChemEquationCoefficients.h"
#include "database/BackupRestore.h"
#include "database/DatabaseError.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "import/ImportSpecification.h"
#include "import/TextImporter.h"
#include "optimise/SourceUpdate.h"

#include <QCoreApplication>
#include <QFile>

#include <cstdio>

using namespace kilnova;

namespace {

void begin()
{
    std::puts("begin");
    std::fflush(stdout);
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() < 3)
        return 2;
    const QString& command = args[1];
    try {
        const std::unique_ptr<ProjectDatabase> db = ProjectDatabase::open(args[2]);
        if (command == QLatin1String("import") && args.size() == 4) {
            chemCoefficients() = ChemEquationCoefficients{};
            QFile file(args[3]);
            if (!file.open(QIODevice::ReadOnly))
                return 2;
            const TextImporter importer(ImportTarget::Blast, ImportSpecification::defaultBlast(),
                                        ImportSpecification::defaultStockpile());
            begin();
            return importer.import(*db, file).stopped() ? 1 : 0;
        }
        if (command == QLatin1String("store")) {
            // One tonne from every blast, each checked against what was just read.
            std::vector<SourceUpdate::Take> takes;
            for (const Record& blast : RecordTable(*db, Table::Blast).all())
                takes.push_back({Table::Blast, blast.key(), 1.0, blast.number(QStringLiteral("Quantity")),
                                 blast.analysis()});
            begin();
            SourceUpdate::store(*db, {Table::Stockpile, QStringLiteral("Crash"), 1.0, {}}, takes, true);
            return 0;
        }
        if (command == QLatin1String("restore")) {
            BackupRestore restore(*db, BackupRestore::Kind::Blasts);
            const std::vector<Record> rows = restore.rows();
            begin();
            restore.restore(rows);
            return 0;
        }
    } catch (const DatabaseError& e) {
        std::fprintf(stderr, "%s\n", e.message().toLocal8Bit().constData());
        return 1;
    }
    return 2;
}
