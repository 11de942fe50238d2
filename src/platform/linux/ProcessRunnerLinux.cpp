#include "platform/ProcessRunner.h"

#include <QProcess>

namespace tw {

namespace {
class QProcessRunner final : public ProcessRunner {
public:
    std::optional<QByteArray> run(const QString& program, const QStringList& arguments) const override
    {
        QProcess process;
        // One pipe for both, so that a tool's complaint lands in the same text.
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(program, arguments, QIODevice::ReadOnly);
        if (!process.waitForStarted(-1))
            return std::nullopt;
        QByteArray output;
        while (process.waitForReadyRead(-1))
            output += process.readAll();
        process.waitForFinished(-1);
        output += process.readAll();
        return output;
    }
};
} // namespace

const ProcessRunner& systemProcessRunner()
{
    // Never destroyed: a tool call on a worker thread may still be running
    // when the process exits.
    static const QProcessRunner* const runner = new QProcessRunner;
    return *runner;
}

} // namespace tw
