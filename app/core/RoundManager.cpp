#include "RoundManager.h"

#include "LevelManager.h"
#include "platform/Platform.h"
#include "platform/SharedInstances.h"
#include "progress/ProgressDocument.h"

namespace {
void announce() {
    Platform::shared().notificationCenter().postNotificationName(NotificationProgressChanged);
}
} // namespace

RoundManager& RoundManager::sharedInstance() {
    return Shared<RoundManager>::instance();
}

void RoundManager::loadData() {
    auto& d = Platform::shared().userDefaults();
    m_isPreviousRound = d.boolForKey("isPreviousRound");
    m_isRoundFlyOverPassed = d.boolForKey("isFlyOverPassed");
    m_isRoundFlipImagePassed = d.boolForKey("isFlipImagePassed");
    m_travelRound = d.integerForKey("travelRound");
    m_travelLevel = d.integerForKey("travelLevel");
}

void RoundManager::saveTravel() {
    auto& d = Platform::shared().userDefaults();
    d.setIntegerForKey(m_travelRound, "travelRound");
    d.setIntegerForKey(m_travelLevel, "travelLevel");
    d.setBoolForKey(m_isPreviousRound, "isPreviousRound");
    d.synchronize();
    announce();
}

void RoundManager::goToPreviousRound() {
    const std::uint32_t r = arc4random();
    const qint64 c = LevelManager::sharedInstance().getCurrentRound();
    // Rounds 0 to c - 3; below round 3 there is none, and the draw stands as it came.
    const auto divisor = static_cast<std::uint64_t>(c - 2);
    m_travelRound = divisor == 0 ? static_cast<qint64>(r) : static_cast<qint64>(r % divisor);
    m_travelLevel = 25 * m_travelRound;
    m_isPreviousRound = true;
    saveTravel();
    resetRoundBonusValues();
}

void RoundManager::resetBackToOriginalRound() {
    m_isPreviousRound = false;
    m_travelRound = 0;
    m_travelLevel = 0;
    saveTravel();
}

void RoundManager::incrementTravelLevel() {
    m_travelLevel += 1;
    auto& d = Platform::shared().userDefaults();
    d.setIntegerForKey(m_travelLevel, "travelLevel");
    d.synchronize();
    announce();
}

void RoundManager::resetRoundBonusValues() {
    setFlyOverPassed(false);
    setFlipImagePassed(false);
}

void RoundManager::setFlyOverPassed(bool passed) {
    m_isRoundFlyOverPassed = passed;
    Platform::shared().userDefaults().setBoolForKey(passed, "isFlyOverPassed");
    announce();
}

void RoundManager::setFlipImagePassed(bool passed) {
    m_isRoundFlipImagePassed = passed;
    Platform::shared().userDefaults().setBoolForKey(passed, "isFlipImagePassed");
    announce();
}
