#pragma once

#include "combine/BLASTSD.h"
#include "combine/CSuccessfulComb.h"
#include "database/Record.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace kilnova {

class ProjectDatabase;

/// The working copies temp-Blast and temp-stdBlast that the combination analysis reads and takes
/// pairs out of, and their exchange with the permanent Blast and stdBlast tables. Every writing call
/// is one transaction: it happens completely or not at all. Failures are DatabaseError.
class WorkingBlastTables final {
public:
    /// Inclusive coordinate bounds of the source list.
    struct CoordinateFilter {
        double eastMinimum = 0.0;
        double eastMaximum = 0.0;
        double northMinimum = 0.0;
        double northMaximum = 0.0;
        double elevationMinimum = 0.0;
        double elevationMaximum = 0.0;
    };

    /// One blast the source list offers.
    struct Source {
        QString name;
        double quantity = 0.0;
        bool operator==(const Source&) const = default;
    };

    explicit WorkingBlastTables(ProjectDatabase& db);

    /// Replaces both working copies with the permanent tables, column by column, and remembers what
    /// the permanent tables held.
    void refresh();
    /// Deletes every working blast; the working deviations are left as they are.
    void clearBlasts();
    /// How writing the working copies back changes Blast, counted by blast name.
    struct WriteBack {
        long changed = 0; ///< in both, with some column that differs
        long deleted = 0; ///< in Blast only: taken out completely
        long added = 0;   ///< in the working copy only
    };
    /// Replaces Blast and stdBlast with the working copies; blasts taken out completely are gone.
    /// Refuses, writing nothing, when Blast or stdBlast no longer hold what refresh() copied (another
    /// program stored, imported or restored meanwhile): their changes would be lost. Returns what
    /// changed in Blast.
    WriteBack writeBack();

    /// The working blasts with tonnes left (Quantity > 0), in table order, within the filter if any.
    std::vector<Source> sources(const CoordinateFilter* filter) const;

    /// The working record of a blast and its deviations, if they are there.
    std::optional<Record> blast(const QString& name) const;
    std::optional<Record> deviations(const QString& name) const;

    /// One record per name, in the order given. A blast without deviations gets no tonnes and
    /// missing values, so that it can take part in no pair; a name not in the working copy is left
    /// out.
    std::vector<BLASTSD> loadSeries(const QStringList& names) const;

    /// Takes the tonnes of a pair out of the working blasts; a blast with nothing left (remaining
    /// <= 0) is deleted. Returns the names deleted.
    QStringList takeOut(const CSuccessfulComb& pair);

private:
    /// Every row of a table in table order, each as its name and a digest of all its values.
    struct RowDigest {
        QString name;
        QByteArray digest;
        bool operator==(const RowDigest&) const = default;
    };
    std::vector<RowDigest> digests(Table table) const;
    /// Throws DatabaseError naming the first row that differs from what refresh() copied.
    void requireUnchanged(Table table, const std::vector<RowDigest>& copied) const;

    ProjectDatabase& mDb;
    /// What Blast and stdBlast held when they were copied; empty before the first refresh().
    std::optional<std::vector<RowDigest>> mCopiedBlasts;
    std::optional<std::vector<RowDigest>> mCopiedDeviations;
};

} // namespace kilnova
