#pragma once

#include <QMap>
#include <QString>

#include <variant>

namespace tw {

// The ten usage events. Their wire names and parameters (name and JSON type)
// are the contract with the analytics service. No path, file name or text the
// user typed ever goes into one.
enum class AnalyticsEvent {
    appLaunched,
    scanStartedHome,
    scanStartedEntireMac,
    scanStartedFolder,
    scanCompleted,
    itemDeleted,
    appUninstalled,
    snapshotsThinned,
    modeSwitched,
    adClicked,
};

[[nodiscard]] QString wireName(AnalyticsEvent event);

// A parameter goes out as a JSON string, number or Boolean, as typed here.
using AnalyticsValue = std::variant<QString, qint64, bool>;
using AnalyticsParameters = QMap<QString, AnalyticsValue>;

} // namespace tw
