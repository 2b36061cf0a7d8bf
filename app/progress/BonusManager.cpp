#include "BonusManager.h"

#include "RankManager.h"
#include "outreach/DataGetter.h"
#include "platform/Platform.h"
#include "platform/SharedInstances.h"
#include "screens/Util.h"

#include <QDebug>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <limits>

BonusManager& BonusManager::sharedInstance() {
    return Shared<BonusManager>::instance();
}

QByteArray BonusManager::archiveBonuses(const QList<Bonus>& list) {
    QJsonArray array;
    for (const Bonus& b : list) {
        array.append(QJsonObject{{"bonusDay", b.bonusDay.isValid()
                                                  ? QJsonValue(b.bonusDay.toUTC().toString(Qt::ISODateWithMs))
                                                  : QJsonValue(QJsonValue::Null)},
                                 {"type", b.type}});
    }
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

std::optional<QList<Bonus>> BonusManager::unarchiveBonuses(const QByteArray& bytes) {
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError || !doc.isArray()) {
        return std::nullopt;
    }
    QList<Bonus> list;
    for (const QJsonValue& v : doc.array()) {
        const QJsonObject o = v.toObject();
        const QJsonValue day = o.value("bonusDay");
        const QJsonValue type = o.value("type");
        // The type is a whole number of 32 bits (toInteger gives the fallback for a fraction or a huge one).
        const qint64 kind = type.toInteger(std::numeric_limits<qint64>::min());
        if (!v.isObject() || !type.isDouble() || kind < std::numeric_limits<qint32>::min() ||
            kind > std::numeric_limits<qint32>::max()) {
            return std::nullopt;
        }
        Bonus b{QDateTime(), static_cast<qint32>(kind)};
        if (!day.isNull()) {
            b.bonusDay = QDateTime::fromString(day.toString(), Qt::ISODateWithMs);
            if (!b.bonusDay.isValid()) {
                return std::nullopt;
            }
        }
        list.append(b);
    }
    return list;
}

void BonusManager::saveTotalBonusList() {
    auto& defaults = Platform::shared().userDefaults();
    defaults.setStringForKey(QString::fromUtf8(archiveBonuses(m_previousBonusList)), kBonusListKey);
    defaults.synchronize();
}

void BonusManager::loadTotalBonusList() {
    auto& defaults = Platform::shared().userDefaults();
    if (defaults.hasKey(kBonusListKey)) {
        const QString stored = defaults.stringForKey(kBonusListKey);
        if (std::optional<QList<Bonus>> list = unarchiveBonuses(stored.toUtf8())) {
            m_previousBonusList = *list;
            return;
        }
        // Kept aside for whoever looks into it; the history starts again as on a first run.
        qWarning().noquote() << "The stored bonus history could not be read; it starts again, and the old "
                                "value is kept under bonusList.unreadable.";
        defaults.setStringForKey(stored, kBonusListKey + QStringLiteral(".unreadable"));
    }
    // The first record pays nothing: it is what stops a new player collecting on the very first day.
    m_previousBonusList = {Bonus{DataGetter::getServerDate().value_or(QDateTime()), Bonus::Daily}};
    saveTotalBonusList();
}

std::optional<QList<Bonus>> BonusManager::getEntitledBonuses() {
    QMutexLocker lock(&m_mutex);
    const std::optional<QDateTime> date = DataGetter::getServerDate();
    loadTotalBonusList();
    if (!date || !isEntitledForDailyBonus(*date)) {
        return std::nullopt;
    }
    QList<Bonus> result;
    const auto grant = [&](qint32 type) {
        const Bonus b{*date, type};
        result.append(b);
        m_previousBonusList.append(b);
    };
    grant(Bonus::Daily);
    if (isEntitledForWeeklyBonus(*date)) {
        grant(Bonus::Weekly);
    }
    if (isEntitledForMonthlyBonus(*date)) {
        grant(Bonus::Monthly);
    }
    if (m_previousBonusList.size() >= kHistoryLimit) {
        m_previousBonusList.clear();
    }
    saveTotalBonusList();
    return result;
}

bool BonusManager::isEntitledForDailyBonus(const QDateTime& date) const {
    if (m_previousBonusList.isEmpty()) {
        return false;
    }
    const QDateTime& last = m_previousBonusList.last().bonusDay;
    return !last.isValid() || !Util::isTwoDatesSameDay(last, date);
}

bool BonusManager::isEntitledForPeriodic(qsizetype n, qint32 type, double seconds) const {
    if (m_previousBonusList.size() < n) {
        return false;
    }
    const QList<Bonus> lastN = m_previousBonusList.mid(m_previousBonusList.size() - n);
    if (bonusSubListContainsType(lastN, type)) {
        return false;
    }
    const QDateTime& first = lastN.first().bonusDay;
    const QDateTime& last = lastN.last().bonusDay;
    // A record without a date spans nothing.
    const double span =
        first.isValid() && last.isValid() ? static_cast<double>(first.msecsTo(last)) / 1000.0 : 0.0;
    return span <= seconds;
}

bool BonusManager::isEntitledForWeeklyBonus(const QDateTime& /*date*/) const {
    return isEntitledForPeriodic(kWeeklyRecords, Bonus::Weekly, kWeeklySpanSeconds);
}

bool BonusManager::isEntitledForMonthlyBonus(const QDateTime& /*date*/) const {
    return isEntitledForPeriodic(kMonthlyRecords, Bonus::Monthly, kMonthlySpanSeconds);
}

bool BonusManager::bonusSubListContainsType(const QList<Bonus>& list, qint32 type) {
    return std::any_of(list.begin(), list.end(), [type](const Bonus& b) { return b.type == type; });
}

std::optional<QString> BonusManager::getBonusListMessage(const std::optional<QList<Bonus>>& list) {
    if (!list || list->isEmpty()) {
        return std::nullopt;
    }
    const RankManager& ranks = RankManager::sharedInstance();
    const QString gold = QStringLiteral("ذهبة");
    QString message;
    for (const Bonus& b : *list) {
        switch (b.type) {
        case Bonus::Daily:
            message += QStringLiteral("لقد ربحت %1 %2 بفضل استخدامك اليومي\n")
                           .arg(ranks.getDailyBonusReward())
                           .arg(gold);
            break;
        case Bonus::Weekly:
            message += QStringLiteral("لقد ربحت %1 %2 بفضل استخدامك الإسبوعي\n")
                           .arg(ranks.getWeeklyBonusReward())
                           .arg(gold);
            break;
        case Bonus::Monthly:
            message += QStringLiteral("لقد ربحت %1 %2 بفضل استخدامك الشهري\n")
                           .arg(ranks.getMonthlyBonusReward())
                           .arg(gold);
            break;
        default:
            break;
        }
    }
    return message;
}

qint32 BonusManager::getBonusListCredits(const std::optional<QList<Bonus>>& list) {
    if (!list) {
        return 0;
    }
    qint32 credits = 0;
    for (const Bonus& b : *list) {
        switch (b.type) {
        case Bonus::Daily:
            credits += 25;
            break;
        case Bonus::Weekly:
            credits += 50;
            break;
        case Bonus::Monthly:
            credits += 100;
            break;
        default:
            break;
        }
    }
    return credits;
}
