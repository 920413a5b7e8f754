#pragma once

#include <QObject>
#include <QStringList>

#include <array>
#include <functional>

class QCheckBox;
class QListWidget;

namespace kilnova {

class NumberField;
class QuarryMapView;

/// Keeps a quarry map in step with a blast dialog's source list and coordinate filter, both ways:
/// a selection made on either shows on the other, the filter's box and fields show on the map, and
/// dragging the filter on the map fills the East and North fields. Elevation stays a field; a
/// rectangle drawn while both elevation bounds are still 0 gets the blasts' whole range of
/// elevations there, so that it filters by where blasts are and not by a bench nobody chose.
class QuarryMapLink final : public QObject {
    Q_OBJECT
public:
    struct Controls {
        QListWidget* list = nullptr;
        /// The item role that holds a blast's name.
        int nameRole = 0;
        QCheckBox* filter = nullptr;
        /// East, North and Elevation minimum and maximum, in that order.
        std::array<NumberField*, 6> bounds{};
    };

    /// `selectionTaken` runs after the map changed the list's selection (the dialog reads it as
    /// if the user had clicked the list); `refresh` lists the sources again after the filter was
    /// dragged while on.
    QuarryMapLink(QuarryMapView* map, Controls controls, std::function<void()> selectionTaken,
                  std::function<void()> refresh, QObject* parent = nullptr);

    /// The list was filled again: the map shows which blasts it offers and which are selected.
    void showList();
    /// The list's selection changed.
    void showSelection();
    /// The filter's box or fields changed.
    void showFilter();

private:
    QStringList listed(bool selectedOnly) const;
    void takeMapSelection(const QStringList& names);

    QuarryMapView* mMap;
    Controls mControls;
    std::function<void()> mSelectionTaken;
    std::function<void()> mRefresh;
};

} // namespace kilnova
