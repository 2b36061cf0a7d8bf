#include "Addresses.h"

#include <QDebug>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

namespace {
const QJsonObject& addressTable() {
    static const QJsonObject table = [] {
        QFile file(QStringLiteral(":/outreach.json"));
        if (!file.open(QIODevice::ReadOnly)) {
            qWarning("The operator's addresses are missing from the game's resources.");
            return QJsonObject();
        }
        return QJsonDocument::fromJson(file.readAll()).object();
    }();
    return table;
}
} // namespace

QUrl Addresses::value(const QString& key) {
    const QUrl url(addressTable().value(key).toString(), QUrl::StrictMode);
    if (!url.isValid() || url.isEmpty()) {
        qWarning().noquote() << "No address for" << key;
    }
    return url;
}

QUrl Addresses::appStorePage() {
    return value(QStringLiteral("appStorePage"));
}
QUrl Addresses::makerStorePage() {
    return value(QStringLiteral("makerStorePage"));
}
QUrl Addresses::facebookPage() {
    return value(QStringLiteral("facebook"));
}
QUrl Addresses::twitterPage() {
    return value(QStringLiteral("twitter"));
}
QUrl Addresses::instagramPage() {
    return value(QStringLiteral("instagram"));
}

QString Addresses::promotedAppId() {
    return addressTable().value(QLatin1String("promotedAppId")).toString();
}
QUrl Addresses::promoStorePage() {
    return value(QStringLiteral("promoStorePage"));
}
QUrl Addresses::appPage(const QString& appId) {
    QUrl page = makerStorePage();
    page.setPath(page.path() + QLatin1Char('/') + QString::fromLatin1(QUrl::toPercentEncoding(appId)));
    return page;
}
