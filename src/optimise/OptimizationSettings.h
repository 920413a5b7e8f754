#pragma once

#include "chemistry/Elements.h"
#include "optimise/ConstraintList.h"

#include <QString>
#include <QStringList>

#include <array>
#include <optional>
#include <vector>

namespace kilnova {

/// What every optimisation dialog holds alike, with its rules: the "Optimize:" choice and the
/// element, the target and the requested tonnage, the constraint list with its two refusals, the
/// order of a selection, and the least number of sources. Each kind's dialog state derives from it,
/// so the dialogs, the command line and the tests share one copy of these rules.
class OptimizationSettings {
public:
    /// The choices of "Optimize:", in their order: Minimize, Maximize, Target, Maximize Tonnage.
    static const QStringList& modeChoiceNames();
    /// Mode value of a choice position: Minimize -1, Maximize 1, Target 0, Maximize Tonnage 2; no
    /// choice (-1) gives -1.
    static int modeOfChoice(int position);
    static int choiceOfMode(int mode);
    /// Names in the order a source list shows them (by name, as the database sorts), whoever passes
    /// them: the blend can depend on the order of the sources when several are equally good.
    static QStringList inListOrder(QStringList names);
    /// Where every optimisation writes its first programme (debug.txt): a fixed per-user data folder.
    static QString debugFilePath();
    /// "Please, select at least 2 sources" for fewer than two.
    static std::optional<QString> sourceCountRefusal(qsizetype selected);

    /// `modeChoices` are the choices of "Optimize:" in their order (a prefix of Minimize, Maximize,
    /// Target, Maximize Tonnage); `propertyNames` the names the constraint list offers, of which the
    /// first `optimisable` can also be optimised.
    OptimizationSettings(QStringList modeChoices, QStringList propertyNames, int optimisable);

    const QStringList& modeChoiceList() const { return mModeChoices; }
    /// How many properties, from the first, can be optimised (the element choice's length).
    int optimisableCount() const { return mOptimisable; }
    /// The names the constraint list offers, in property order.
    const QStringList& propertyNames() const { return mConstraints.names(); }
    /// The property of a name as the lists show it, or as its column is called ("Cost Factor" or
    /// "CostFactor"); nothing for a name that is neither.
    std::optional<int> propertyOfName(const QString& name) const;
    int modeChoice() const { return mModeChoice; }
    void setModeChoice(int position) { mModeChoice = position; }
    int mode() const { return modeOfChoice(mModeChoice); }
    int element() const { return mElement; }
    void setElement(int element) { mElement = element; }
    double target() const { return mTarget; }
    void setTarget(double target) { mTarget = target; }
    double requestedTonnage() const { return mRequestedTonnage; }
    void setRequestedTonnage(double tonnes) { mRequestedTonnage = tonnes; }
    bool targetEnabled() const { return mode() == 0; }

    // Constraints, in list order.
    const ConstraintList& constraintList() const { return mConstraints; }
    const std::vector<int>& constraintElements() const { return mConstraints.order(); }
    const ConstraintEntry& constraint(int element) const { return mConstraints.entry(element); }
    QStringList constraintTexts() const { return mConstraints.texts(); }
    /// The refusal message, or nothing when the constraint was added at the end of the list.
    std::optional<QString> addConstraint(int element, double minimum, double maximum);
    /// Replaces the constraint at a list row in place.
    std::optional<QString> modifyConstraint(int row, int element, double minimum, double maximum);
    void removeConstraint(int row);
    /// The 22 entries, for the kinds whose constraints are on the elements.
    std::array<ConstraintEntry, kElementCount> elementConstraints() const;

protected:
    ~OptimizationSettings() = default;
    /// Fills the objective and the constraints from stored settings; `order` is the list order when
    /// the settings keep one (ConstraintList::assign).
    void loadSettings(int mode, int element, double target, double requestedTonnage,
                      const std::vector<ConstraintEntry>& constraints, const std::vector<int>& order = {});
    /// The property of a stored name ("Cost Factor" or "CostFactor"); the first for an unknown one.
    int elementOfName(const QString& name) const { return propertyOfName(name).value_or(0); }

private:
    std::optional<int> targeted() const;

    QStringList mModeChoices;
    int mOptimisable;
    int mModeChoice = 1;
    int mElement = 0;
    double mTarget = 0.0;
    double mRequestedTonnage = 0.0;
    ConstraintList mConstraints;
};

} // namespace kilnova
