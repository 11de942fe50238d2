#pragma once

// Moving items the user may not move into the user's own Trash as the
// superuser: one shell script for the whole list, one password prompt. Every
// path enters the script through shellQuoted() and no other way, so a name
// reaches mv as the very bytes it was and never becomes a command. The script
// moves; it never removes anything.

#include "platform/ElevatedRunner.h"
#include "removal/Recycle.h"

#include <QByteArray>
#include <QList>
#include <vector>

namespace tw {

// The text in single quotes, each single quote written as '\'' .
[[nodiscard]] QByteArray shellQuoted(const QByteArray& text);

// "move_status=0", one line per item (mkdir -m 700 of a fresh staging
// directory named by a UUID inside `trashDirectory`, chown to our own ids,
// mv -n into it), then `exit "$move_status"`; joined by line feeds. The
// staging directories, in item order, go to `stagingDirectories` if given.
[[nodiscard]] QByteArray
makePrivilegedTrashScript(const QList<QByteArray>& paths, const QByteArray& trashDirectory,
                          const ScriptTools& tools,
                          std::vector<QByteArray>* stagingDirectories = nullptr);
// The macOS tools the script calls.
[[nodiscard]] ScriptTools macScriptTools();

// `do shell script "…" with administrator privileges`, backslashes doubled
// first, then double quotes escaped.
[[nodiscard]] QByteArray appleScriptFor(const QByteArray& script);

// Runs the script for `paths` through `runner` and lets the file system
// judge: an item gone from its place has moved (unless the runner says it
// never became a whole Trash entry), one still there failed with
// the tool's words ("trash.userCancelled" for a dismissed prompt,
// "trash.adminFailed" when the tool said nothing). Blocks for as long as the
// prompt is open: worker threads only.
[[nodiscard]] BatchOutcome privilegedRecycle(const QList<QByteArray>& paths,
                                             ElevatedRunner& runner);

} // namespace tw
