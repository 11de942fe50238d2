#include "Commands.h"

#include "AppsCommand.h"
#include "FeedCommand.h"
#include "SavedScanCommands.h"
#include "ScanCommand.h"
#include "TrashCommand.h"
#include "UninstallCommand.h"

#include <QStringList>

#include <cstdio>

namespace tw::cli {

namespace {

int runFeedBytes(const QByteArrayList& args)
{
    QStringList texts;
    for (const QByteArray& arg : args)
        texts.append(QString::fromLocal8Bit(arg));
    return runFeed(texts);
}

constexpr Option kScanOptions[] = {
    {"--workers", "N", "walk with N workers (default: chosen by the disk)"},
    {"--depth", "N", "print the tree N levels deep (default 2; JSON: all)"},
    {"--json", nullptr, "print the tree as JSON"},
    {"--quiet", nullptr, "no progress line (it shows only on a terminal)"},
    {"--export", "FILE", "also save the scan to FILE (- for standard output, then nothing else)"},
    {"--find", "PATTERN", "print the items whose names match, largest first (* and ? as wildcards)"},
};
constexpr Option kOpenOptions[] = {
    {"--json", nullptr, "print the tree as JSON, as scan --json does"},
    {"--depth", "N", "print the tree N levels deep (JSON: all)"},
};
constexpr Option kDiffOptions[] = {
    {"--top", "N", "only the N largest changes"},
    {"--json", nullptr, "print the changes as JSON"},
};
constexpr Option kTrashOptions[] = {
    {"--json", nullptr, "print the outcome as JSON"},
};
constexpr Option kRelatedOptions[] = {
    {"--home", "DIR", "the home folder whose Library is searched"},
    {"--system-library", "DIR", "the system Library folder (default /Library)"},
};
constexpr Option kUninstallOptions[] = {
    {"--home", "DIR", "the home folder whose Library is searched"},
    {"--system-library", "DIR", "the system Library folder (default /Library)"},
    {"--include-shared", nullptr, "also choose the items other applications may share"},
    {"--dry-run", nullptr, "print the plan, move nothing"},
    {"--json", nullptr, "print the plan and outcome as JSON"},
};
constexpr Option kFeedOptions[] = {
    {"--base", "URL", "the feed's address (default: $TIDEWICK_API_BASE or the product's)"},
    {"--locale", "CODE", "the language asked for: en, ru, de or zh"},
};

constexpr Command kCommands[] = {
    {"scan", "PATH", "walk PATH and print its sizes", kScanOptions, runScan},
    {"trash", "PATH...", "move the paths to the Trash", kTrashOptions, runTrash},
    {"apps", "[ROOT...]", "list the applications under the roots, sized, as JSON", {}, runApps},
    {"related", "BUNDLE", "the files the application left behind, with reasons, as JSON", kRelatedOptions,
     runRelated},
    {"uninstall", "BUNDLE", "move the application and its chosen leftovers to the Trash", kUninstallOptions,
     runUninstall},
    {"feed", "", "the current sponsored item, or why there is none", kFeedOptions, runFeedBytes},
    {"open", "FILE", "read a saved scan (Tidewick's or ncdu's format, plain or zstd) and print it", kOpenOptions,
     runOpen},
    {"diff", "OLD NEW", "what changed between two saved scans of one folder, largest first", kDiffOptions, runDiff},
};

QByteArray synopsis(const Command& command)
{
    QByteArray line = QByteArray("tidewick-cli ") + command.name;
    if (*command.operands)
        line += QByteArray(" ") + command.operands;
    for (const Option& option : command.options) {
        line += QByteArray(" [") + option.name;
        if (option.value)
            line += QByteArray(" ") + option.value;
        line += ']';
    }
    return line;
}

} // namespace

std::span<const Command> commands()
{
    return kCommands;
}

const Command* findCommand(const QByteArray& name)
{
    for (const Command& command : kCommands)
        if (name == command.name)
            return &command;
    return nullptr;
}

QByteArray toolHelp()
{
    QByteArray text = "usage: tidewick-cli COMMAND [ARGUMENTS]\n"
                      "       tidewick-cli --help | --version\n"
                      "       tidewick-cli COMMAND --help\n\ncommands:\n";
    for (const Command& command : kCommands)
        text += QByteArray("  ") + synopsis(command).mid(int(sizeof "tidewick-cli ") - 1) + "\n      " +
                command.summary + '\n';
    return text;
}

QByteArray commandHelp(const Command& command)
{
    QByteArray text = "usage: " + synopsis(command) + "\n\n" + command.summary + "\n";
    if (!command.options.empty())
        text += "\noptions:\n";
    for (const Option& option : command.options) {
        QByteArray flag = QByteArray("  ") + option.name;
        if (option.value)
            flag += QByteArray(" ") + option.value;
        text += flag.leftJustified(24, ' ') + ' ' + option.meaning + '\n';
    }
    return text;
}

std::optional<QByteArray> misuse(const Command& command, const QByteArrayList& args)
{
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QByteArray& arg = args[i];
        if (arg == "--")
            return std::nullopt;
        if (!arg.startsWith("--"))
            continue;
        const Option* known = nullptr;
        for (const Option& option : command.options)
            if (arg == option.name)
                known = &option;
        if (!known)
            return "unknown option " + arg;
        if (known->value && ++i >= args.size())
            return arg + " needs a value (" + known->value + ")";
    }
    return std::nullopt;
}

int usageError(const char* command, const QByteArray& what)
{
    const QByteArray who = command ? QByteArray("tidewick-cli ") + command : QByteArray("tidewick-cli");
    std::fprintf(stderr, "%s: %s (see '%s --help')\n", who.constData(), what.constData(), who.constData());
    return 2;
}

} // namespace tw::cli
