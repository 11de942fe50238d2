#pragma once

// The core's QObjects as QML sees them. The core links no QML, so the
// registrations live here, beside the module that uses them.

#include "app/AppState.h"
#include "app/UnseenSpace.h"
#include "chart/ChartCompanions.h"
#include "chart/ChartEmphasis.h"
#include "chart/KindsModel.h"
#include "chart/SearchModel.h"
#include "chart/ChartScreenModel.h"
#include "chart/NodeActions.h"
#include "screens/ScreensModel.h"
#include "uninstaller/AppsListModel.h"
#include "uninstaller/InstalledApp.h"
#include "uninstaller/UninstallChoices.h"
#include "sponsored/AdService.h"

#include <QQmlEngine>

namespace tw::qml {

struct AppStateForeign {
    Q_GADGET
    QML_FOREIGN(tw::AppState)
    QML_NAMED_ELEMENT(AppState)
    QML_UNCREATABLE("The application makes the one AppState and hands it to the window.")
};

struct LargestChildrenForeign {
    Q_GADGET
    QML_FOREIGN(tw::LargestChildrenModel)
    QML_NAMED_ELEMENT(LargestChildrenModel)
};

struct ChartScreenForeign {
    Q_GADGET
    QML_FOREIGN(tw::ChartScreenModel)
    QML_NAMED_ELEMENT(ChartScreenModel)
};

struct NodeActionsForeign {
    Q_GADGET
    QML_FOREIGN(tw::NodeActions)
    QML_NAMED_ELEMENT(NodeActions)
};

struct ChartEmphasisForeign {
    Q_GADGET
    QML_FOREIGN(tw::ChartEmphasis)
    QML_NAMED_ELEMENT(ChartEmphasis)
};

struct KindsModelForeign {
    Q_GADGET
    QML_FOREIGN(tw::KindsModel)
    QML_NAMED_ELEMENT(KindsModel)
};

struct SearchModelForeign {
    Q_GADGET
    QML_FOREIGN(tw::SearchModel)
    QML_NAMED_ELEMENT(SearchModel)
};

struct ScreensModelForeign {
    Q_GADGET
    QML_FOREIGN(tw::ScreensModel)
    QML_NAMED_ELEMENT(ScreensModel)
};

struct UnseenSpaceForeign {
    Q_GADGET
    QML_FOREIGN(tw::UnseenSpaceModel)
    QML_NAMED_ELEMENT(UnseenSpaceModel)
};

struct InstalledAppForeign {
    Q_GADGET
    QML_FOREIGN(tw::InstalledApp)
    QML_NAMED_ELEMENT(InstalledApp)
    QML_UNCREATABLE("Applications come from discovery.")
};

struct AppsListModelForeign {
    Q_GADGET
    QML_FOREIGN(tw::AppsListModel)
    QML_NAMED_ELEMENT(AppsListModel)
};

struct UninstallChoicesForeign {
    Q_GADGET
    QML_FOREIGN(tw::UninstallChoices)
    QML_NAMED_ELEMENT(UninstallChoices)
};

struct AdServiceForeign {
    Q_GADGET
    QML_FOREIGN(tw::AdService)
    QML_NAMED_ELEMENT(AdService)
    QML_UNCREATABLE("The application makes the one AdService and hands it to the window.")
};

} // namespace tw::qml
