#pragma once

#include <QString>

#include <memory>

namespace tw {

class AnalyticsSink;

// The application's launch hook. Closing the window ends the program (the
// GUI application quits on its last window); this is where the usage
// reporting's launch steps run, once, before the window appears.
class AppDelegate {
public:
    // Where a deployment puts its analytics configuration inside the program.
    static constexpr const char* kAnalyticsConfigResource = ":/analytics/analytics.json";

    // Configures the usage reporting with `sink`, or when it is null with
    // the sink the deployment's configuration asks for (none: nothing sent),
    // sets the user property and the default parameter, and logs
    // "app_launched". GUI thread.
    void applicationDidFinishLaunching(std::shared_ptr<AnalyticsSink> sink = nullptr);
    [[nodiscard]] static bool applicationShouldTerminateAfterLastWindowClosed() { return true; }

    // The sink for this installation: the Measurement Protocol sender when a
    // configuration is found (environment, then the resource), else none.
    [[nodiscard]] static std::shared_ptr<AnalyticsSink> makeSink(const QString& configResource);
};

} // namespace tw
