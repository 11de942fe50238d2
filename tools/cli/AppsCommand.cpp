#include "AppsCommand.h"

#include "Commands.h"

#include "localization/LocalizationManager.h"
#include "localization/TextFormat.h"
#include "uninstaller/AppDiscovery.h"
#include "uninstaller/AppRelatedFiles.h"
#include "uninstaller/Bundle.h"
#include "uninstaller/InstalledApp.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <cstdio>

namespace tw::cli {

namespace {
void print(const QJsonObject& object)
{
    std::fputs(QJsonDocument(object).toJson(QJsonDocument::Indented).constData(), stdout);
}

QJsonArray sorted(const QSet<QString>& set)
{
    QStringList list(set.cbegin(), set.cend());
    std::sort(list.begin(), list.end());
    return QJsonArray::fromStringList(list);
}
} // namespace

int runApps(const QByteArrayList& args)
{
    const QByteArrayList roots = args.isEmpty() ? AppDiscovery::applicationRoots() : args;
    QJsonArray apps;
    for (const auto& app : AppDiscovery::listInstalledApps(roots)) {
        QJsonObject row{{QStringLiteral("name"), app->name()},
                        {QStringLiteral("bundleID"), app->bundleID()},
                        {QStringLiteral("path"), app->displayPath()},
                        {QStringLiteral("bundleSize"), double(allocatedSize(app->url()))}};
        if (app->version())
            row.insert(QStringLiteral("version"), *app->version());
        if (app->lastOpened())
            row.insert(QStringLiteral("lastOpened"), app->lastOpened()->toString(Qt::ISODate));
        if (!app->iconFile().isEmpty())
            row.insert(QStringLiteral("icon"), QFile::decodeName(app->iconFile()));
        apps.append(row);
    }
    QJsonArray rootList;
    for (const QByteArray& root : roots)
        rootList.append(QFile::decodeName(root));
    print({{QStringLiteral("roots"), rootList}, {QStringLiteral("apps"), apps}});
    return 0;
}

int runRelated(const QByteArrayList& args)
{
    QByteArray bundle;
    QByteArray home = QFile::encodeName(QDir::homePath());
    QByteArray systemLibrary = "/Library";
    for (qsizetype i = 0; i < args.size(); ++i) {
        if (args[i] == "--home" && i + 1 < args.size())
            home = args[++i];
        else if (args[i] == "--system-library" && i + 1 < args.size())
            systemLibrary = args[++i];
        else if (bundle.isEmpty() && !args[i].startsWith("--"))
            bundle = args[i];
        else {
            bundle.clear();
            break;
        }
    }
    const auto app = bundle.isEmpty() ? nullptr : AppDiscovery::makeInstalledApp(bundle);
    if (!app)
        return usageError("related", bundle.isEmpty() ? QByteArray("needs one BUNDLE")
                                                      : bundle + " is no application bundle (no CFBundleIdentifier)");
    const AppRelatedFiles::Identity identity =
        AppRelatedFiles::Identity::build(app->bundleID(), app->name(), app->url());
    QJsonArray files;
    qint64 total = 0;
    for (const RelatedFile& file : AppRelatedFiles::search(identity, home, systemLibrary)) {
        files.append(QJsonObject{{QStringLiteral("path"), QFile::decodeName(file.url)},
                                 {QStringLiteral("category"), relatedCategoryTitle(file.category)},
                                 {QStringLiteral("size"), double(file.size)},
                                 {QStringLiteral("shared"), file.isShared},
                                 {QStringLiteral("reason"),
                                  fillText(LocalizationManager::lookup(
                                               hostTextPlatform(), Language::english, QString::fromLatin1(matchReasonKey(file.reason.kind))),
                                           file.reason.identifier)}});
        total += file.size;
    }
    print({{QStringLiteral("app"), app->name()},
           {QStringLiteral("identity"),
            QJsonObject{
                {QStringLiteral("bundleIDs"), sorted(identity.bundleIDs)},
                {QStringLiteral("names"), sorted(identity.names)},
                {QStringLiteral("groupIDs"), sorted(identity.groupIDs)},
                {QStringLiteral("privilegedHelperIDs"), sorted(identity.privilegedHelperIDs)}}},
           {QStringLiteral("related"), files},
           {QStringLiteral("relatedSize"), double(total)}});
    return 0;
}

} // namespace tw::cli
