#pragma once

// The command line's one table of commands and their options: the usage
// text, each command's help and the check of its arguments come from it,
// so a new option is one row here and its handling in its command.

#include <QByteArray>
#include <QByteArrayList>

#include <optional>
#include <span>

namespace tw::cli {

struct Option {
    const char* name;    // "--workers"
    const char* value;   // "N", or nullptr for a flag
    const char* meaning;
};

struct Command {
    const char* name;
    const char* operands; // "PATH", "[ROOT...]"
    const char* summary;
    std::span<const Option> options;
    int (*run)(const QByteArrayList& args); // argv's own bytes after the name
};

[[nodiscard]] std::span<const Command> commands();
[[nodiscard]] const Command* findCommand(const QByteArray& name);

// Every command with its options, for `--help`.
[[nodiscard]] QByteArray toolHelp();
// One command's synopsis and what each of its options means.
[[nodiscard]] QByteArray commandHelp(const Command& command);

// What is wrong with `args` as far as the table knows: an option the command
// does not have, or one that lacks its value. Operands (anything not
// starting with "--", and everything after a lone "--") are the command's.
[[nodiscard]] std::optional<QByteArray> misuse(const Command& command, const QByteArrayList& args);

// A wrong command line: one line on stderr naming `command` (or the tool when
// null) and `what`, and the exit status 2.
int usageError(const char* command, const QByteArray& what);

} // namespace tw::cli
