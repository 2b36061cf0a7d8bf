#include "DataGetter.h"

#include "platform/Platform.h"

#include <QJsonDocument>
#include <QLocale>
#include <QTimeZone>

QString DataGetter::serviceUrl(const QString& pathAndQuery) {
    QString base = Platform::shared().gameService().baseUrl().toString();
    if (!base.endsWith(QLatin1Char('/'))) {
        base += QLatin1Char('/');
    }
    return base + pathAndQuery;
}

DataGetter::Settings DataGetter::getAppSettings(const QString& appId) {
    const QString url = serviceUrl(kSettingsPath.arg(QString::fromLatin1(QUrl::toPercentEncoding(appId))));
    return buildDictionary(callServiceWithUrl(url));
}

QString DataGetter::callServiceWithUrl(const QString& url) {
    const WebResponse r = Platform::shared().web().sendSynchronousRequest("GET", QUrl(url), kTimeoutMs);
    if (!r.received) {
        qInfo().noquote() << QStringLiteral("No answer from %1: %2").arg(url, r.error);
        return {};
    }
    return QString::fromUtf8(r.body);
}

QVariant DataGetter::parseJsonResponseWithUrl(const QString& url) {
    const WebResponse r = Platform::shared().web().sendSynchronousRequest("GET", QUrl(url), kTimeoutMs);
    if (!r.received) {
        return {};
    }
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(r.body, &error);
    if (error.error != QJsonParseError::NoError) {
        return {};
    }
    return doc.toVariant();
}

DataGetter::Settings DataGetter::buildDictionary(const QString& text) {
    Settings settings;
    const QStringList items = text.split(QLatin1Char(','));
    for (const QString& item : items) {
        const QStringList parts = item.split(QLatin1Char('='));
        if (parts.size() == 2) {
            settings.insert(parts.at(0), parts.at(1));
        }
    }
    return settings;
}

QList<DataGetter::Settings> DataGetter::buildArrayOfDics(const QString& text) {
    QList<Settings> list;
    const QStringList records = text.split(QStringLiteral("<br>"));
    for (const QString& record : records) {
        list.append(buildDictionary(record));
    }
    return list;
}

std::optional<QDateTime> DataGetter::getServerDate() {
    const WebResponse r =
        Platform::shared().web().sendSynchronousRequest("HEAD", QUrl(serviceUrl(QString())), kTimeoutMs);
    if (!r.received) {
        qInfo().noquote() << QStringLiteral("No server date: %1").arg(r.error);
        return std::nullopt;
    }
    if (r.status != 200) {
        qInfo().noquote() << QStringLiteral("No server date: the service answered %1").arg(r.status);
        return std::nullopt;
    }
    const QByteArray value = r.header("Date");
    std::optional<QDateTime> date = parseHttpDate(value);
    if (!date) {
        qInfo().noquote() << QStringLiteral("No server date: the Date header \"%1\" is not a date")
                                 .arg(QString::fromLatin1(value.left(80)));
    }
    return date;
}

std::optional<QDateTime> DataGetter::parseHttpDate(const QByteArray& value) {
    // "Sun, 22 Nov 2026 01:48:00 GMT": the one form servers send; the zone is always GMT.
    const QString text = QString::fromLatin1(value).trimmed();
    if (text.size() != 29 || text.at(3) != QLatin1Char(',') || !text.endsWith(QLatin1String(" GMT"))) {
        return std::nullopt;
    }
    const QLocale c = QLocale::c();
    const QDate day = c.toDate(text.mid(5, 11), QStringLiteral("dd MMM yyyy"));
    const QTime time = QTime::fromString(text.mid(17, 8), QStringLiteral("HH:mm:ss"));
    if (!day.isValid() || !time.isValid() ||
        c.dayName(day.dayOfWeek(), QLocale::ShortFormat) != text.left(3)) {
        return std::nullopt;
    }
    return QDateTime(day, time, QTimeZone::utc());
}
