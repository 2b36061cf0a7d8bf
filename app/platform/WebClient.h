#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QUrl>

// What came back from one web request. `received` is false when no HTTP answer arrived at all (no network,
// refused, timed out); then status, headers and body are empty.
struct WebResponse {
    bool received = false;
    int status = 0;
    QHash<QByteArray, QByteArray> headers; // names in lower case
    QByteArray body;
    QString error;

    QByteArray header(const QByteArray& name) const { return headers.value(name.toLower()); }
};

// Plain web requests that block the calling thread until the answer or the time limit. Only ever called off
// the main thread, where waiting does not stop the screens.
class WebClient {
public:
    virtual ~WebClient() = default;
    virtual WebResponse sendSynchronousRequest(const QByteArray& method, const QUrl& url, int timeoutMs) = 0;
};

// Over QNetworkAccessManager, with an event loop of its own on the calling thread.
class QtWebClient : public WebClient {
public:
    WebResponse sendSynchronousRequest(const QByteArray& method, const QUrl& url, int timeoutMs) override;
};
