#include "removal/Restore.h"

#include "localization/LocalizationManager.h"
#include "platform/Trash.h"

#include <QFile>
#include <QStringList>
#include <sys/stat.h>

namespace tw {

namespace {
QString text(const char* key)
{
    return LocalizationManager::shared().string(QString::fromLatin1(key));
}

// lstat: a link standing at the original place takes it as much as a file.
bool present(const QByteArray& path)
{
    struct stat facts {};
    return ::lstat(path.constData(), &facts) == 0;
}
} // namespace

RestoreOutcome restoreFromTrash(const QList<TrashedItem>& items, Trash& trash)
{
    RestoreOutcome outcome;
    for (const TrashedItem& item : items) {
        // An item moved with administrator rights belongs to another user in
        // a folder of ours inside the Trash. Putting it back would mean
        // running as the administrator on a path that a program of the user
        // could have swapped in the meantime, into a folder the user may not
        // write: we name it instead, and the Trash's own "Put Back" (which
        // asks for the password itself) remains the way.
        QString why;
        if (item.place.isEmpty())
            why = text("restore.adminMoved");
        else if (!present(item.place))
            why = text("restore.notInTrash");
        else if (present(item.original))
            why = text("restore.placeTaken");
        else if (const auto failure = trash.restore(item.place, item.original))
            why = *failure;
        if (why.isEmpty())
            outcome.restored.append(item.original);
        else
            outcome.failed.append({item.original, why});
    }
    return outcome;
}

QString restoreFailureLines(const QList<std::pair<QByteArray, QString>>& failed)
{
    QStringList lines;
    for (const auto& [path, message] : failed)
        lines.append(QStringLiteral("• ") + QFile::decodeName(path.mid(path.lastIndexOf('/') + 1)) +
                     QStringLiteral(": ") + message);
    return lines.join(u'\n');
}

} // namespace tw
