#include "AppPromoView.h"

#include "Addresses.h"
#include "ShareManager.h"
#include "platform/Platform.h"

#include <QDebug>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

const QJsonArray& table() {
    static const QJsonArray rows = [] {
        QFile file(QStringLiteral(":/promoted-games.json"));
        if (!file.open(QIODevice::ReadOnly)) {
            qWarning("The promoted games are missing from the game's resources.");
            return QJsonArray();
        }
        const QJsonDocument doc = QJsonDocument::fromJson(file.readAll());
        if (!doc.isArray()) {
            qWarning("The promoted games' table is not a list; no game is promoted.");
        }
        return doc.array();
    }();
    return rows;
}

// The first row whose identifier matches, in table order.
QJsonObject row(const QString& appId) {
    for (const QJsonValue& v : table()) {
        const QJsonObject r = v.toObject();
        if (r.value(QLatin1String("appId")).toString() == appId) {
            return r;
        }
    }
    return {};
}

QUrl picture(const QString& appId, const char* column) {
    const QString file = row(appId).value(QLatin1String(column)).toString();
    return file.isEmpty() ? QUrl() : QUrl(QStringLiteral("qrc:/images/") + file);
}

} // namespace

QString AppPromoView::getAppTitle(const QString& appId) {
    return row(appId).value(QLatin1String("title")).toString();
}

QString AppPromoView::getAppDesc(const QString& appId) {
    return row(appId).value(QLatin1String("description")).toString();
}

QUrl AppPromoView::getAppIcon(const QString& appId) {
    return picture(appId, "icon");
}

QUrl AppPromoView::getAppPromoImage(const QString& appId) {
    return picture(appId, "promoImage");
}

QStringList AppPromoView::promotedAppIds() {
    QStringList ids;
    for (const QJsonValue& v : table()) {
        ids.append(v.toObject().value(QLatin1String("appId")).toString());
    }
    return ids;
}

void AppPromoView::setupWithViewControllerAndAppId(ViewController* parent, const QString& appId) {
    m_parent = parent;
    m_appId = appId;
    m_title = getAppTitle(appId);
    m_desc = getAppDesc(appId);
    m_icon = getAppIcon(appId);
    m_promo = getAppPromoImage(appId);
    emit changed();
}

void AppPromoView::gotoAppAction() {
    ShareManager::sharedInstance().openAppInStoreWithViewController(m_appId, m_parent);
}

void AppPromoView::closeAction() {
    auto& nav = Platform::shared().navigator();
    if (m_parent && nav.presentedViewController() == m_parent) {
        // The card sits on its dimming background: both go.
        nav.dismissViewController();
        return;
    }
    m_hidden = true;
    emit changed();
}

AppPromoViewController::AppPromoViewController(QObject* parent)
    : ViewController(QStringLiteral("AppPromoViewController"), parent), m_card(new AppPromoView(this)) {}

void AppPromoViewController::setAppId(const QString& appId) {
    m_appId = appId;
}

void AppPromoViewController::viewDidLoad() {
    m_card->setupWithViewControllerAndAppId(this, m_appId.isEmpty() ? Addresses::promotedAppId() : m_appId);
}
