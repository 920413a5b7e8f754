#pragma once

#include "combine/CCombinationParameters.h"
#include "combine/CombinationOutcome.h"
#include "combine/CombinationSearch.h"
#include "combine/WorkingBlastTables.h"
#include "common/MemoryGuard.h"

#include <QSet>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace kilnova {

class ProjectDatabase;
class ReportSink;
class UserPrompt;

/// Everything the "Combine Blasts" dialog does, without the widgets: the working copies, the source
/// list and its selection, the targets, the period, the runs and the taking out of a chosen pair.
/// The dialog, the command line and the tests drive the same object. Messages and questions go
/// through the UserPrompt; a database failure is reported there and leaves the data as it was.
class BlastCombiner final {
public:
    BlastCombiner(ProjectDatabase& db, const CCombinationParameters& parameters, UserPrompt& ui);
    BlastCombiner(const BlastCombiner&) = delete;
    BlastCombiner& operator=(const BlastCombiner&) = delete;

    /// Opening the dialog: the working copies are refreshed from Blast and stdBlast, the period
    /// starts at 1 and the source list is filled. False when the database refused.
    bool open();
    /// OK and Cancel: the working blasts are deleted. False when the database refused.
    bool close();

    /// The dialog's settings; Combine runs with them as they stand.
    CCombinationParameters& parameters() { return mParameters; }
    const CCombinationParameters& parameters() const { return mParameters; }
    int period() const { return mPeriod; }
    /// The period the next report prints, for a run that continues a plan made earlier.
    void setPeriod(int period) { mPeriod = period; }

    // The source list.
    const std::vector<WorkingBlastTables::Source>& sources() const { return mSources; }
    /// The text of a list item: the name first, then the tonnes.
    static QString sourceText(const WorkingBlastTables::Source& source);
    /// "Refresh": lists the working blasts again with the coordinate filter as set now and keeps the
    /// names that were selected selected.
    bool refreshSources();
    void setSelected(const QString& name, bool selected);
    void selectAll();
    bool isSelected(const QString& name) const { return mSelected.contains(name); }
    /// The selected names in list order, top to bottom.
    QStringList selectedNames() const;
    /// "View Source": the working record of a blast as text, or an empty text if it is gone.
    QString describeSource(const QString& name);

    // The target list. Each refuses with a message (and returns false) when it does not apply.
    bool setTarget(int property, double value);
    bool modifyTarget(int property, double value);
    bool removeTarget(int property);
    /// The properties with a target, in property order.
    std::vector<int> targetProperties() const;

    /// "Combine": checks the selection, the settings and the memory the selection could need, loads
    /// the series and runs, the report going to `report` as it is built. Returns the outcome to
    /// show when at least one pair succeeded; otherwise the user has been told why, or the run was
    /// cancelled, and there is nothing to show.
    std::optional<CombinationOutcome> combine(ReportSink& report, const CombinationProgress& progress = {});

    /// Every successful pair is kept in memory: this much for each pair a selection may make, and
    /// this much for each blast of the series.
    static constexpr std::uint64_t kBytesPerPair = sizeof(SuccessfulPair);
    static constexpr std::uint64_t kBytesPerBlast = 512;
    /// The guard the selections are checked against (this computer's unless set otherwise).
    void setMemoryGuard(const MemoryGuard& guard) { mMemory = guard; }

    /// The results window closed with this period and this pair chosen: when the period went up
    /// ("Update Blasts") the pair is taken out of the working blasts and the period adopted.
    bool applyResults(const CSuccessfulComb& chosen, int windowPeriod);

    /// "Update Blast Table": after the user confirms, Blast and stdBlast become the working copies,
    /// and the user is told how many blasts changed. True when they were written.
    bool updateBlastTable();

private:
    void reportFailure(const QString& details);
    /// False, the user told, when the database file has gone from under the open connection.
    bool databaseFileIsThere();
    void fillSources();

    ProjectDatabase& mDb;
    WorkingBlastTables mTables;
    CCombinationParameters mParameters;
    UserPrompt& mUi;
    int mPeriod = 1;
    std::vector<WorkingBlastTables::Source> mSources;
    QSet<QString> mSelected;
    MemoryGuard mMemory;
};

} // namespace kilnova
