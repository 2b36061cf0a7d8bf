#pragma once

#include <QtGlobal>

// A small state beside the level: a time travel to an earlier round, and two per-round pass flags.
class RoundManager {
public:
    static RoundManager& sharedInstance();
    void loadData();

    void goToPreviousRound();
    void resetBackToOriginalRound();
    void incrementTravelLevel();
    void resetRoundBonusValues();
    void setFlyOverPassed(bool passed);
    void setFlipImagePassed(bool passed);

    bool isPreviousRound() const { return m_isPreviousRound; }
    bool isRoundFlyOverPassed() const { return m_isRoundFlyOverPassed; }
    bool isRoundFlipImagePassed() const { return m_isRoundFlipImagePassed; }
    qint64 travelRound() const { return m_travelRound; }
    qint64 travelLevel() const { return m_travelLevel; }
    void setIsPreviousRound(bool v) { m_isPreviousRound = v; }
    void setIsRoundFlyOverPassed(bool v) { m_isRoundFlyOverPassed = v; }
    void setIsRoundFlipImagePassed(bool v) { m_isRoundFlipImagePassed = v; }
    void setTravelRound(qint64 v) { m_travelRound = v; }
    void setTravelLevel(qint64 v) { m_travelLevel = v; }

private:
    void saveTravel();

    bool m_isPreviousRound = false;
    bool m_isRoundFlyOverPassed = false;
    bool m_isRoundFlipImagePassed = false;
    qint64 m_travelRound = 0;
    qint64 m_travelLevel = 0;
};
