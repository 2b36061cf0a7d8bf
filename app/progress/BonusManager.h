#pragma once

#include <QDateTime>
#include <QList>
#include <QMutex>
#include <QString>
#include <optional>

// One usage bonus granted: the server's date of that day, and its kind.
struct Bonus {
    enum Type : qint32 { Daily = 1, Weekly = 2, Monthly = 3 };
    QDateTime bonusDay; // invalid for the first record of a start that had no server date
    qint32 type = Daily;

    static Bonus initWithDayType(const QDateTime& day, qint32 type) { return Bonus{day, type}; }
    bool operator==(const Bonus&) const = default;
};

// Pays the player for coming back: a daily bonus on each new calendar day by the server's clock, and weekly
// and monthly ones when enough daily records stand in the history. The history lives under "bonusList".
// Its calls wait on the network for the date, so they run on a worker thread; one run at a time.
class BonusManager {
public:
    static inline const QString kBonusListKey = QStringLiteral("bonusList");
    static constexpr qsizetype kWeeklyRecords = 6;
    static constexpr double kWeeklySpanSeconds = 10080000.0;
    static constexpr qsizetype kMonthlyRecords = 17;
    static constexpr double kMonthlySpanSeconds = 43200000.0;
    // A history that reaches this many records is emptied, and an empty history pays no more bonuses.
    static constexpr qsizetype kHistoryLimit = 101;

    static BonusManager& sharedInstance();
    void loadData() {}

    // The bonuses earned now by the server's date, added to the history and saved; nothing when no date
    // could be had or the day was paid already.
    std::optional<QList<Bonus>> getEntitledBonuses();
    // One line per bonus, daily, weekly and monthly in the order of the list; nothing for no bonus.
    static std::optional<QString> getBonusListMessage(const std::optional<QList<Bonus>>& list);
    static qint32 getBonusListCredits(const std::optional<QList<Bonus>>& list);

    bool isEntitledForDailyBonus(const QDateTime& date) const;
    bool isEntitledForWeeklyBonus(const QDateTime& date) const;
    bool isEntitledForMonthlyBonus(const QDateTime& date) const;
    static bool bonusSubListContainsType(const QList<Bonus>& list, qint32 type);

    void saveTotalBonusList();
    void loadTotalBonusList();

    const QList<Bonus>& previousBonusList() const { return m_previousBonusList; }
    void setPreviousBonusList(QList<Bonus> list) { m_previousBonusList = std::move(list); }

    // The stored form: a JSON array of {"bonusDay": ISO date or null, "type": n}; nothing when unreadable.
    static QByteArray archiveBonuses(const QList<Bonus>& list);
    static std::optional<QList<Bonus>> unarchiveBonuses(const QByteArray& bytes);

private:
    // The last n records span at most `seconds` and hold none of the type.
    bool isEntitledForPeriodic(qsizetype n, qint32 type, double seconds) const;

    QList<Bonus> m_previousBonusList;
    QMutex m_mutex;
};
