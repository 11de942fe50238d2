#pragma once

// A small HTTP/1.1 server on 127.0.0.1 for the network tests: one request per
// connection, answered by a handler the test sets. It keeps every request it
// saw and refuses more than `maxRequests`, so a runaway client cannot keep a
// test busy. Lives on the test's thread.

#include <QByteArray>
#include <QHostAddress>
#include <QList>
#include <QMap>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

#include <functional>

struct HttpRequest {
    QByteArray method;
    QByteArray target; // path and query, as sent
    QMap<QByteArray, QByteArray> headers; // names lower-cased
    QByteArray body;
};

struct HttpResponse {
    int status = 200;
    QByteArray body;
    QByteArray contentType = "application/json";
};

class LocalHttpServer : public QObject {
public:
    std::function<HttpResponse(const HttpRequest&)> handler = [](const HttpRequest&) { return HttpResponse{204, {}}; };
    QList<HttpRequest> requests;
    int maxRequests = 500;

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
            socket->write(answer);
            socket->disconnectFromHost();
        });
    }

    QTcpServer m_server;
};
