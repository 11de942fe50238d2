#pragma once

#include "localization/Language.h"
#include "network/RequestLimits.h"

#include <QByteArray>
#include <QNetworkRequest>
#include <QString>
#include <QUrl>

#include <functional>
#include <optional>
#include <variant>

class QNetworkAccessManager;

namespace tw {

// The one current sponsored item as the rest of Tidewick sees it. The feed's
// own wire records stay inside AdFeed.cpp.
struct AdContent {
    struct Text {
        std::optional<QUrl> iconURL;
        QString text;
        bool operator==(const Text&) const = default;
    };
    struct Banner {
        QUrl imageURL;
        int width = 0;
        int height = 0;
        std::optional<QString> alt;
        bool operator==(const Banner&) const = default;
    };
    std::variant<Text, Banner> value;
    bool operator==(const AdContent&) const = default;
};

struct Ad {
    QString id;
    QUrl link;
    QString locale;
    AdContent content;
    std::optional<QUrl> clickURL;
    // Kept for equality only: Tidewick never sends an impression request.
    std::optional<QUrl> impressionURL;
    bool operator==(const Ad&) const = default;
};

// The contract with the sponsored-content endpoint: what is asked, what comes
// back and how it turns into an Ad. Free functions, any thread, except where
// a QNetworkAccessManager is involved (its own thread).
namespace AdFeed {

inline constexpr const char* kDefaultApiBase = "https://api.tidewick.app";

// TIDEWICK_API_BASE when it parses as an address, else the built-in default.
// Read once per process.
[[nodiscard]] QUrl apiBase();
// The same rule for a given value of the variable (empty: unset).
[[nodiscard]] QUrl apiBaseFrom(const QString& environmentValue);
// The application's short version, "0.0.0" when it has none.
[[nodiscard]] QString appVersion();

[[nodiscard]] QNetworkRequest currentRequest(const QUrl& base, Language language);
// The POST made when an item has no click address of its own; the id is one
// escaped segment of its path. None for the ids "." and "..", which no
// address can carry as a segment.
[[nodiscard]] std::optional<QNetworkRequest> clickRequest(const QUrl& base, const QString& adId);
[[nodiscard]] QByteArray clickBody(Language language);

// A body that decodes. `ad` is empty when the item in it is unusable.
struct Envelope {
    std::optional<Ad> ad;
    std::optional<qint64> ttlSeconds;
};
// Nothing when the body is not a well-formed envelope: a required key missing
// or of another JSON type, or an optional key of the wrong type.
[[nodiscard]] std::optional<Envelope> decode(const QByteArray& body);

// What one request for the current item came to.
struct Outcome {
    enum class Kind { noItem, envelope, ignoredStatus, undecodable, transportFailure };
    Kind kind = Kind::transportFailure;
    int status = 0;
    Envelope envelope;
    QString error;
    bool canceled = false; // given up at a limit
};
// Sends the GET on `network` and calls `done` once on that manager's thread;
// an answer past `limits` is a transport failure.
void requestCurrent(QNetworkAccessManager& network, const QUrl& base, Language language,
                    std::function<void(const Outcome&)> done, const RequestLimits& limits = RequestLimits::feed());
// The click report: a GET of the item's click address when it has one, else
// the POST. The answer is read and dropped.
void sendClick(QNetworkAccessManager& network, const QUrl& base, const Ad& ad, Language language);

} // namespace AdFeed
} // namespace tw
