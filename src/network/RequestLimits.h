#pragma once

#include <QNetworkAccessManager>

#include <chrono>

class QNetworkReply;

namespace tw {

// What one request may cost before it is given up: the bytes of the answer's
// headers and of its body, the wait for the answer to begin, the pause
// between two pieces of it, and the whole transfer. A server that is broken
// or hostile must never hold memory, a thread or a refresh loop for longer
// than this. The numbers for each kind of request live in RequestLimits.cpp
// and nowhere else.
struct RequestLimits {
    qint64 maxHeaderBytes = 0;
    qint64 maxBodyBytes = 0;
    // Until the answer's status and headers are in: a header that never ends
    // runs into this, since Qt shows no byte of it before its end.
    std::chrono::milliseconds firstByte{0};
    // The longest pause between two pieces of the body.
    std::chrono::milliseconds stall{0};
    std::chrono::milliseconds whole{0};

    [[nodiscard]] static RequestLimits feed();
    [[nodiscard]] static RequestLimits click();
    [[nodiscard]] static RequestLimits image();
    [[nodiscard]] static RequestLimits analytics();
};

// Aborts `reply` as soon as it passes any of `limits`; it then finishes with
// QNetworkReply::OperationCanceledError like any other failed transfer. Call
// right after the request is sent, on the thread of its manager.
void limitReply(QNetworkReply& reply, const RequestLimits& limits);

// Puts down a manager after one of its answers was given up before its
// headers ended. Qt's HTTP thread behind the manager may stay busy with what
// the server keeps sending, holding up every later request of that manager,
// and the manager's destructor waits up to 5 s for that thread: so it is
// destroyed on a thread of its own, and the caller goes on with a new one.
// Call outside the manager's signals, on its thread.
void retireNetwork(QNetworkAccessManager* manager);

// A manager whose every web request runs under one set of limits: what Qt
// Quick loads images with.
class LimitedNetworkAccessManager : public QNetworkAccessManager {
public:
    explicit LimitedNetworkAccessManager(const RequestLimits& limits, QObject* parent = nullptr);

protected:
    QNetworkReply* createRequest(Operation operation, const QNetworkRequest& request, QIODevice* data) override;

private:
    RequestLimits m_limits;
};

} // namespace tw
