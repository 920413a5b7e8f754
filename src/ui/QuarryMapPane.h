#pragma once

#include <QWidget>

class QComboBox;

namespace kilnova {

class QuarryMapView;
class UserPrompt;

/// The quarry map with its controls, as the blast dialogs show it: the element that colours the
/// blasts, "Fit" and "Save picture…" (PNG, PDF or SVG).
class QuarryMapPane final : public QWidget {
    Q_OBJECT
public:
    explicit QuarryMapPane(UserPrompt& ui, QWidget* parent = nullptr);

    QuarryMapView* view() const { return mView; }
    QComboBox* elementChoice() const { return mElement; }

    /// Asks for a file name and writes the map as it is shown; false when cancelled or not written
    /// (the user is told why).
    bool savePicture();
    /// Writes the map as it is shown, at least 1000 pixels wide; the message when it cannot.
    std::optional<QString> writePicture(const QString& path) const;

private:
    UserPrompt& mUi;
    QuarryMapView* mView;
    QComboBox* mElement;
};

} // namespace kilnova
