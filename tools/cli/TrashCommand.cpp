#include "TrashCommand.h"

#include "Commands.h"

#include "removal/Recycle.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <cstdio>

namespace tw::cli {

int runTrash(const QByteArrayList& args)
{
    bool json = false;
    bool operandsOnly = false;
    QList<QByteArray> paths;
    for (const QByteArray& arg : args) {
        if (!operandsOnly && arg == "--")
            operandsOnly = true;
        else if (!operandsOnly && arg == "--json")
            json = true;
        else
            paths.append(arg);
    }
    if (paths.isEmpty())
        return usageError("trash", "needs at least one PATH");
    const BatchOutcome outcome = recycleBatch(paths);
    if (json) {
        // Names that are not UTF-8 are shown with replacement characters here;
        // the move itself used their bytes.
        QJsonArray moved;
        for (const QByteArray& path : outcome.succeeded)
            moved.append(QString::fromUtf8(path));
        QJsonArray failed;
        for (const auto& [path, message] : outcome.failed)
            failed.append(QJsonObject{{QStringLiteral("path"), QString::fromUtf8(path)},
                                      {QStringLiteral("message"), message}});
        const QJsonObject result{{QStringLiteral("succeeded"), moved},
                                 {QStringLiteral("failed"), failed}};
        std::fputs(QJsonDocument(result).toJson(QJsonDocument::Indented).constData(), stdout);
    } else {
        for (const QByteArray& path : outcome.succeeded)
            std::printf("moved   %s\n", path.constData());
        for (const auto& [path, message] : outcome.failed)
            std::printf("FAILED  %s: %s\n", path.constData(), message.toUtf8().constData());
    }
    return outcome.failed.isEmpty() ? 0 : 1;
}

} // namespace tw::cli
