#include "sponsored/AdFeed.h"

#include "network/RequestLimits.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QUrlQuery>

#include <cmath>
#include <limits>

namespace tw::AdFeed {

namespace {

// One key of a wire record, by the decoder's rules: `ok` turns false for a
// missing required key or any present value of the wrong JSON type.
class Reader {
public:
    explicit Reader(const QJsonObject& object) : m_object(object) {}
    bool ok = true;

    std::optional<QString> string(const char* key, bool required)
    {
        const QJsonValue value = m_object.value(QLatin1String(key));
        if (absent(value, required))
            return std::nullopt;
        if (!value.isString())
            return fail();
        return value.toString();
    }
    std::optional<qint64> integer(const char* key, bool required)
    {
        const QJsonValue value = m_object.value(QLatin1String(key));
        if (absent(value, required))
            return std::nullopt;
        // JSON has one number type; an integer key takes whole numbers only.
        const double number = value.toDouble(std::numeric_limits<double>::quiet_NaN());
        if (!value.isDouble() || !std::isfinite(number) || std::floor(number) != number ||
            std::abs(number) > 9007199254740992.0)
            return fail<qint64>();
        return qint64(number);
    }
    std::optional<QJsonObject> object(const char* key, bool required)
    {
        const QJsonValue value = m_object.value(QLatin1String(key));
        if (absent(value, required))
            return std::nullopt;
        if (!value.isObject())
            return fail<QJsonObject>();
        return value.toObject();
    }

private:
    bool absent(const QJsonValue& value, bool required)
    {
        if (!value.isUndefined() && !value.isNull())
            return false;
        if (required)
            ok = false;
        return true;
    }
    template <typename T = QString> std::optional<T> fail()
    {
        ok = false;
        return std::nullopt;
    }
    const QJsonObject& m_object;
};

std::optional<QUrl> parseUrl(const std::optional<QString>& text)
{
    if (!text || text->isEmpty())
        return std::nullopt;
    QUrl url(*text, QUrl::StrictMode);
    if (!url.isValid())
        return std::nullopt;
    return url;
}

// Only web addresses count. A press of the bar must never open a local file,
// mount a share or launch an application, and an image or tracking address
// must never reach the disk or another program either, whatever the server
// sends.
std::optional<QUrl> webUrl(const std::optional<QString>& text)
{
    auto url = parseUrl(text);
    if (!url || (url->scheme() != QLatin1String("https") && url->scheme() != QLatin1String("http")) ||
        url->host().isEmpty())
        return std::nullopt;
    return url;
}

struct Payload {
    QString kind, id, link, locale;
    std::optional<QString> iconUrl, text, imageUrl, alt;
    std::optional<qint64> width, height;
};

std::optional<Ad> adFrom(const Payload& payload, const std::optional<QString>& clickUrl,
                         const std::optional<QString>& impressionUrl)
{
    const auto link = webUrl(payload.link);
    if (!link)
        return std::nullopt;
    Ad ad{payload.id, *link, payload.locale, {}, webUrl(clickUrl), webUrl(impressionUrl)};
    if (payload.kind == QLatin1String("text")) {
        if (!payload.text || payload.text->isEmpty())
            return std::nullopt;
        ad.content.value = AdContent::Text{webUrl(payload.iconUrl), *payload.text};
    } else if (payload.kind == QLatin1String("banner")) {
        const auto image = webUrl(payload.imageUrl);
        if (!image || !payload.width || !payload.height || *payload.width < 1 || *payload.height < 1 ||
            *payload.width > std::numeric_limits<int>::max() || *payload.height > std::numeric_limits<int>::max())
            return std::nullopt;
        ad.content.value = AdContent::Banner{*image, int(*payload.width), int(*payload.height), payload.alt};
    } else {
        return std::nullopt;
    }
    return ad;
}

} // namespace

QUrl apiBaseFrom(const QString& environmentValue)
{
    if (!environmentValue.isEmpty()) {
        const QUrl url(environmentValue, QUrl::StrictMode);
        if (url.isValid() && !url.scheme().isEmpty())
            return url;
    }
    return QUrl(QString::fromLatin1(kDefaultApiBase));
}

QUrl apiBase()
{
    static const QUrl base = apiBaseFrom(qEnvironmentVariable("TIDEWICK_API_BASE"));
    return base;
}

QString appVersion()
{
    const QString version = QCoreApplication::applicationVersion();
    return version.isEmpty() ? QStringLiteral("0.0.0") : version;
}

QNetworkRequest currentRequest(const QUrl& base, Language language)
{
    QUrl url = base;
    url.setPath(QStringLiteral("/api/v1/ads/current"));
    QUrlQuery query;
    query.addQueryItem(QStringLiteral("locale"), languageCode(language));
    query.addQueryItem(QStringLiteral("app_version"), appVersion());
    query.addQueryItem(QStringLiteral("app_id"), QStringLiteral("tidewick"));
    query.addQueryItem(QStringLiteral("protocol"), QStringLiteral("1"));
    url.setQuery(query);
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    return request;
}

std::optional<QNetworkRequest> clickRequest(const QUrl& base, const QString& adId)
{
    // The id is the server's data and is one path segment, whatever it holds:
    // a "/" or "?" in it must never lead the POST out of /api/v1/ads/ to
    // another address on the same host, so it is escaped. "." and ".." cannot
    // be: QUrl keeps no escaped dot, and the HTTP stack resolves such a
    // segment as a step. An item with such an id gets no click report.
    if (adId == QLatin1String(".") || adId == QLatin1String(".."))
        return std::nullopt;
    QUrl url = base;
    QString path = url.path();
    if (!path.endsWith(QLatin1Char('/')))
        path += QLatin1Char('/');
    url.setPath(path + QStringLiteral("api/v1/ads/") + QString::fromLatin1(QUrl::toPercentEncoding(adId)) +
                    QStringLiteral("/click"),
                QUrl::StrictMode);
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
    return request;
}

QByteArray clickBody(Language language)
{
    return QJsonDocument(QJsonObject{{QStringLiteral("locale"), languageCode(language)},
                                     {QStringLiteral("app_version"), appVersion()}})
        .toJson(QJsonDocument::Compact);
}

std::optional<Envelope> decode(const QByteArray& body)
{
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(body, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    const QJsonObject root = document.object();
    Reader envelope(root);
    (void)envelope.integer("schema_version", false); // read and ignored; no version is refused
    const auto adObject = envelope.object("ad", true);
    const auto metaObject = envelope.object("meta", false);
    if (!envelope.ok)
        return std::nullopt;

    Reader ad(*adObject);
    Payload payload;
    payload.kind = ad.string("kind", true).value_or(QString());
    payload.id = ad.string("id", true).value_or(QString());
    payload.link = ad.string("link", true).value_or(QString());
    payload.locale = ad.string("locale", true).value_or(QString());
    payload.iconUrl = ad.string("icon_url", false);
    payload.text = ad.string("text", false);
    payload.imageUrl = ad.string("image_url", false);
    payload.width = ad.integer("width", false);
    payload.height = ad.integer("height", false);
    payload.alt = ad.string("alt", false);
    if (!ad.ok)
        return std::nullopt;

    Envelope result;
    std::optional<QString> clickUrl, impressionUrl;
    if (metaObject) {
        Reader meta(*metaObject);
        result.ttlSeconds = meta.integer("ttl_seconds", false);
        const auto tracking = meta.object("tracking", false);
        if (!meta.ok)
            return std::nullopt;
        if (tracking) {
            Reader reader(*tracking);
            impressionUrl = reader.string("impression_url", false);
            clickUrl = reader.string("click_url", false);
            if (!reader.ok)
                return std::nullopt;
        }
    }
    result.ad = adFrom(payload, clickUrl, impressionUrl);
    return result;
}

void requestCurrent(QNetworkAccessManager& network, const QUrl& base, Language language,
                    std::function<void(const Outcome&)> done, const RequestLimits& limits)
{
    QNetworkReply* reply = network.get(currentRequest(base, language));
    limitReply(*reply, limits);
    QObject::connect(reply, &QNetworkReply::finished, reply, [reply, done = std::move(done)] {
        reply->deleteLater();
        Outcome outcome;
        outcome.canceled = reply->error() == QNetworkReply::OperationCanceledError;
        const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
        if (!status.isValid()) {
            outcome.kind = Outcome::Kind::transportFailure;
            outcome.error = reply->errorString();
        } else if ((outcome.status = status.toInt()) == 204) {
            outcome.kind = Outcome::Kind::noItem;
        } else if (outcome.status < 200 || outcome.status > 299) {
            outcome.kind = Outcome::Kind::ignoredStatus;
        } else if (reply->error() != QNetworkReply::NoError) {
            // A 2xx whose body broke off or passed a limit.
            outcome.kind = Outcome::Kind::transportFailure;
            outcome.error = reply->errorString();
        } else if (auto envelope = decode(reply->readAll())) {
            outcome.kind = Outcome::Kind::envelope;
            outcome.envelope = std::move(*envelope);
        } else {
            outcome.kind = Outcome::Kind::undecodable;
        }
        done(outcome);
    });
}

void sendClick(QNetworkAccessManager& network, const QUrl& base, const Ad& ad, Language language)
{
    QNetworkReply* reply = nullptr;
    if (ad.clickURL)
        reply = network.get(QNetworkRequest(*ad.clickURL));
    else if (const auto request = clickRequest(base, ad.id))
        reply = network.post(*request, clickBody(language));
    else
        return;
    limitReply(*reply, RequestLimits::click());
    QObject::connect(reply, &QNetworkReply::finished, reply, &QObject::deleteLater);
}

} // namespace tw::AdFeed
