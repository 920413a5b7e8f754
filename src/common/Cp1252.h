#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>

namespace kilnova {

// Windows code page 1252, the single-byte encoding of every text in a project file. The five bytes the
// code page leaves undefined (0x81, 0x8D, 0x8F, 0x90, 0x9D) decode to the C1 controls of the same value,
// so any byte string survives a decode and encode unchanged.

/// Encodes text; a character the code page cannot represent becomes '?' (one per character, also for
/// characters outside the Basic Multilingual Plane).
QByteArray toCp1252(QStringView text);

/// Decodes bytes; every byte maps to exactly one character.
QString fromCp1252(QByteArrayView bytes);

} // namespace kilnova
