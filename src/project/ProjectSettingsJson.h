#pragma once

#include <QJsonObject>

namespace kilnova {

struct ProjectSettings;

/// Every stored setting of a project as JSON, for reading and scripting (`kilnova-cli project show`).
/// Per-element entries carry their element name; single-precision values are written by their
/// shortest decimal form (4.071, not 4.0710000991821289).
QJsonObject projectSettingsToJson(const ProjectSettings& settings);

} // namespace kilnova
