#pragma once

#include "database/ActualStockpileUpdate.h"

#include <QDialog>

class QCheckBox;
class QListWidget;

namespace kilnova {

class ProjectDatabase;
class UserPrompt;

/// "Update Actual Stockpiles": the stockpiles to add ("Source", several), the one that receives them
/// ("Destination"), "Delete Source Stockpile after update". OK blends through ActualStockpileUpdate
/// and closes; a refusal or failure is shown and the dialog stays open.
class CUpdateActualStockpiles final : public QDialog {
    Q_OBJECT
public:
    /// `stockpiles` in list order; `sources` are selected in the Source list at first; the destination
    /// starts on the first Actual stockpile. The stockpiles are read as they are now: OK blends only
    /// if the chosen ones still hold that.
    CUpdateActualStockpiles(ProjectDatabase& db, UserPrompt& ui, const std::vector<RecordKey>& stockpiles,
                            const std::vector<RecordKey>& sources, QWidget* parent = nullptr);

    QListWidget* sourceList() const { return mSources; }
    QListWidget* destinationList() const { return mDestination; }
    QCheckBox* deleteSources() const { return mDelete; }
    /// What OK would blend.
    ActualStockpileUpdate::Request request() const;

    void accept() override;

private:
    ProjectDatabase& mDb;
    UserPrompt& mUi;
    std::vector<RecordKey> mKeys;
    std::vector<std::optional<Record>> mShown; // mKeys as they were when the dialog opened
    QListWidget* mSources;
    QListWidget* mDestination;
    QCheckBox* mDelete;
};

} // namespace kilnova
