#pragma once

#include <QString>

namespace kilnova {

/// Opens the window on a project without waiting for anyone and saves a picture of it, or of one
/// of its table dialogs, as PNG: for the screenshots of the documentation.
class ScreenshotTaker final {
public:
    ScreenshotTaker() = delete;

    /// dialog is empty for the main window, else "view-TABLE", "modify-TABLE" or "form-TABLE"
    /// (the record form of the third row, which the list shows selected), TABLE one of blast,
    /// stockpile, crude, clinker, additives, coal; "optimize-blasts", "optimize-map" (after Optimize)
    /// and "optimize-results" for Optimize > Blasts on the project's settings; "optimize-stockpiles"
    /// and "stockpile-results" for Optimize > Stockpiles; "update-actual" for the Update Actual
    /// Stockpiles dialog; "optimize-clinker" and "clinker-results" for Optimize > Clinker;
    /// "combine-blasts" for Optimize > Analyse Blast Combinations with every blast chosen; "about"
    /// for Help > About. Returns the exit status.
    static int run(const QString& project, const QString& dialog, const QString& output);
};

} // namespace kilnova
