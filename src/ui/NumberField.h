#pragma once

#include <QLineEdit>

#include <optional>

namespace kilnova {

/// A text box for one number, shown the way the platform formats a float; it accepts whatever the
/// user types, and value() tells whether that parses as a number.
class NumberField final : public QLineEdit {
    Q_OBJECT
public:
    explicit NumberField(QWidget* parent = nullptr);

    void setValue(double value);
    std::optional<double> value() const;
};

class UserPrompt;

/// Checks that a field holds a number; otherwise asks for one, focuses the field and returns nothing.
std::optional<double> requireNumber(NumberField* field, UserPrompt& ui);

} // namespace kilnova
