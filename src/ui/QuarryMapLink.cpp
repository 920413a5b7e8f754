#include "ui/QuarryMapLink.h"

#include "ui/NumberField.h"
#include "ui/QuarryMapView.h"

#include <QCheckBox>
#include <QListWidget>

namespace kilnova {

QuarryMapLink::QuarryMapLink(QuarryMapView* map, Controls controls, std::function<void()> selectionTaken,
                             std::function<void()> refresh, QObject* parent)
    : QObject(parent)
    , mMap(map)
    , mControls(controls)
    , mSelectionTaken(std::move(selectionTaken))
    , mRefresh(std::move(refresh))
{
    connect(map, &QuarryMapView::selectionChanged, this, &QuarryMapLink::takeMapSelection);
    connect(map, &QuarryMapView::filterChanged, this, [this](const QuarryMapData::Extent& b) {
        const double values[] = {b.eastMinimum, b.eastMaximum, b.northMinimum, b.northMaximum};
        for (std::size_t i = 0; i < 4; ++i)
            mControls.bounds[i]->setValue(values[i]);
    });
    connect(map, &QuarryMapView::filterDragFinished, this, [this](bool drawn) {
        // Drawing a new rectangle means filtering by it.
        if (drawn)
            mControls.filter->setChecked(true);
        NumberField* lowest = mControls.bounds[4];
        NumberField* highest = mControls.bounds[5];
        if (drawn && lowest->value() == 0.0 && highest->value() == 0.0) {
            if (const auto range = mMap->data().elevationRange()) {
                lowest->setValue(range->first);
                highest->setValue(range->second);
            }
        }
        if (mControls.filter->isChecked() && mRefresh)
            mRefresh();
    });
    connect(controls.filter, &QCheckBox::toggled, this, &QuarryMapLink::showFilter);
    for (NumberField* field : controls.bounds)
        connect(field, &QLineEdit::editingFinished, this, &QuarryMapLink::showFilter);
}

QStringList QuarryMapLink::listed(bool selectedOnly) const
{
    QStringList names;
    for (int row = 0; row < mControls.list->count(); ++row) {
        const QListWidgetItem* item = mControls.list->item(row);
        if (!selectedOnly || item->isSelected())
            names << item->data(mControls.nameRole).toString();
    }
    return names;
}

void QuarryMapLink::showList()
{
    QuarryMapData& data = mMap->editData();
    data.setListed(listed(false));
    data.setSelection(listed(true));
    showFilter();
}

void QuarryMapLink::showSelection()
{
    mMap->editData().setSelection(listed(true));
}

void QuarryMapLink::showFilter()
{
    std::array<double, 4> values{};
    for (std::size_t i = 0; i < 4; ++i) {
        const std::optional<double> v = mControls.bounds[i]->value();
        if (!v)
            return; // the dialog says so when it reads the field
        values[i] = *v;
    }
    mMap->setFilter(mControls.filter->isChecked(), {values[0], values[1], values[2], values[3]});
}

void QuarryMapLink::takeMapSelection(const QStringList& names)
{
    QSet<QString> chosen;
    for (const QString& name : names)
        chosen.insert(name.toLower());
    {
        const QSignalBlocker blocker(mControls.list);
        QListWidgetItem* first = nullptr;
        for (int row = 0; row < mControls.list->count(); ++row) {
            QListWidgetItem* item = mControls.list->item(row);
            const bool on = chosen.contains(item->data(mControls.nameRole).toString().toLower());
            item->setSelected(on);
            if (on && !first)
                first = item;
        }
        if (first)
            mControls.list->scrollToItem(first);
    }
    // The view skips repainting items while its signals are blocked.
    mControls.list->viewport()->update();
    if (mSelectionTaken)
        mSelectionTaken();
}

} // namespace kilnova
