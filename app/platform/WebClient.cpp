#include "WebClient.h"

#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>

WebResponse QtWebClient::sendSynchronousRequest(const QByteArray& method, const QUrl& url, int timeoutMs) {
    WebResponse response;
    if (!url.isValid() || (url.scheme() != QLatin1String("http") && url.scheme() != QLatin1String("https"))) {
        response.error = QStringLiteral("not a web address: %1").arg(url.toString());
        return response;
    }
    // One manager per request: it belongs to this thread and goes with the request.
    QNetworkAccessManager network;
    QNetworkRequest request(url);
    request.setTransferTimeout(timeoutMs);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    QNetworkReply* reply = network.sendCustomRequest(request, method);
    QEventLoop loop;
    QTimer limit;
    limit.setSingleShot(true);
    QObject::connect(&limit, &QTimer::timeout, reply, &QNetworkReply::abort);
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    limit.start(timeoutMs);
    if (!reply->isFinished()) {
        loop.exec();
    }
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (status.isValid()) {
        response.received = true;
        response.status = status.toInt();
        for (const auto& pair : reply->rawHeaderPairs()) {
            response.headers.insert(pair.first.toLower(), pair.second);
        }
        response.body = reply->readAll();
    } else {
        response.error = limit.isActive() ? reply->errorString() : QStringLiteral("timed out");
    }
    delete reply;
    return response;
}
