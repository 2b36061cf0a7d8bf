// A payment interrupted by a killed game: the pack is paid at the next start, once, and never again.
#include "ServiceProcess.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

QJsonObject call(const QByteArray& method, const QString& url, const QString& token,
                 const QJsonObject& body = {}) {
    QNetworkAccessManager net;
    QNetworkRequest request{QUrl(url)};
    request.setHeader(QNetworkRequest::ContentTypeHeader, "application/json");
    if (!token.isEmpty()) {
        request.setRawHeader("Authorization", "Bearer " + token.toLatin1());
    }
    QNetworkReply* reply = net.sendCustomRequest(request, method, QJsonDocument(body).toJson());
    QEventLoop loop;
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    loop.exec();
    reply->deleteLater();
    return QJsonDocument::fromJson(reply->readAll()).object();
}

struct ChildRun {
    int exitCode = -1;
    QJsonObject printed;
};

class KilledMidPurchase : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir.isValid());
        const int port = service.start(TARVOLIN_SERVICE_BINARY, dir.filePath("svc.db"));
        ASSERT_NE(port, 0);
        base = QStringLiteral("http://127.0.0.1:%1").arg(port);
        token =
            call("POST", base + "/v1/accounts", {}, {{"displayName", "سلمى"}, {"password", "secret-pass-1"}})
                .value("token")
                .toString();
        ASSERT_FALSE(token.isEmpty());
    }
    ChildRun child(const QString& mode) {
        QProcess p;
        p.start(TARVOLIN_PURCHASE_CHILD, {base, dir.filePath("settings.ini"), token, mode});
        p.waitForFinished(60000);
        ChildRun r;
        r.exitCode = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
        r.printed = QJsonDocument::fromJson(p.readAllStandardOutput().trimmed()).object();
        return r;
    }
    QJsonArray unfinished() {
        return call("GET", base + "/v1/store/transactions", token).value("transactions").toArray();
    }

    QTemporaryDir dir;
    ServiceProcess service;
    QString base;
    QString token;
};

TEST_P(KilledMidPurchase, ThePackIsPaidAtTheNextStartExactlyOnce) {
    ASSERT_EQ(child(GetParam()).exitCode, 9);
    const QJsonArray waiting = unfinished();
    ASSERT_EQ(waiting.size(), 1);
    EXPECT_EQ(waiting.at(0).toObject().value("state").toString(), "purchased");

    const ChildRun first = child("start");
    ASSERT_EQ(first.exitCode, 0);
    // A first start's 150 gold and one skip, and the second pack's 3000 and 15.
    EXPECT_EQ(first.printed.value("credits").toInteger(), 150 + 3000);
    EXPECT_EQ(first.printed.value("skips").toInteger(), 1 + 15);
    EXPECT_TRUE(first.printed.value("inAppsPurchased").toBool());
    EXPECT_TRUE(unfinished().isEmpty());

    const ChildRun second = child("start");
    EXPECT_EQ(second.printed.value("credits").toInteger(), 150 + 3000);
    EXPECT_EQ(second.printed.value("skips").toInteger(), 1 + 15);
}

INSTANTIATE_TEST_SUITE_P(Moments, KilledMidPurchase,
                         ::testing::Values("buy-then-die-before", "buy-then-die-after"),
                         [](const ::testing::TestParamInfo<const char*>& info) {
                             return std::string(info.param) == "buy-then-die-before"
                                        ? "BeforeTheDelivery"
                                        : "AfterTheDeliveryUnwritten";
                         });

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
