#pragma once

#include <QString>

inline const QString NotificationCreditsChanged = QStringLiteral("NotificationCreditsChanged");
inline const QString NotificationSkipsChanged = QStringLiteral("NotificationSkipsChanged");

// Gold ("credits") and skips. Every change is written at once and announced; a first start grants 150 gold
// and one skip, once per installation.
class CreditsManager {
public:
    static constexpr qint64 kStartingCredits = 150;
    static constexpr qint64 kStartingSkips = 1;

    static CreditsManager& sharedInstance();
    void loadData();
    void restoreDefaults();

    void addCredits(qint64 amount);
    void setCreditsTo(qint64 amount);
    // Takes up to the amount, never below 0; the statistics count the whole amount asked for.
    void deductCredits(qint64 amount);
    void addSkips(qint64 amount);
    void deductOneSkip();
    void creditsChanged() {}

    qint64 currentCredits() const { return m_currentCredits; }
    qint64 currentSkips() const { return m_currentSkips; }
    void setCurrentCredits(qint64 v) { m_currentCredits = v; }
    void setCurrentSkips(qint64 v) { m_currentSkips = v; }

private:
    void saveCredits();
    void saveSkips();

    qint64 m_currentCredits = 0;
    qint64 m_currentSkips = 0;
};
