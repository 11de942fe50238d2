#include "removal/PrivilegedRemoval.h"

#include "localization/LocalizationManager.h"
#include "localization/TextFormat.h"

#include <QFile>
#include <QUuid>
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace tw {

namespace {
// Only a name that is gone has moved; one we may not look at is not known
// to have.
bool stillThere(const QByteArray& path)
{
    struct stat facts {};
    return ::lstat(path.constData(), &facts) == 0 || (errno != ENOENT && errno != ENOTDIR);
}
} // namespace

QByteArray shellQuoted(const QByteArray& text)
{
    QByteArray quoted = text;
    quoted.replace('\'', "'\\''");
    return '\'' + quoted + '\'';
}

ScriptTools macScriptTools()
{
    return {"/bin/mkdir", "/usr/sbin/chown", "/bin/mv"};
}

QByteArray makePrivilegedTrashScript(const QList<QByteArray>& paths,
                                     const QByteArray& trashDirectory, const ScriptTools& tools,
                                     std::vector<QByteArray>* stagingDirectories)
{
    const QByteArray user = QByteArray::number(::getuid());
    const QByteArray group = QByteArray::number(::getgid());
    QByteArrayList lines{QByteArrayLiteral("move_status=0")};
    const QByteArray trash = trashDirectory.endsWith('/') ? trashDirectory : trashDirectory + '/';
    for (const QByteArray& path : paths) {
        // A fresh directory per item: no two items can collide, with each
        // other or with what the Trash already holds.
        const QByteArray staging =
            trash + QUuid::createUuid().toByteArray(QUuid::WithoutBraces).toUpper();
        if (stagingDirectories)
            stagingDirectories->push_back(staging);
        const QByteArray quotedStaging = shellQuoted(staging);
        lines.append(tools.mkdir + " -m 700 " + quotedStaging + " && " + tools.chown + ' ' + user +
                     ':' + group + ' ' + quotedStaging + " && " + tools.mv + " -n " +
                     shellQuoted(path) + ' ' + shellQuoted(staging + '/') + " || move_status=1");
    }
    lines.append(QByteArrayLiteral("exit \"$move_status\""));
    return lines.join('\n');
}

QByteArray appleScriptFor(const QByteArray& script)
{
    QByteArray escaped = script;
    // In this order: the backslashes added for the quotes must not be doubled.
    escaped.replace('\\', "\\\\");
    escaped.replace('"', "\\\"");
    return "do shell script \"" + escaped + "\" with administrator privileges";
}

BatchOutcome privilegedRecycle(const QList<QByteArray>& paths, ElevatedRunner& runner)
{
    BatchOutcome outcome;
    std::vector<QByteArray> staging;
    const QByteArray script =
        makePrivilegedTrashScript(paths, runner.trashDirectory(), runner.tools(), &staging);
    std::vector<ElevatedRunner::StagedItem> items;
    for (qsizetype i = 0; i < paths.size(); ++i)
        items.push_back({staging[std::size_t(i)], paths[i]});
    const ElevatedRunner::Result result = runner.run(script, items);
    if (!result.launched) {
        const QString message = fillText(uiText("trash.cannotLaunchOsa"), result.launchError);
        for (const QByteArray& path : paths)
            outcome.failed.append({path, message});
        return outcome;
    }
    QString said = QString::fromUtf8(result.errorOutput);
    if (said.contains(QChar::ReplacementCharacter))
        said.clear(); // not UTF-8
    said = said.trimmed();
    const QString lower = said.toLower();
    QString message;
    if (result.dismissed || lower.contains(QLatin1String("canceled")) ||
        lower.contains(QLatin1String("cancelled")))
        message = uiText("trash.userCancelled");
    else if (said.isEmpty())
        message = uiText("trash.adminFailed");
    else
        message = said;
    // The file system is the judge, not the tool's exit status.
    for (qsizetype i = 0; i < paths.size(); ++i) {
        if (stillThere(paths[i])) {
            outcome.failed.append({paths[i], message});
        } else if (const auto where = result.unfiled.constFind(paths[i]);
                   where != result.unfiled.cend()) {
            // Out of its place is not yet in the Trash: without its entry no
            // file manager lists it, so the user must hear where it went.
            outcome.failed.append(
                {paths[i], fillText(uiText("trash.notFiled"), QFile::decodeName(*where))});
        } else {
            outcome.succeeded.append(paths[i]);
        }
    }
    return outcome;
}

} // namespace tw
