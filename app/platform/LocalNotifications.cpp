#include "LocalNotifications.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QUuid>
#include <algorithm>

QVariantMap LocalNotification::toMap() const {
    return {{QStringLiteral("alertBody"), alertBody},
            {QStringLiteral("alertAction"), alertAction},
            {QStringLiteral("fireDate"), fireDate},
            {QStringLiteral("applicationIconBadgeNumber"), applicationIconBadgeNumber},
            {QStringLiteral("userInfo"), userInfo}};
}

namespace {
QJsonObject toJson(const LocalNotification& n) {
    return {{"identifier", n.identifier},
            {"fireDate", n.fireDate.toUTC().toString(Qt::ISODateWithMs)},
            {"repeatsDaily", n.repeatsDaily},
            {"soundName", n.soundName},
            {"alertAction", n.alertAction},
            {"alertBody", n.alertBody},
            {"badge", n.applicationIconBadgeNumber},
            {"userInfo", QJsonObject::fromVariantMap(n.userInfo)}};
}

std::optional<LocalNotification> fromJson(const QJsonValue& v) {
    const QJsonObject o = v.toObject();
    LocalNotification n;
    n.identifier = o.value("identifier").toString();
    n.fireDate = QDateTime::fromString(o.value("fireDate").toString(), Qt::ISODateWithMs);
    if (!v.isObject() || n.identifier.isEmpty() || !n.fireDate.isValid() || !o.value("userInfo").isObject() ||
        !o.value("alertBody").isString()) {
        return std::nullopt;
    }
    n.repeatsDaily = o.value("repeatsDaily").toBool();
    n.soundName = o.value("soundName").toString();
    n.alertAction = o.value("alertAction").toString();
    n.alertBody = o.value("alertBody").toString();
    n.applicationIconBadgeNumber = o.value("badge").toInt();
    n.userInfo = o.value("userInfo").toObject().toVariantMap();
    return n;
}
} // namespace

LocalNotifications::LocalNotifications(QString filePath, QObject* parent)
    : QObject(parent), m_path(std::move(filePath)) {
    load();
}

void LocalNotifications::load() {
    if (m_path.isEmpty() || !QFile::exists(m_path)) {
        return;
    }
    QFile file(m_path);
    const bool opened = file.open(QIODevice::ReadOnly);
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(opened ? file.readAll() : QByteArray(), &error);
    file.close();
    const QJsonObject root = doc.object();
    QList<LocalNotification> scheduled;
    bool good = opened && error.error == QJsonParseError::NoError && doc.isObject() &&
                root.value("scheduled").isArray();
    for (const QJsonValue& v : root.value("scheduled").toArray()) {
        if (const auto n = fromJson(v)) {
            scheduled.append(*n);
        } else {
            good = false;
        }
    }
    if (!good) {
        qWarning().noquote() << "The schedule of notifications in" << m_path
                             << "could not be read; it starts empty, and the file is kept aside.";
        QFile::remove(m_path + QStringLiteral(".unreadable"));
        QFile::rename(m_path, m_path + QStringLiteral(".unreadable"));
        return;
    }
    m_scheduled = scheduled;
    m_types = root.value("types").toInt();
    m_asked = root.value("asked").toBool();
}

void LocalNotifications::save() {
    emit scheduleChanged();
    if (m_path.isEmpty()) {
        return;
    }
    QJsonArray list;
    for (const LocalNotification& n : std::as_const(m_scheduled)) {
        list.append(toJson(n));
    }
    const QJsonObject root{{"types", m_types}, {"asked", m_asked}, {"scheduled", list}};
    QDir().mkpath(QFileInfo(m_path).absolutePath());
    QSaveFile file(m_path);
    if (!file.open(QIODevice::WriteOnly) || file.write(QJsonDocument(root).toJson()) < 0 || !file.commit()) {
        qWarning().noquote() << "The schedule of notifications could not be written to" << m_path;
    }
}

void LocalNotifications::scheduleLocalNotification(LocalNotification notification) {
    notification.identifier = QUuid::createUuid().toString(QUuid::WithoutBraces);
    m_scheduled.append(std::move(notification));
    save();
}

void LocalNotifications::cancelLocalNotification(const QString& identifier) {
    const qsizetype removed = m_scheduled.removeIf(
        [&identifier](const LocalNotification& n) { return n.identifier == identifier; });
    if (removed > 0) {
        save();
    }
}

void LocalNotifications::cancelAllLocalNotifications() {
    m_scheduled.clear();
    save();
}

std::optional<QDateTime> LocalNotifications::nextFireDate() const {
    std::optional<QDateTime> next;
    for (const LocalNotification& n : m_scheduled) {
        if (!next || n.fireDate < *next) {
            next = n.fireDate;
        }
    }
    return next;
}

QList<LocalNotification> LocalNotifications::takeDueNotifications(const QDateTime& now,
                                                                  const QTimeZone& zone) {
    QList<LocalNotification> due;
    QList<LocalNotification> kept;
    for (LocalNotification& n : m_scheduled) {
        if (n.fireDate > now) {
            kept.append(n);
            continue;
        }
        due.append(n);
        if (n.repeatsDaily) {
            // The same time of day on the next calendar day that is still to come.
            QDateTime next = n.fireDate.toTimeZone(zone);
            while (next <= now) {
                next = next.addDays(1);
            }
            n.fireDate = next;
            kept.append(n);
        }
    }
    if (due.isEmpty()) {
        return due;
    }
    std::stable_sort(due.begin(), due.end(), [](const LocalNotification& a, const LocalNotification& b) {
        return a.fireDate < b.fireDate;
    });
    m_scheduled = kept;
    save();
    return due;
}

void LocalNotifications::setUserNotificationSettingsTypes(int types) {
    m_types = types;
    m_asked = true;
    save();
    emit userNotificationSettingsRegistered(types);
}
