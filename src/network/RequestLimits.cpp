#include "network/RequestLimits.h"

#include <QNetworkReply>
#include <QThread>
#include <QTimer>

namespace tw {

using std::chrono::seconds;

namespace {
// Real servers send a few hundred bytes of headers and refuse more than 8 to
// 64 KiB of them from their own clients.
constexpr qint64 kMaxHeaderBytes = 64 * 1024;
// Room past a body's cap for the network thread's next read, so that the read
// which passes the cap arrives and is seen (a buffer of exactly the cap stops
// short of it, and only the stall limit would end the wait).
constexpr qint64 kReadAhead = 256 * 1024;
} // namespace

// The sponsored item is a few hundred bytes; 8 s to begin and between pieces
// is what the feed always had, and 20 s for the whole caps a trickle at an
// even slower line than the bar could use.
RequestLimits RequestLimits::feed()
{
    return {kMaxHeaderBytes, 1024 * 1024, seconds(8), seconds(8), seconds(20)};
}

// The click's answer is read only to be dropped.
RequestLimits RequestLimits::click()
{
    return {kMaxHeaderBytes, 64 * 1024, seconds(5), seconds(5), seconds(10)};
}

// A banner is drawn 128 points high across the window: at twice the pixels
// on a Retina screen, 2560 by 256 even uncompressed is 2.5 MiB. An icon is
// far smaller.
RequestLimits RequestLimits::image()
{
    return {kMaxHeaderBytes, 4 * 1024 * 1024, seconds(8), seconds(8), seconds(30)};
}

// The collection endpoint answers with an empty 204 or a short 2xx.
RequestLimits RequestLimits::analytics()
{
    return {kMaxHeaderBytes, 64 * 1024, seconds(15), seconds(15), seconds(30)};
}

void limitReply(QNetworkReply& reply, const RequestLimits& limits)
{
    QNetworkReply* guarded = &reply;
    // Qt's network thread reads ahead of us without bound unless told: just
    // past the cap it stops reading, so the cap bounds memory, not only our
    // count.
    reply.setReadBufferSize(limits.maxBodyBytes + kReadAhead);
    auto* whole = new QTimer(guarded);
    // Waits for the headers first, then for each next piece of the body.
    auto* quiet = new QTimer(guarded);
    for (QTimer* timer : {whole, quiet}) {
        timer->setSingleShot(true);
        QObject::connect(timer, &QTimer::timeout, guarded, &QNetworkReply::abort);
    }
    whole->start(limits.whole);
    quiet->start(limits.firstByte);
    QObject::connect(guarded, &QNetworkReply::metaDataChanged, quiet, [guarded, quiet, limits] {
        qint64 bytes = 0;
        for (const auto& [name, value] : guarded->rawHeaderPairs())
            bytes += name.size() + value.size() + 4; // ": " and CRLF
        if (bytes > limits.maxHeaderBytes)
            return guarded->abort();
        quiet->start(limits.stall);
    });
    QObject::connect(guarded, &QNetworkReply::downloadProgress, quiet, [guarded, quiet, limits](qint64 received, qint64 total) {
        if (received > limits.maxBodyBytes || total > limits.maxBodyBytes)
            return guarded->abort();
        quiet->start(limits.stall);
    });
    // Qt reports progress at most ten times a second and not at all once its
    // buffer is full, so what waits unread is weighed on every arrival too.
    QObject::connect(guarded, &QNetworkReply::readyRead, quiet, [guarded, limits] {
        if (guarded->bytesAvailable() > limits.maxBodyBytes)
            guarded->abort();
    });
    QObject::connect(guarded, &QNetworkReply::finished, quiet, [whole, quiet] {
        whole->stop();
        quiet->stop();
    });
}

void retireNetwork(QNetworkAccessManager* manager)
{
    manager->setParent(nullptr);
    auto* thread = new QThread;
    thread->setObjectName(QStringLiteral("network retired"));
    manager->moveToThread(thread);
    QObject::connect(thread, &QThread::started, manager, [manager, thread] {
        delete manager;
        thread->quit();
    });
    QObject::connect(thread, &QThread::finished, thread, &QObject::deleteLater);
    thread->start(QThread::LowestPriority);
}

LimitedNetworkAccessManager::LimitedNetworkAccessManager(const RequestLimits& limits, QObject* parent)
    : QNetworkAccessManager(parent), m_limits(limits)
{
}

QNetworkReply* LimitedNetworkAccessManager::createRequest(Operation operation, const QNetworkRequest& request,
                                                          QIODevice* data)
{
    QNetworkReply* reply = QNetworkAccessManager::createRequest(operation, request, data);
    const QString scheme = request.url().scheme();
    if (scheme == QLatin1String("http") || scheme == QLatin1String("https"))
        limitReply(*reply, m_limits);
    return reply;
}

} // namespace tw
