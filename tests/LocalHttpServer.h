#pragma once

// A small HTTP/1.1 server on 127.0.0.1 for the network tests: one request per
// connection, answered by a handler the test sets. It keeps every request it
// saw and refuses more than `maxRequests`, so a runaway client cannot keep a
// test busy. It can also answer as a broken or hostile server would (see
// HttpResponse::Delivery); such an answer ends when the client hangs up, or
// after 256 MiB or 30 s. Lives on the test's thread.

#include <QByteArray>
#include <QHostAddress>
#include <QList>
#include <QMetaType>
#include <QMap>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QtTest>
#include <QUrl>

#include "network/RequestLimits.h"

#include <functional>

struct HttpRequest {
    QByteArray method;
    QByteArray target; // path and query, as sent
    QMap<QByteArray, QByteArray> headers; // names lower-cased
    QByteArray body;
};

struct HttpResponse {
    enum class Delivery {
        whole,         // at once
        late,          // whole, after `intervalMs`
        trickle,       // headers, then the body a byte every `intervalMs`
        pause,         // headers and half the body, the rest after `intervalMs`
        endlessBody,   // headers, then a body that never ends
        endlessHeader, // the status line, then header lines that never end
    };
    int status = 200;
    QByteArray body;
    QByteArray contentType = "application/json";
    Delivery delivery = Delivery::whole;
    int intervalMs = 0;
};
Q_DECLARE_METATYPE(HttpResponse)

class LocalHttpServer : public QObject {
public:
    std::function<HttpResponse(const HttpRequest&)> handler = [](const HttpRequest&) { return HttpResponse{204, {}}; };
    QList<HttpRequest> requests;
    int maxRequests = 500;
    // Bytes of endless answers written so far: what a client let in before it gave up.
    qint64 streamed = 0;

    LocalHttpServer()
    {
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket* socket = m_server.nextPendingConnection())
                serve(socket);
        });
    }
    bool listen(quint16 port = 0) { return m_server.listen(QHostAddress::LocalHost, port); }
    void close() { m_server.close(); }
    [[nodiscard]] quint16 port() const { return m_server.serverPort(); }
    [[nodiscard]] QUrl url(const QString& path = QString()) const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(port()).arg(path));
    }

private:
    void serve(QTcpSocket* socket)
    {
        socket->setParent(this);
        auto buffer = std::make_shared<QByteArray>();
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QTcpSocket::readyRead, socket, [this, socket, buffer] {
            buffer->append(socket->readAll());
            const qsizetype headerEnd = buffer->indexOf("\r\n\r\n");
            if (headerEnd < 0)
                return;
            HttpRequest request;
            const QList<QByteArray> lines = buffer->left(headerEnd).split('\n');
            const QList<QByteArray> first = lines.value(0).trimmed().split(' ');
            request.method = first.value(0);
            request.target = first.value(1);
            for (qsizetype i = 1; i < lines.size(); ++i) {
                const qsizetype colon = lines[i].indexOf(':');
                if (colon > 0)
                    request.headers.insert(lines[i].left(colon).trimmed().toLower(), lines[i].mid(colon + 1).trimmed());
            }
            const qsizetype length = request.headers.value("content-length", "0").toLongLong();
            if (buffer->size() - headerEnd - 4 < length)
                return;
            request.body = buffer->mid(headerEnd + 4, length);
            buffer->clear();
            HttpResponse response{503, {}};
            if (requests.size() < maxRequests) {
                requests.append(request);
                response = handler(request);
            }
            QByteArray answer = "HTTP/1.1 " + QByteArray::number(response.status) + " X\r\nConnection: close\r\n";
            if (response.status != 204) {
                answer += "Content-Type: " + response.contentType + "\r\nContent-Length: " +
                          QByteArray::number(response.body.size()) + "\r\n";
            }
            answer += "\r\n";
            if (response.status != 204)
                answer += response.body;
            deliver(socket, answer, response);
        });
    }

    void deliver(QTcpSocket* socket, const QByteArray& answer, const HttpResponse& response)
    {
        using Delivery = HttpResponse::Delivery;
        const auto finish = [socket](const QByteArray& bytes) {
            socket->write(bytes);
            socket->disconnectFromHost();
        };
        if (response.delivery == Delivery::whole)
            return finish(answer);
        const qsizetype headerEnd = answer.indexOf("\r\n\r\n") + 4;
        if (response.delivery == Delivery::late || response.delivery == Delivery::pause) {
            const qsizetype now = response.delivery == Delivery::late ? 0 : headerEnd + (answer.size() - headerEnd) / 2;
            socket->write(answer.left(now));
            return QTimer::singleShot(response.intervalMs, socket, [finish, rest = answer.mid(now)] { finish(rest); });
        }
        const QByteArray head = response.delivery == Delivery::endlessHeader ? answer.left(answer.indexOf("\r\n") + 2)
                                : response.delivery == Delivery::endlessBody  ? answer.left(headerEnd).replace("Content-Length", "X-Length")
                                                                              : answer.left(headerEnd);
        socket->write(head);
        auto sent = std::make_shared<qint64>(0);
        auto* pump = new QTimer(socket);
        QTimer::singleShot(30000, pump, [socket] { socket->abort(); });
        connect(pump, &QTimer::timeout, socket, [=, this] {
            if (response.delivery == Delivery::trickle) {
                if (headerEnd + *sent < answer.size())
                    socket->write(answer.mid(headerEnd + (*sent)++, 1));
                else
                    socket->disconnectFromHost();
                return;
            }
            if (*sent > (qint64(256) << 20))
                return socket->abort();
            // A client that gave up takes nothing more: only what a live
            // connection accepted counts.
            if (socket->state() != QAbstractSocket::ConnectedState)
                return pump->stop();
            // Fed as fast as the client takes it, never faster.
            if (socket->bytesToWrite() < (1 << 20)) {
                const QByteArray piece = response.delivery == Delivery::endlessHeader
                                             ? "X-Pad: " + QByteArray(1016, 'h') + "\r\n"
                                             : QByteArray(64 * 1024, 'b');
                const qint64 taken = socket->write(piece);
                if (taken > 0) {
                    *sent += taken;
                    streamed += taken;
                }
            }
        });
        pump->start(response.intervalMs);
    }

    QTcpServer m_server;
};

// Request limits a test server meets each of in a second or two.
inline tw::RequestLimits quickLimits()
{
    using std::chrono::milliseconds;
    return {4096, 64 * 1024, milliseconds(1000), milliseconds(1000), milliseconds(2000)};
}

// Table rows of answers that each break one of quickLimits(), bar the first,
// late but in time; `taken` says whether the client may read it. The pause
// in the body ends within the whole transfer's limit: only the stall rule
// gives it up.
inline void addAnswersAtTheLimits(const QByteArray& body)
{
    using Delivery = HttpResponse::Delivery;
    QTest::addColumn<HttpResponse>("answer");
    QTest::addColumn<bool>("taken");
    QTest::newRow("late, in time") << HttpResponse{200, body, "application/json", Delivery::late, 300} << true;
    QTest::newRow("first byte too late") << HttpResponse{200, body, "application/json", Delivery::late, 4000} << false;
    QTest::newRow("header without end") << HttpResponse{200, body, "application/json", Delivery::endlessHeader, 1} << false;
    QTest::newRow("header too large") << HttpResponse{200, body, "application/json\r\nX-Pad: " + QByteArray(5000, 'h')} << false;
    QTest::newRow("body without end") << HttpResponse{200, body, "application/json", Delivery::endlessBody, 0} << false;
    QTest::newRow("pause in the body") << HttpResponse{200, body, "application/json", Delivery::pause, 1500} << false;
    QTest::newRow("trickle") << HttpResponse{200, body + QByteArray(100, ' '), "application/json", Delivery::trickle, 100} << false;
}
