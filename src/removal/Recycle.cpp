#include "removal/Recycle.h"

#include "localization/LocalizationManager.h"
#include "localization/TextFormat.h"
#include "platform/ElevatedRunner.h"
#include "platform/Trash.h"
#include "removal/PrivilegedRemoval.h"

#include <QFile>
#include <sys/stat.h>

namespace tw {

namespace {
// The existence test follows links, so a dangling link counts as missing.
bool exists(const QByteArray& path)
{
    struct stat facts {};
    return ::stat(path.constData(), &facts) == 0;
}

// Only English words lead to the administrator prompt, whatever the
// system's language: a failure reported in another language stays failed.
bool needsAdministrator(const QString& message)
{
    const QString lower = message.toLower();
    return lower.contains(QLatin1String("permission")) ||
           lower.contains(QLatin1String("not permitted"));
}
QString messageFor(const Trash::Failure& failure)
{
    if (failure.noUsableTrash)
        return fillText(uiText("trash.noUsableTrash"), QFile::decodeName(failure.trash));
    return failure.message;
}
} // namespace

TrashError TrashError::failed(QString message)
{
    TrashError error;
    error.m_kind = Kind::failed;
    error.m_message = std::move(message);
    return error;
}

TrashError TrashError::partial(QList<QByteArray> succeeded,
                               QList<std::pair<QByteArray, QString>> failed)
{
    TrashError error;
    error.m_kind = Kind::partial;
    error.m_succeeded = std::move(succeeded);
    error.m_failed = std::move(failed);
    return error;
}

QString TrashError::errorDescription() const
{
    if (m_kind == Kind::failed)
        return m_message;
    QStringList lines;
    for (const auto& [path, message] : m_failed) {
        const QByteArray name = path.mid(path.lastIndexOf('/') + 1);
        lines.append(QStringLiteral("• ") + QFile::decodeName(name) + QStringLiteral(": ") +
                     message);
    }
    return QStringLiteral("Deleted: ") + QString::number(m_succeeded.size()) +
           QStringLiteral(". Failed: ") + QString::number(m_failed.size()) +
           QStringLiteral(".\n\n") + lines.join(u'\n');
}

QByteArray recycle(const QByteArray& path, Trash& trash)
{
    const Trash::Answer answer = trash.recycle({path});
    if (const auto failure = answer.failures.constFind(path); failure != answer.failures.cend())
        throw TrashError::failed(messageFor(*failure));
    if (answer.error)
        throw TrashError::failed(*answer.error);
    const auto moved = answer.moved.constFind(path);
    if (moved == answer.moved.cend())
        throw TrashError::failed(uiText("trash.needsAdmin"));
    return *moved;
}

QByteArray recycle(const QByteArray& path)
{
    return recycle(path, systemTrash());
}

BatchOutcome recycleBatch(const QList<QByteArray>& paths, Trash& trash, ElevatedRunner& runner)
{
    BatchOutcome outcome;
    QList<QByteArray> existing;
    for (const QByteArray& path : paths) {
        if (exists(path))
            existing.append(path);
        else
            outcome.failed.append({path, uiText("trash.fileNotFound")});
    }
    if (existing.isEmpty())
        return outcome;

    const Trash::Answer answer = trash.recycle(existing);
    QList<QByteArray> needsAdmin;
    for (const QByteArray& path : existing) {
        if (const auto moved = answer.moved.constFind(path); moved != answer.moved.cend()) {
            outcome.succeeded.append(path);
            outcome.places.insert(path, *moved);
            continue;
        }
        const auto failure = answer.failures.constFind(path);
        const QString message = failure != answer.failures.cend() ? messageFor(*failure)
                                : answer.error                    ? *answer.error
                                                                  : uiText("trash.cannotMove");
        const bool noUsableTrash = failure != answer.failures.cend() && failure->noUsableTrash;
        if (!noUsableTrash && needsAdministrator(message))
            needsAdmin.append(path);
        else
            outcome.failed.append({path, message});
    }
    if (needsAdmin.isEmpty())
        return outcome;

    const BatchOutcome privileged = privilegedRecycle(needsAdmin, runner);
    outcome.succeeded.append(privileged.succeeded);
    outcome.failed.append(privileged.failed);
    return outcome;
}

BatchOutcome recycleBatch(const QList<QByteArray>& paths)
{
    return recycleBatch(paths, systemTrash(), systemElevatedRunner());
}

} // namespace tw
