// The elevated runner for removal tests: records the script and answers as told.

#pragma once

#include "removal/PrivilegedRemoval.h"

namespace tw::test {

// Stands in for the password prompt: records the script, and either runs
// nothing (dismissed, or silent) or says something.
class ScriptedRunner : public ElevatedRunner {
public:
    QByteArray trashDirectory() const override { return "/home/u/.Trash"; }
    ScriptTools tools() const override { return macScriptTools(); }
    Result run(const QByteArray& script, const std::vector<StagedItem>&) override
    {
        scripts.append(script);
        Result result;
        result.launched = launches;
        result.launchError = QStringLiteral("No such file or directory");
        result.dismissed = dismissed;
        result.errorOutput = says;
        return result;
    }
    QByteArrayList scripts;
    bool launches = true;
    bool dismissed = false;
    QByteArray says;
};


} // namespace tw::test
