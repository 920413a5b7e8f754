#pragma once

#include "common/UserPrompt.h"

namespace kilnova {

/// The user of an unattended run of the window (screenshots): answers No, chooses nothing, and
/// writes every message to standard error instead of waiting for a click.
class QuietPrompt final : public UserPrompt {
public:
    bool askYesNo(const QString& question) override;
    void showMessage(const QString& text, Icon icon, const QString& details) override;
    std::optional<QString> chooseFile(const FileRequest& request) override;
    std::optional<QString> askText(const QString& prompt, const QString& initial) override;
};

} // namespace kilnova
