#include "ui/CChooseDataSource.h"

#include "database/OdbcCatalog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace kilnova {

CChooseDataSource::CChooseDataSource(const QStringList& sources, QWidget* parent)
    : QDialog(parent)
    , mSources(new QListWidget)
    , mTyped(new QLineEdit)
{
    setWindowTitle(QStringLiteral("Select Data Source"));
    mSources->setObjectName(QStringLiteral("dataSources"));
    mTyped->setObjectName(QStringLiteral("connectionString"));
    mSources->addItems(sources);
    if (!sources.isEmpty())
        mSources->setCurrentRow(0);
    mTyped->setPlaceholderText(QStringLiteral("DRIVER={...};DATABASE=...  or  DSN=...;UID=..."));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(QStringLiteral("Data sources known to the ODBC driver manager:")));
    layout->addWidget(mSources);
    layout->addWidget(new QLabel(QStringLiteral("or a connection string:")));
    layout->addWidget(mTyped);
    layout->addWidget(buttons);
    auto update = [this, buttons] {
        buttons->button(QDialogButtonBox::Ok)->setEnabled(!connection().isEmpty());
    };
    connect(mSources, &QListWidget::currentRowChanged, this, update);
    connect(mTyped, &QLineEdit::textChanged, this, update);
    connect(mSources, &QListWidget::itemDoubleClicked, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    update();
    resize(480, 360);
}

QString CChooseDataSource::connection() const
{
    if (!mTyped->text().trimmed().isEmpty())
        return mTyped->text().trimmed();
    return mSources->currentItem() ? mSources->currentItem()->text() : QString();
}

std::optional<QString> CChooseDataSource::ask(QWidget* parent)
{
    CChooseDataSource dialog(OdbcCatalog::dataSources(), parent);
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    return dialog.connection();
}

} // namespace kilnova
