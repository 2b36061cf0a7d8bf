// The settings record's grammar, HTTP dates, and the blocking web client against a server on loopback.
#include "outreach/DataGetter.h"
#include "TestPlatform.h"
#include "platform/Dispatch.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimeZone>
#include <atomic>
#include <gtest/gtest.h>

namespace {

using Settings = DataGetter::Settings;

TEST(SettingsRecord, ItemsNeedExactlyOneEqualsSignAndALaterKeyWins) {
    EXPECT_EQ(DataGetter::buildDictionary("a=1,b=2"), (Settings{{"a", "1"}, {"b", "2"}}));
    EXPECT_EQ(DataGetter::buildDictionary("a=1=2,b=2"), (Settings{{"b", "2"}}));
    EXPECT_EQ(DataGetter::buildDictionary("a=1,a=2"), (Settings{{"a", "2"}}));
    EXPECT_EQ(DataGetter::buildDictionary(" a = 1 ,c"), (Settings{{" a ", " 1 "}}));
    EXPECT_TRUE(DataGetter::buildDictionary("").isEmpty());
    EXPECT_EQ(DataGetter::buildArrayOfDics("a=1<br>"), (QList<Settings>{{{"a", "1"}}, {}}));
    EXPECT_EQ(DataGetter::buildArrayOfDics(""), QList<Settings>{Settings{}});
    EXPECT_EQ(DataGetter::buildArrayOfDics("a=1<br>b=2,c=3"),
              (QList<Settings>{{{"a", "1"}}, {{"b", "2"}, {"c", "3"}}}));
}

TEST(HttpDate, OnlyTheOneFormWithItsTrueWeekday) {
    const auto date = DataGetter::parseHttpDate("Sun, 22 Nov 2026 01:48:00 GMT");
    ASSERT_TRUE(date);
    EXPECT_EQ(*date, QDateTime(QDate(2026, 11, 22), QTime(1, 48), QTimeZone::utc()));
    EXPECT_TRUE(DataGetter::parseHttpDate("  Sun, 22 Nov 2026 01:48:00 GMT\r\n"));
    for (const char* bad :
         {"", "Sun, 22 Nov 2026 01:48:00", "Sun, 22 Nov 2026 01:48:00 UTC", "Mon, 22 Nov 2026 01:48:00 GMT",
          "Sun, 31 Nov 2026 01:48:00 GMT", "Sun, 22 Nov 2026 24:48:00 GMT", "Sunday, 22-Nov-26 01:48:00 GMT",
          "Sun, 22 Noe 2026 01:48:00 GMT", "أحد, 22 Nov 2026 01:48:00 GMT"}) {
        EXPECT_FALSE(DataGetter::parseHttpDate(bad)) << bad;
    }
}

TEST(ServerDate, AHeadOnTheServiceRootAndNothingButAGoodAnswerGivesADate) {
    TestPlatform platform;
    platform.setServiceUrl("http://127.0.0.1:8470/base");
    platform.restart();
    EXPECT_FALSE(DataGetter::getServerDate());
    platform.web().answerWithDate(QDateTime(QDate(2026, 11, 22), QTime(1, 48), QTimeZone::utc()));
    EXPECT_EQ(DataGetter::getServerDate(), QDateTime(QDate(2026, 11, 22), QTime(1, 48), QTimeZone::utc()));
    EXPECT_EQ(platform.web().lastMethod(), "HEAD");
    EXPECT_EQ(platform.web().lastUrl().toString(), "http://127.0.0.1:8470/base/");

    WebResponse teapot;
    teapot.received = true;
    teapot.status = 418;
    teapot.headers.insert("date", "Sun, 22 Nov 2026 01:48:00 GMT");
    platform.web().answerAlways(teapot);
    EXPECT_FALSE(DataGetter::getServerDate());

    WebResponse settings;
    settings.received = true;
    settings.status = 200;
    settings.body = "service=tarvolin,version=1";
    platform.web().answerAlways(settings);
    EXPECT_EQ(DataGetter::getAppSettings("tarvolin"), (Settings{{"service", "tarvolin"}, {"version", "1"}}));
    EXPECT_EQ(platform.web().lastUrl().toString(),
              "http://127.0.0.1:8470/base/views/wallsettings.php?appId=tarvolin");
    EXPECT_FALSE(DataGetter::parseJsonResponseWithUrl("http://127.0.0.1:8470/x").isValid());
    settings.body = "{\"a\": [1, 2]}";
    platform.web().answerAlways(settings);
    EXPECT_EQ(
        DataGetter::parseJsonResponseWithUrl("http://127.0.0.1:8470/x").toMap().value("a").toList().size(),
        2);
}

// A server on loopback that answers each request with the given bytes, or holds the connection open.
class LoopbackServer {
public:
    explicit LoopbackServer(QByteArray answer) : m_answer(std::move(answer)) {
        m_server.listen(QHostAddress::LocalHost);
        QObject::connect(&m_server, &QTcpServer::newConnection, [this] {
            QTcpSocket* socket = m_server.nextPendingConnection();
            QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
                m_request += socket->readAll();
                if (m_request.contains("\r\n\r\n") && !m_answer.isEmpty()) {
                    socket->write(m_answer);
                    socket->disconnectFromHost();
                }
            });
        });
    }
    QUrl url() const { return QUrl(QStringLiteral("http://127.0.0.1:%1/").arg(m_server.serverPort())); }
    QByteArray request() const { return m_request; }

private:
    QTcpServer m_server;
    QByteArray m_answer;
    QByteArray m_request;
};

// Runs the request on a worker thread, as the game does, while this thread serves.
WebResponse requestFromWorker(const QByteArray& method, const QUrl& url, int timeoutMs) {
    WebResponse response;
    std::atomic<bool> done = false;
    Dispatch::asyncGlobal([&] {
        QtWebClient client;
        response = client.sendSynchronousRequest(method, url, timeoutMs);
        done = true;
    });
    while (!done) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    Dispatch::waitForGlobal();
    return response;
}

TEST(WebClient, ReadsStatusAndHeadersFromAWorkerThread) {
    // A HEAD answer names the length of the body it does not send.
    LoopbackServer server(
        "HTTP/1.1 200 OK\r\nDate: Sun, 22 Nov 2026 01:48:00 GMT\r\nContent-Length: 17\r\n\r\n");
    const WebResponse r = requestFromWorker("HEAD", server.url(), 2000);
    EXPECT_TRUE(r.received);
    EXPECT_EQ(r.status, 200);
    EXPECT_EQ(r.header("Date"), "Sun, 22 Nov 2026 01:48:00 GMT");
    EXPECT_TRUE(server.request().startsWith("HEAD / HTTP/1.1"));

    LoopbackServer settings("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nservice=t");
    EXPECT_EQ(requestFromWorker("GET", settings.url(), 2000).body, "service=t");
    LoopbackServer missing("HTTP/1.1 404 Not Found\r\nContent-Length: 2\r\n\r\nno");
    const WebResponse notFound = requestFromWorker("GET", missing.url(), 2000);
    EXPECT_TRUE(notFound.received);
    EXPECT_EQ(notFound.status, 404);
    // A body cut short, by the server or by the limit, is no answer.
    LoopbackServer cut("HTTP/1.1 200 OK\r\nContent-Length: 90\r\n\r\nservice=t");
    EXPECT_FALSE(requestFromWorker("GET", cut.url(), 2000).received);
}

TEST(WebClient, NoAnswerIsNoResponse) {
    // Nothing listens on the discard port; a server that never answers is given up after the limit.
    const WebResponse refused = requestFromWorker("HEAD", QUrl("http://127.0.0.1:9/"), 5000);
    EXPECT_FALSE(refused.received);
    EXPECT_FALSE(refused.error.isEmpty());
    LoopbackServer silent{QByteArray()};
    const WebResponse late = requestFromWorker("HEAD", silent.url(), 150);
    EXPECT_FALSE(late.received);
    QtWebClient client;
    EXPECT_FALSE(client.sendSynchronousRequest("GET", QUrl("file:///etc/passwd"), 100).received);
}

} // namespace
