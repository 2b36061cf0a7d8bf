#pragma once

#include <QColor>
#include <QString>
#include <QStringList>

// A view's call for attention, which its view draws: a flash to a colour and back for ever, or a shake every
// few seconds. An empty effect is none.
struct Attention {
    QString effect; // "flash" or "shake"
    QColor color;
    double interval = 0;
    bool operator==(const Attention&) const = default;
};

// Playing tips, one at a time as the tip of the day, and when an element of the main screen should call for
// the player's attention. The figures it judges by are taken once, when it is made.
class TipsManager {
public:
    static inline const QString kTipOfTheDayKey = QStringLiteral("tipOfTheDayKey");
    static inline const QString kTipOfTheDayTitle = QStringLiteral("ملاحظة اليوم");
    static constexpr double kTipSeconds = 8.0;
    static constexpr double kShakeSeconds = 3.0;

    static TipsManager& sharedInstance();
    void loadData();

    // The next tip in the dropdown banner; every showing moves on, round and round.
    void showTipOfTheDayBanner();
    bool isTimeToAlertSettings() const;
    bool isTimeToAlertAchievements() const;
    bool isTimeToAlertRanks() const;
    bool isTimeToAlertLeaderboard() const;
    void doAlertAchievements(Attention& view);
    void doAlertSettings(Attention& view);
    void doAlertStartButton(Attention& view);
    void doAlertRanks(Attention&) {}
    void doAlertLeaderboard(Attention&) {}
    void shakeView(Attention& view);
    void startFlashingViewWithColor(Attention& view, const QColor& color);
    // The popup that stands ready for a session of five or of three with a task to collect.
    void checkAndShowAlertMessagePopup();

    qint64 currentSessions() const { return m_currentSessions; }
    qint64 currentRankIndex() const { return m_currentRankIndex; }
    qint64 currentPointsPercentage() const { return m_currentPointsPercentage; }
    qint64 currentGamecenterRank() const { return m_currentGamecenterRank; }
    bool isUnrewardedAchievement() const { return m_isUnrewardedAchievement; }
    const QStringList& tips() const { return m_tips; }
    qint64 tipOfTheDayIndex() const { return m_tipOfTheDayIndex; }
    qint64 lastAlertedRank() const { return m_lastAlertedRank; }
    qint64 lastAlertedGamecenterRank() const { return m_lastAlertedGamecenterRank; }
    void setCurrentSessions(qint64 v) { m_currentSessions = v; }
    void setCurrentRankIndex(qint64 v) { m_currentRankIndex = v; }
    void setCurrentPointsPercentage(qint64 v) { m_currentPointsPercentage = v; }
    void setCurrentGamecenterRank(qint64 v) { m_currentGamecenterRank = v; }
    void setIsUnrewardedAchievement(bool v) { m_isUnrewardedAchievement = v; }
    void setTipOfTheDayIndex(qint64 v) { m_tipOfTheDayIndex = v; }
    void setLastAlertedRank(qint64 v) { m_lastAlertedRank = v; }
    void setLastAlertedGamecenterRank(qint64 v) { m_lastAlertedGamecenterRank = v; }

private:
    qint64 m_currentSessions = 0;
    qint64 m_currentRankIndex = 0;
    qint64 m_currentPointsPercentage = 0;
    qint64 m_currentGamecenterRank = 0;
    bool m_isUnrewardedAchievement = false;
    QStringList m_tips;
    qint64 m_tipOfTheDayIndex = 0;
    qint64 m_lastAlertedRank = 0;
    qint64 m_lastAlertedGamecenterRank = 0;
};
