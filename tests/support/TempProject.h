#pragma once

#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "optimise/SourceUpdate.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

namespace kilnova::test {

/// A fresh project database in a temporary folder that disappears with the test.
class TempProject : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(mDir.isValid());
        mDb = ProjectDatabase::create(path("project.kndb"));
    }

    QString path(const QString& name) const { return mDir.filePath(name); }

    /// Runs raw SQL against the engine, bypassing our access layer; returns the engine's error text.
    QString rawExec(const QString& sql)
    {
        QSqlQuery query(mDb->connection());
        if (!query.exec(sql))
            return query.lastError().databaseText().isEmpty() ? QStringLiteral("error")
                                                              : query.lastError().databaseText();
        return {};
    }

    /// A source as an optimisation takes it: the tonnes, and what it read of the source just now.
    SourceUpdate::Take takeAsRead(Table table, const RecordKey& key, double tonnes) const
    {
        const std::optional<Record> read = RecordTable(*mDb, table).find(key);
        EXPECT_TRUE(read) << key.name.toStdString();
        return {table, key, tonnes, read ? read->number("Quantity") : 0.0,
                read ? read->analysis() : missingAnalysis()};
    }

    QTemporaryDir mDir;
    std::unique_ptr<ProjectDatabase> mDb;
};

} // namespace kilnova::test
