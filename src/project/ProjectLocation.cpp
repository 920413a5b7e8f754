#include "project/ProjectLocation.h"

#include "common/MessageTable.h"
#include "common/UserPrompt.h"

#include <QDir>
#include <QFileInfo>

namespace kilnova {

namespace {

QString folderOf(const QString& file)
{
    return QDir::cleanPath(QFileInfo(file).absolutePath());
}

bool isUnder(const QString& path, const QString& folder)
{
    return path.startsWith(folder.endsWith(u'/') ? folder : folder + u'/');
}

bool sameFile(const QString& a, const QString& b)
{
    const QString ca = QFileInfo(a).canonicalFilePath();
    return a == b || (!ca.isEmpty() && ca == QFileInfo(b).canonicalFilePath());
}

} // namespace

ProjectLocation::Check ProjectLocation::check(const QString& documentPath, const QString& storedDatabase)
{
    Check c;
    if (storedDatabase.isEmpty())
        return c;
    c.stored = QDir::cleanPath(QFileInfo(storedDatabase).absoluteFilePath());
    c.storedExists = QFileInfo(c.stored).isFile();
    const QString folder = folderOf(documentPath);
    c.storedInside = isUnder(c.stored, folder);
    // The stored file name beside the document, then in the folder the stored one had.
    const QFileInfo stored(c.stored);
    const QString parent = QFileInfo(stored.absolutePath()).fileName();
    QStringList candidates{QDir(folder).filePath(stored.fileName())};
    if (!parent.isEmpty())
        candidates << QDir(folder).filePath(parent + u'/' + stored.fileName());
    for (const QString& candidate : candidates) {
        if (QFileInfo(candidate).isFile() && !sameFile(candidate, c.stored)) {
            c.beside = QDir::cleanPath(candidate);
            break;
        }
    }
    return c;
}

QString ProjectLocation::ask(UserPrompt& ui, const Check& check)
{
    if (!check.beside)
        return check.stored;
    const QString stored = QDir::toNativeSeparators(check.stored);
    const QString beside = QDir::toNativeSeparators(*check.beside);
    const QString question = check.storedExists ? message(Msg::DatabaseOutsideProject, {stored, beside})
                                                : message(Msg::DatabaseNotThere, {stored, beside});
    const QStringList answers{message(Msg::UseDatabaseBeside),
                              message(check.storedExists ? Msg::UseDatabaseNamed : Msg::LeaveUnconnected)};
    return ui.askChoice(question, answers, 1) == 0 ? *check.beside : check.stored;
}

std::optional<QString> ProjectLocation::copyTarget(const QString& oldDocument, const QString& newDocument,
                                                   const QString& database)
{
    if (oldDocument.isEmpty() || database.isEmpty())
        return std::nullopt;
    const QString oldFolder = folderOf(oldDocument);
    const QString newFolder = folderOf(newDocument);
    const QString stored = QDir::cleanPath(QFileInfo(database).absoluteFilePath());
    if (newFolder == oldFolder || !isUnder(stored, oldFolder))
        return std::nullopt;
    return QDir::cleanPath(QDir(newFolder).filePath(QDir(oldFolder).relativeFilePath(stored)));
}

} // namespace kilnova
