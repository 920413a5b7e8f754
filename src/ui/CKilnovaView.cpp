#include "ui/CKilnovaView.h"

#include "database/DatabaseError.h"
#include "project/CKilnovaDoc.h"

#include <QDir>
#include <QFormLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace kilnova {

CKilnovaView::CKilnovaView(CKilnovaDoc& doc, QWidget* parent)
    : QWidget(parent)
    , mDoc(doc)
    , mProject(new QLabel)
    , mDatabase(new QLabel)
    , mCounts(new QLabel)
{
    auto* title = new QLabel(QStringLiteral("<h2>Kilnova</h2>Raw-material planning for the cement plant: "
                                            "quarry \u2192 stockpile \u2192 crude \u2192 clinker"));
    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Project:"), mProject);
    form->addRow(QStringLiteral("Project database:"), mDatabase);
    form->addRow(QStringLiteral("Records:"), mCounts);
    for (QLabel* l : {mProject, mDatabase, mCounts})
        l->setTextInteractionFlags(Qt::TextSelectableByMouse);
    mCounts->setObjectName("counts");
    mDatabase->setObjectName("database");

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(title);
    layout->addSpacing(12);
    layout->addLayout(form);
    layout->addStretch();
    refresh();
}

void CKilnovaView::refresh()
{
    mProject->setText(mDoc.filePath().isEmpty() ? QStringLiteral("not saved yet")
                                                : QDir::toNativeSeparators(mDoc.filePath()));
    const bool fileGone = mDoc.missingDatabaseFile().has_value();
    if (mDoc.databasePath().isEmpty())
        mDatabase->setText(QStringLiteral("none \u2014 use Database > Create or Database > Connect"));
    else
        mDatabase->setText(QDir::toNativeSeparators(mDoc.databasePath()) +
                           (fileGone             ? QStringLiteral(" (the file is no longer there)")
                            : mDoc.isConnected() ? QStringLiteral(" (connected)")
                                                 : QStringLiteral(" (not connected)")));

    if (!mDoc.isConnected() || fileGone) {
        mCounts->setText(QStringLiteral("\u2014"));
        return;
    }
    QStringList lines;
    try {
        const std::pair<Table, const char*> tables[] = {
            {Table::Blast, "Blasts"},    {Table::Stockpile, "Stockpiles"}, {Table::Crude, "Crude"},
            {Table::Clinker, "Clinker"}, {Table::Additives, "Additives"},  {Table::Coal, "Coal"}};
        for (const auto& [table, label] : tables)
            lines << QStringLiteral("%1: %2")
                         .arg(QString::fromLatin1(label))
                         .arg(mDoc.database()->count(table));
        mCounts->setText(lines.join(QStringLiteral("\n")));
    } catch (const DatabaseError& e) {
        mCounts->setText(e.message());
    }
}

} // namespace kilnova
