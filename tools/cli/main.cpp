// tidewick-cli: runs Tidewick's own engines from a shell, for inspection and
// for the benchmarks. Not part of the app.

#include "Commands.h"

#include <QCoreApplication>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace {
// Output that did not reach its file (a full disk, a closed pipe) fails the
// command, whatever the command itself thought of its work.
int finish(int code)
{
    errno = 0;
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
        std::fprintf(stderr, "tidewick-cli: cannot write the output: %s\n",
                     errno ? std::strerror(errno) : "write error");
        return code ? code : 1;
    }
    return code;
}

int run(int argc, char* argv[])
{
    using namespace tw::cli;
    if (argc < 2)
        return usageError(nullptr, "no command given");
    const QByteArray first(argv[1]);
    if (first == "--help" || first == "-h") {
        std::fputs(toolHelp().constData(), stdout);
        return 0;
    }
    if (first == "--version") {
        std::fputs("tidewick-cli " TIDEWICK_VERSION "\n", stdout);
        return 0;
    }
    const Command* command = findCommand(first);
    if (!command)
        return usageError(nullptr, "unknown command " + first);
    // File names are bytes: take them from argv as they came.
    QByteArrayList raw;
    for (int i = 2; i < argc; ++i)
        raw.append(QByteArray(argv[i]));
    if (raw.contains("--help") || raw.contains("-h")) {
        std::fputs(commandHelp(*command).constData(), stdout);
        return 0;
    }
    if (const auto wrong = misuse(*command, raw))
        return usageError(command->name, *wrong);
    return command->run(raw);
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    return finish(run(argc, argv));
}
