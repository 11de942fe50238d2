#include "UninstallCommand.h"

#include "Commands.h"

#include "localization/LocalizationManager.h"
#include "localization/TextFormat.h"
#include "removal/Recycle.h"
#include "uninstaller/AppDiscovery.h"
#include "uninstaller/AppRelatedFiles.h"
#include "uninstaller/InstalledApp.h"
#include "app/AppState.h"
#include "uninstaller/UninstallChoices.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <cstdio>

namespace tw::cli {

namespace {

struct Options {
    QByteArray bundle;
    QByteArray home = QFile::encodeName(QDir::homePath());
    QByteArray systemLibrary = "/Library";
    bool includeShared = false;
    bool dryRun = false;
    bool json = false;
};

std::optional<Options> parse(const QByteArrayList& args)
{
    Options options;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QByteArray& arg = args[i];
        if (arg == "--home" && i + 1 < args.size())
            options.home = args[++i];
        else if (arg == "--system-library" && i + 1 < args.size())
            options.systemLibrary = args[++i];
        else if (arg == "--include-shared")
            options.includeShared = true;
        else if (arg == "--dry-run")
            options.dryRun = true;
        else if (arg == "--json")
            options.json = true;
        else if (options.bundle.isEmpty() && !arg.startsWith("--"))
            options.bundle = arg;
        else
            return std::nullopt;
    }
    if (options.bundle.isEmpty())
        return std::nullopt;
    return options;
}

QString englishReason(const MatchReason& reason)
{
    return fillText(LocalizationManager::lookup(hostTextPlatform(), Language::english, QString::fromLatin1(matchReasonKey(reason.kind))),
                    reason.identifier);
}

bool writeOut(const QByteArray& text)
{
    return std::fwrite(text.constData(), 1, std::size_t(text.size()), stdout) == std::size_t(text.size()) &&
           std::fflush(stdout) == 0;
}

} // namespace

int runUninstall(const QByteArrayList& args)
{
    const std::optional<Options> options = parse(args);
    const auto app = options ? AppDiscovery::makeInstalledApp(options->bundle) : nullptr;
    if (!app)
        return usageError("uninstall", !options ? QByteArray("needs one BUNDLE")
                                                : options->bundle + " is no application bundle (no CFBundleIdentifier)");
    app->setBundleSize(allocatedSize(app->url()));
    const AppRelatedFiles::Identity identity =
        AppRelatedFiles::Identity::build(app->bundleID(), app->name(), app->url());
    app->setRelated(AppRelatedFiles::search(identity, options->home, options->systemLibrary));

    // The dialog's own choices, as a person who confirms at once gets them.
    UninstallChoices choices;
    choices.setApp(app.get());
    if (options->includeShared) {
        for (const RelatedFile& file : app->related())
            choices.setChecked(file.id.toString(), true);
    }
    const QList<QByteArray> chosen = choices.selectedURLs();
    BatchOutcome outcome;
    if (!options->dryRun)
        outcome = recycleBatch(chosen);
    QHash<QByteArray, QString> failures;
    for (const auto& [path, message] : outcome.failed)
        failures.insert(path, message);

    const auto resultOf = [&](const QByteArray& path, bool selected) {
        if (!selected)
            return QStringLiteral("kept");
        if (options->dryRun)
            return QStringLiteral("planned");
        return failures.contains(path) ? QStringLiteral("failed") : QStringLiteral("moved");
    };

    QJsonArray items;
    QByteArray text;
    const auto add = [&](const QByteArray& path, const QString& category, const QString& reason, bool shared) {
        const bool selected = chosen.contains(path);
        const QString result = resultOf(path, selected);
        QJsonObject item{{QStringLiteral("path"), QFile::decodeName(path)},
                         {QStringLiteral("category"), category},
                         {QStringLiteral("shared"), shared},
                         {QStringLiteral("result"), result}};
        if (!reason.isEmpty())
            item.insert(QStringLiteral("reason"), reason);
        if (failures.contains(path))
            item.insert(QStringLiteral("message"), failures.value(path));
        items.append(item);
        // Paths go out as their bytes, so a name that is not UTF-8 can be
        // found again exactly.
        text += result.leftJustified(8).toUtf8() + path;
        if (!reason.isEmpty())
            text += "  (" + reason.toUtf8() + (shared ? ", shared" : "") + ')';
        if (failures.contains(path))
            text += ": " + failures.value(path).toUtf8();
        text += '\n';
    };
    add(app->url(), QStringLiteral("Application"), QString(), false);
    for (const RelatedFile& file : app->related())
        add(file.url, relatedCategoryTitle(file.category), englishReason(file.reason), file.isShared);

    const QByteArray out = options->json
                               ? QJsonDocument(QJsonObject{{QStringLiteral("app"), app->name()},
                                                           {QStringLiteral("bundleID"), app->bundleID()},
                                                           {QStringLiteral("dryRun"), options->dryRun},
                                                           {QStringLiteral("items"), items}})
                                     .toJson(QJsonDocument::Indented)
                               : text;
    if (!writeOut(out))
        return 1;
    return outcome.failed.isEmpty() ? 0 : 1;
}

} // namespace tw::cli
