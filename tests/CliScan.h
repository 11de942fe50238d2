#pragma once

// Runs `tidewick-cli scan` from tests that need a process of its own: another
// user, or limits set for the child only. For test programs built with
// TIDEWICK_CLI.

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

namespace tw::test {

// As root, the child runs as "nobody", so that folder modes hold for it.
// False when there is no such user.
inline bool runAsNobodyIfRoot(QProcess& process)
{
    if (::geteuid() != 0)
        return true;
    const passwd* nobody = ::getpwnam("nobody");
    if (!nobody)
        return false;
    const uid_t uid = nobody->pw_uid;
    const gid_t gid = nobody->pw_gid;
    process.setChildProcessModifier([uid, gid] {
        if (::setgroups(0, nullptr) != 0 || ::setgid(gid) != 0 || ::setuid(uid) != 0)
            ::_exit(99);
    });
    return true;
}

// `tidewick-cli scan PATH --json --quiet EXTRA...` in `process`: its JSON, or
// an empty object when it did not end well.
inline QJsonObject scanWithCli(QProcess& process, const QByteArray& path, const QStringList& extra = {})
{
    process.start(QStringLiteral(TIDEWICK_CLI),
                  QStringList{QStringLiteral("scan"), QFile::decodeName(path), QStringLiteral("--json"),
                              QStringLiteral("--quiet")}
                      + extra);
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        return {};
    return QJsonDocument::fromJson(process.readAllStandardOutput()).object();
}

} // namespace tw::test
