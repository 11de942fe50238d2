#pragma once

namespace tw {

// The application's launch hook. Closing the window ends the program (the
// GUI application quits on its last window); this is where the usage
// reporting's launch steps run, once, before the window appears.
class AppDelegate {
public:
    void applicationDidFinishLaunching();
    [[nodiscard]] static bool applicationShouldTerminateAfterLastWindowClosed() { return true; }
};

} // namespace tw
