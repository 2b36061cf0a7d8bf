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
    // HEAD and GET by name: a HEAD sent as a custom verb would wait for the body that never comes.
    QNetworkReply* reply = method == "HEAD"  ? network.head(request)
                           : method == "GET" ? network.get(request)
                                             : network.sendCustomRequest(request, method);
    QEventLoop loop;
    QTimer limit;
    limit.setSingleShot(true);
    bool timedOut = false;
    QObject::connect(&limit, &QTimer::timeout, reply, [reply, &timedOut] {
        timedOut = true;
        reply->abort();
    });
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    limit.start(timeoutMs);
    if (!reply->isFinished()) {
        loop.exec();
    }
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    // An answer cut off by the limit or the connection is no answer; an HTTP error status is one.
    const QNetworkReply::NetworkError error = reply->error();
    const bool transportFailed =
        error != QNetworkReply::NoError && error < QNetworkReply::ContentAccessDenied;
    if (status.isValid() && !timedOut && !transportFailed) {
        response.received = true;
        response.status = status.toInt();
        for (const auto& pair : reply->rawHeaderPairs()) {
            response.headers.insert(pair.first.toLower(), pair.second);
        }
        response.body = reply->readAll();
    } else {
        response.error = timedOut ? QStringLiteral("timed out") : reply->errorString();
    }
    delete reply;
    return response;
}
