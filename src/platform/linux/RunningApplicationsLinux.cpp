#include "platform/RunningApplications.h"

namespace tw {

QSet<QString> runningBundleIdentifiers()
{
    // Application bundles do not run here: nothing to report.
    return {};
}

} // namespace tw
