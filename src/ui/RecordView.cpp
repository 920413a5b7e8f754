#include "ui/RecordView.h"

#include "database/Record.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QTableWidget>
#include <QVBoxLayout>

namespace kilnova {

RecordView::RecordView(const Record& record, QWidget* parent)
    : QDialog(parent)
{
    const TableDef& def = record.definition();
    setWindowTitle(QStringLiteral("%1 %2").arg(def.name, record.name()));
    auto* table = new QTableWidget(record.columnCount(), 2);
    table->setObjectName(QStringLiteral("record"));
    table->setHorizontalHeaderLabels({QStringLiteral("Column"), QStringLiteral("Value")});
    table->verticalHeader()->hide();
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    for (int c = 0; c < record.columnCount(); ++c) {
        const ColumnDef& column = def.columns[static_cast<std::size_t>(c)];
        table->setItem(c, 0, new QTableWidgetItem(column.name));
        QString text = record.value(c).toString();
        if (column.type != ColumnType::Text) {
            const double v = record.value(c).toDouble();
            text = v == -1.0 ? QStringLiteral("missing")
                             : QString::number(v, 'f', column.type == ColumnType::Single ? 3 : 2);
        }
        auto* item = new QTableWidgetItem(text);
        item->setTextAlignment(column.type == ColumnType::Text ? Qt::AlignLeft | Qt::AlignVCenter
                                                               : Qt::AlignRight | Qt::AlignVCenter);
        table->setItem(c, 1, item);
    }
    table->resizeColumnsToContents();
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(table);
    layout->addWidget(buttons);
    resize(360, 620);
}

} // namespace kilnova
