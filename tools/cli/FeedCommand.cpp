#include "FeedCommand.h"

#include "Commands.h"

#include "localization/Language.h"
#include "sponsored/AdFeed.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>

#include <cstdio>

namespace tw::cli {

namespace {

QString text(const std::optional<QUrl>& url)
{
    return url ? QString::fromUtf8(url->toEncoded()) : QString();
}

QJsonObject describe(const Ad& ad)
{
    QJsonObject object{{QStringLiteral("id"), ad.id},
                       {QStringLiteral("link"), QString::fromUtf8(ad.link.toEncoded())},
                       {QStringLiteral("locale"), ad.locale}};
    if (const auto* textContent = std::get_if<AdContent::Text>(&ad.content.value)) {
        object.insert(QStringLiteral("kind"), QStringLiteral("text"));
        object.insert(QStringLiteral("text"), textContent->text);
        if (textContent->iconURL)
            object.insert(QStringLiteral("iconURL"), text(textContent->iconURL));
    } else if (const auto* banner = std::get_if<AdContent::Banner>(&ad.content.value)) {
        object.insert(QStringLiteral("kind"), QStringLiteral("banner"));
        object.insert(QStringLiteral("imageURL"), text(banner->imageURL));
        object.insert(QStringLiteral("width"), banner->width);
        object.insert(QStringLiteral("height"), banner->height);
        if (banner->alt)
            object.insert(QStringLiteral("alt"), *banner->alt);
    }
    if (ad.clickURL)
        object.insert(QStringLiteral("clickURL"), text(ad.clickURL));
    if (ad.impressionURL)
        object.insert(QStringLiteral("impressionURL"), text(ad.impressionURL));
    return object;
}

// stdout may be a closed pipe or a full disk: say so in the exit status.
int print(FILE* stream, const QByteArray& bytes, int status)
{
    if (std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream) != size_t(bytes.size()) ||
        std::fflush(stream) != 0)
        return 3;
    return status;
}

} // namespace

int runFeed(const QStringList& args)
{
    QUrl base = AdFeed::apiBase();
    Language language = Language::english;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const bool hasValue = i + 1 < args.size();
        if (args[i] == QLatin1String("--base") && hasValue) {
            base = QUrl(args[++i], QUrl::StrictMode);
        } else if (args[i] == QLatin1String("--locale") && hasValue && languageFromCode(args[i + 1])) {
            language = *languageFromCode(args[++i]);
        } else {
            return usageError("feed", args[i] == QLatin1String("--locale") ? QByteArray("--locale takes en, ru, de or zh")
                                                                           : "unexpected " + args[i].toLocal8Bit());
        }
    }
    if (!base.isValid() || base.scheme().isEmpty())
        return usageError("feed", "--base needs an absolute address such as http://127.0.0.1:8080");

    QNetworkAccessManager network;
    QEventLoop loop;
    AdFeed::Outcome outcome;
    AdFeed::requestCurrent(network, base, language, [&](const AdFeed::Outcome& answer) {
        outcome = answer;
        loop.quit();
    });
    loop.exec();

    using Kind = AdFeed::Outcome::Kind;
    QString why;
    switch (outcome.kind) {
    case Kind::noItem: why = QStringLiteral("the server has no item at present (HTTP 204)"); break;
    case Kind::ignoredStatus: why = QStringLiteral("the server answered HTTP %1").arg(outcome.status); break;
    case Kind::undecodable: why = QStringLiteral("the answer is not a well-formed feed envelope"); break;
    case Kind::transportFailure: why = QStringLiteral("no answer: ") + outcome.error; break;
    case Kind::envelope:
        if (!outcome.envelope.ad)
            why = QStringLiteral("the item is unusable (unknown kind, missing text or image, or a link that is not http(s))");
        break;
    }
    if (!why.isEmpty())
        return print(stdout, ("no item: " + why + u'\n').toUtf8(), 1);
    QJsonObject result{{QStringLiteral("ad"), describe(*outcome.envelope.ad)}};
    if (outcome.envelope.ttlSeconds)
        result.insert(QStringLiteral("ttl_seconds"), double(*outcome.envelope.ttlSeconds));
    return print(stdout, QJsonDocument(result).toJson(QJsonDocument::Indented), 0);
}

} // namespace tw::cli
