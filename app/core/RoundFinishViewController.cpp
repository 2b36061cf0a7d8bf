#include "RoundFinishViewController.h"

#include "LevelManager.h"
#include "RoundManager.h"
#include "outreach/SoundFactory.h"
#include "platform/Platform.h"
#include "progress/CreditsManager.h"
#include "progress/RankManager.h"
#include "screens/Util.h"

void RoundFinishViewController::viewDidLoad() {
    SoundFactory::sharedInstance().playGameFinish();
    auto& rounds = RoundManager::sharedInstance();
    // The level has already moved into the next round, so the current round counted from 1 is the one just
    // finished.
    finishedRound = rounds.isPreviousRound() ? rounds.travelRound() + 1
                                             : LevelManager::sharedInstance().getCurrentRound();
    const Rank& rank = RankManager::sharedInstance().getRankForRound(finishedRound);
    m_badge = rank.getBadge();
    m_rankName = rank.name;
    rewardedCredits = Util::isConnected() ? RankManager::sharedInstance().getRoundCreditsReward() : 0;
    CreditsManager::sharedInstance().addCredits(rewardedCredits);
    Platform::shared().emitter().startRoundEmitterOnViewForDuration(this, 0.0);
    rounds.resetRoundBonusValues();
}

void RoundFinishViewController::startNextRound() {
    SoundFactory::sharedInstance().playMenuTap();
    Platform::shared().navigator().dismissViewController();
}

bool RoundFinishViewController::keyPressed(const KeyPress& press) {
    if (press.isEnter()) {
        startNextRound();
        return true;
    }
    return ViewController::keyPressed(press);
}
