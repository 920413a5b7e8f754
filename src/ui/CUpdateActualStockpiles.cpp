#include "ui/CUpdateActualStockpiles.h"

#include "database/DatabaseError.h"
#include "database/RecordTable.h"
#include "tables/TableEditor.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QListWidget>

namespace kilnova {

namespace {
QString keyText(const RecordKey& key)
{
    return QStringLiteral("%1 (%2)").arg(key.name, key.source);
}
} // namespace

CUpdateActualStockpiles::CUpdateActualStockpiles(ProjectDatabase& db, UserPrompt& ui,
                                                 const std::vector<RecordKey>& stockpiles,
                                                 const std::vector<RecordKey>& sources, QWidget* parent)
    : QDialog(parent)
    , mDb(db)
    , mUi(ui)
    , mKeys(stockpiles)
    , mSources(new QListWidget)
    , mDestination(new QListWidget)
    , mDelete(new QCheckBox(QStringLiteral("Delete Source Stockpile after update")))
{
    setWindowTitle(QStringLiteral("Update Actual Stockpiles"));
    mSources->setObjectName(QStringLiteral("source"));
    mDestination->setObjectName(QStringLiteral("destination"));
    mDelete->setObjectName(QStringLiteral("deleteSources"));
    mSources->setSelectionMode(QAbstractItemView::ExtendedSelection);
    mDestination->setSelectionMode(QAbstractItemView::SingleSelection);
    try {
        const RecordTable table(db, Table::Stockpile);
        for (const RecordKey& key : mKeys)
            mShown.push_back(table.find(key));
    } catch (const DatabaseError&) {
        // Unreadable now, so OK will fail on the database and say why; nothing to compare with.
        mShown.assign(mKeys.size(), std::nullopt);
    }
    int destination = -1;
    for (std::size_t i = 0; i < mKeys.size(); ++i) {
        mSources->addItem(keyText(mKeys[i]));
        mDestination->addItem(keyText(mKeys[i]));
        mSources->item(static_cast<int>(i))
            ->setSelected(std::find(sources.begin(), sources.end(), mKeys[i]) != sources.end());
        if (destination < 0 && TableEditor::isActualStockpile(mKeys[i]))
            destination = static_cast<int>(i);
    }
    mDestination->setCurrentRow(std::max(destination, 0));

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    auto* layout = new QGridLayout(this);
    layout->addWidget(new QLabel(QStringLiteral("Source")), 0, 0);
    layout->addWidget(new QLabel(QStringLiteral("Destination")), 0, 2);
    layout->addWidget(mSources, 1, 0);
    layout->addWidget(new QLabel(QStringLiteral("Add to")), 1, 1, Qt::AlignCenter);
    layout->addWidget(mDestination, 1, 2);
    layout->addWidget(mDelete, 2, 0, 1, 3);
    layout->addWidget(buttons, 3, 0, 1, 3);
    connect(buttons, &QDialogButtonBox::accepted, this, &CUpdateActualStockpiles::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    resize(640, 420);
}

ActualStockpileUpdate::Request CUpdateActualStockpiles::request() const
{
    ActualStockpileUpdate::Request r;
    auto remember = [&](std::size_t i) {
        if (mShown[i])
            r.seen.add(*mShown[i]);
    };
    for (int i = 0; i < mSources->count(); ++i) {
        if (mSources->item(i)->isSelected()) {
            r.sources.push_back(mKeys[static_cast<std::size_t>(i)]);
            remember(static_cast<std::size_t>(i));
        }
    }
    const int destination = mDestination->currentRow();
    if (destination >= 0 && destination < static_cast<int>(mKeys.size())) {
        r.destination = mKeys[static_cast<std::size_t>(destination)];
        remember(static_cast<std::size_t>(destination));
    }
    r.deleteSources = mDelete->isChecked();
    return r;
}

void CUpdateActualStockpiles::accept()
{
    if (ActualStockpileUpdate::applyAsking(mDb, mUi, request()))
        QDialog::accept();
}

} // namespace kilnova
