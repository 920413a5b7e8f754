#include "ui/RecentFiles.h"

#include <QFileInfo>
#include <QSettings>

namespace kilnova {

namespace {
const char* const kKey = "RecentFiles";
}

QStringList RecentFiles::files() const
{
    return QSettings().value(kKey).toStringList().mid(0, kMaximum);
}

void RecentFiles::add(const QString& path)
{
    const QString absolute = QFileInfo(path).absoluteFilePath();
    QStringList list = files();
    list.removeAll(absolute);
    list.prepend(absolute);
    QSettings().setValue(kKey, list.mid(0, kMaximum));
}

void RecentFiles::remove(const QString& path)
{
    QStringList list = files();
    list.removeAll(QFileInfo(path).absoluteFilePath());
    QSettings().setValue(kKey, list);
}

} // namespace kilnova
