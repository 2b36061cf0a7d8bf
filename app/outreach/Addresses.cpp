#include "Addresses.h"

#include <QDebug>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {
const QJsonObject& table() {
    static const QJsonObject object = [] {
        QFile file(QStringLiteral(":/outreach.json"));
        if (!file.open(QIODevice::ReadOnly)) {
            qWarning("The operator's addresses are missing from the game's resources.");
            return QJsonObject();
        }
        return QJsonDocument::fromJson(file.readAll()).object();
    }();
    return object;
}
} // namespace

QString Addresses::text(const QString& key) {
    const QString value = table().value(key).toString();
    if (value.isEmpty()) {
        qWarning().noquote() << "No value for" << key;
    }
    return value;
}

QUrl Addresses::value(const QString& key) {
    const QUrl url(table().value(key).toString(), QUrl::StrictMode);
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
    return text(QStringLiteral("promotedAppId"));
}
QUrl Addresses::promoStorePage() {
    return value(QStringLiteral("promoStorePage"));
}
QUrl Addresses::appPage(const QString& appId) {
    QUrl page = makerStorePage();
    page.setPath(page.path() + QLatin1Char('/') + QString::fromLatin1(QUrl::toPercentEncoding(appId)));
    return page;
}
QUrl Addresses::facebookApp() {
    return value(QStringLiteral("facebookApp"));
}
QUrl Addresses::twitterApp() {
    return value(QStringLiteral("twitterApp"));
}
QUrl Addresses::instagramApp() {
    return value(QStringLiteral("instagramApp"));
}
QString Addresses::appStoreIdentifier() {
    return text(QStringLiteral("appStoreIdentifier"));
}
QString Addresses::makerStoreIdentifier() {
    return text(QStringLiteral("makerStoreIdentifier"));
}

QString Addresses::adUnit(const QString& name) {
    const QString unit = table().value(QLatin1String("adUnits")).toObject().value(name).toString();
    if (unit.isEmpty()) {
        qWarning().noquote() << "No ad unit for" << name;
    }
    return unit;
}
QStringList Addresses::testDeviceIdentifiers() {
    QStringList ids;
    for (const QJsonValue& v : table().value(QLatin1String("testDeviceIdentifiers")).toArray()) {
        ids.append(v.toString());
    }
    return ids;
}
