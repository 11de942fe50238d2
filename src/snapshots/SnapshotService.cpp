#include "snapshots/SnapshotService.h"

#include <QStringDecoder>

namespace tw::SnapshotService {

namespace {
// Blanks and tabs only: the lines are already split at line feeds.
QStringView trimBlanks(QStringView text)
{
    auto isBlank = [](QChar c) { return c == u' ' || c == u'\t'; };
    while (!text.isEmpty() && isBlank(text.front()))
        text = text.mid(1);
    while (!text.isEmpty() && isBlank(text.back()))
        text.chop(1);
    return text;
}
} // namespace

QString runTool(const QString& path, const QStringList& arguments, const ProcessRunner& runner)
{
    const std::optional<QByteArray> output = runner.run(path, arguments);
    if (!output)
        return {};
    QStringDecoder decode(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decode(*output);
    if (decode.hasError())
        return {};
    return text;
}

std::vector<Snapshot> listLocalSnapshots(const QString& mountPoint, const ProcessRunner& runner)
{
    const QString output = runTool(QLatin1String(kTool), {QStringLiteral("listlocalsnapshots"), mountPoint}, runner);
    std::vector<Snapshot> snapshots;
    // The one prefix test also drops the heading and any complaint the shared
    // pipe brought in, so a failing tool reads as no snapshots.
    for (QStringView line : QStringView(output).split(u'\n', Qt::SkipEmptyParts)) {
        const QStringView name = trimBlanks(line);
        if (name.startsWith(u"com.apple.TimeMachine."))
            snapshots.push_back(Snapshot{name.toString()});
    }
    return snapshots;
}

QString thinLocalSnapshots(qint64 purgeAmount, const QString& mountPoint, int urgency, const ProcessRunner& runner)
{
    return runTool(QLatin1String(kTool),
                   {QStringLiteral("thinlocalsnapshots"), mountPoint, QString::number(purgeAmount),
                    QString::number(urgency)},
                   runner);
}

} // namespace tw::SnapshotService
