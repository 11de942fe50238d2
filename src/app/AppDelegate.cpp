#include "app/AppDelegate.h"

namespace tw {

void AppDelegate::applicationDidFinishLaunching()
{
    // The usage reporting is not part of this build yet; its launch steps
    // (configure, default parameters, the language property) go here.
}

} // namespace tw
