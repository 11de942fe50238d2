#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace tw {

// Starts a tool directly, with no shell between, and collects what it says.
// A capability so that tests can put a made-up tool in the system's place.
// Implementations are callable from any thread; run() blocks until the tool
// has ended, so never call it on the GUI thread.
class ProcessRunner {
public:
    virtual ~ProcessRunner() = default;
    // The tool's standard output and standard error as they came, through one
    // pipe; none when the tool could not be started. The exit status is not
    // looked at.
    [[nodiscard]] virtual std::optional<QByteArray> run(const QString& program,
                                                        const QStringList& arguments) const = 0;
};

// The running system's runner; lives for the whole process.
[[nodiscard]] const ProcessRunner& systemProcessRunner();

} // namespace tw
