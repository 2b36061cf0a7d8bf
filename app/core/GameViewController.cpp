#include "GameViewController.h"

#include "LevelManager.h"
#include "LevelSuccessViewController.h"
#include "LevelsInfoReader.h"
#include "outreach/AdManager.h"
#include "outreach/GameIAPHelper.h"
#include "outreach/InterstitialManager.h"
#include "outreach/ShareManager.h"
#include "outreach/ShareView.h"
#include "outreach/SoundFactory.h"
#include "platform/Platform.h"
#include "progress/CreditsManager.h"
#include "progress/NotificationManager.h"
#include "progress/RankManager.h"
#include "progress/ScorePointsManager.h"
#include "progress/SessionManager.h"
#include "progress/TutorialAlertsManager.h"
#include "progress/UserStatsManager.h"
#include "screens/ColorUtil.h"
#include "screens/ImageUtil.h"
#include "screens/PresentationUtil.h"
#include "screens/Util.h"

#include <QDebug>
#include <algorithm>
#include <cmath>

GameViewController::GameViewController(QObject* parent)
    : ViewController(QStringLiteral("GameViewController"), parent),
      m_layout(BoardLayout::forDevice(Platform::shared().device().cls())) {
    const QRectF& s = m_layout.screen;
    m_adsView = new AdsHostView(
        QRectF(0, s.height() - BoardLayout::kBannerHeight, s.width(), BoardLayout::kBannerHeight), this);
}

GameViewController::~GameViewController() {
    if (timer) {
        timer->invalidate();
    }
    stopBattleTimer();
    if (Platform::isInstalled()) {
        Platform::shared().notificationCenter().removeObserver(this);
    }
}

void GameViewController::viewDidLoad() {
    creditsChangedAction();
    skipsChangedAction();
    setupGameview();
    auto& center = Platform::shared().notificationCenter();
    center.addObserver(this, NotificationCreditsChanged,
                       [this](const Notification&) { creditsChangedAction(); });
    center.addObserver(this, NotificationSkipsChanged, [this](const Notification&) { skipsChangedAction(); });
    center.addObserver(this, NotificationVideoWatched, [this](const Notification&) { videoWatchedAction(); });
    center.addObserver(this, kNotificationVideoAdLoaded, [this](const Notification&) { videoAdLoaded(); });
    center.addObserver(this, kNotificationVideoAdFailedToLoad,
                       [this](const Notification&) { videoAdFailedToLoad(); });
    startTimer();
    preloadInterstitialAd();
    AdManager::sharedInstance().loadAdMobBannerViewOnView(m_adsView);
    if (battleGameType >= 1) {
        setupBattle();
    }
}

bool GameViewController::canGoBack() const {
    return Platform::shared().navigator().depth() > 1;
}

// ---- building the board ----

void GameViewController::dropBoard() {
    if (m_workView) {
        m_workView->deleteLater();
        m_workView = nullptr;
    }
    gameView = nullptr;
    lettersLabels.clear();
    correctLetters.clear();
    solutionBlocks.clear();
    solutionLetters.clear();
    m_placed.clear();
}

void GameViewController::setupGameview() {
    dropBoard();
    m_workView = new QObject(this);

    auto* wordView = WordView::loadInstance(QRectF(QPointF(0, 0), m_layout.gameView.size()), m_workView);
    wordView->delegate = this;
    gameView = wordView;
    gameView->initGameViewWithGame(game);

    m_gameNameText = QStringLiteral("طارفولين");
    m_levelText = QString::number(game ? game->gameLevel + 1 : 1);

    loadWorkView();
    initLettersArray();
    setupLettersArray();
    createSolutionBlocks();
    setSolutionBarImage(QStringLiteral("bg_solution"));
    emit boardChanged();

    if (game && game->gameLevel == 0 && game->gameRound == 0) {
        showHelpPopuup();
    }
    reset();
    videoRewardedCount = 0;
}

void GameViewController::loadWorkView() {
    // The working view's tiles: twelve, tagged 101 to 112, at the places of the device's layout.
    for (int i = 0; i < kTrayTileCount; ++i) {
        auto* tile = LetterLabel::initWithText(QString(), m_workView);
        tile->setFrame(m_layout.tiles[static_cast<size_t>(i)]);
        tile->setObjectName(QStringLiteral("tile%1").arg(101 + i));
        lettersLabels.append(tile);
    }
}

void GameViewController::initLettersArray() {
    // lettersLabels already holds the tiles in tag order; each starts in the tray with a letter tap.
    for (LetterLabel* tile : std::as_const(lettersLabels)) {
        tile->solutionBoxPos = -1;
        tile->setRecognizer(LetterLabel::LetterTap);
    }
}

void GameViewController::setupLettersArray() {
    correctLetters.clear();
    const auto info = game ? game->levelInfo() : nullptr;
    const QString solution = info ? info->solution : QString();
    const QString other = info ? info->otherLetters : QString();
    const QString pool = (solution + other + kFillerString).left(kTrayTileCount);
    for (int i = 0; i < kTrayTileCount; ++i) {
        LetterLabel* tile = lettersLabels.at(i);
        // A pool shorter than the tray leaves the last tiles blank rather than reading past its end.
        tile->setText(i < pool.size() ? QString(pool.at(i)) : QString());
        if (i < solution.size()) {
            tile->isCorrect = true;
            tile->correctSolutionBoxPos = i;
            correctLetters.append(tile);
        }
    }
    shuffleLettersPositions();
}

void GameViewController::shuffleLettersPositions() {
    const auto n = static_cast<std::uint32_t>(lettersLabels.size());
    for (std::uint32_t i = 0; i < n; ++i) {
        const std::uint32_t j = i + arc4random() % (n - i);
        LetterLabel* a = lettersLabels.at(i);
        LetterLabel* b = lettersLabels.at(j);
        const QRectF fa = a->frame();
        a->setFrame(b->frame());
        b->setFrame(fa);
        a->originalFrame = a->frame();
        b->originalFrame = b->frame();
    }
}

void GameViewController::createSolutionBlocks() {
    solutionBlocks.clear();
    solutionLetters.clear();
    const auto info = game ? game->levelInfo() : nullptr;
    const qint64 n = info ? info->solution.size() : 0;
    if (n == 0) {
        return;
    }
    const auto W = static_cast<qint64>(m_layout.solutionBar.width());
    const auto H = static_cast<qint64>(m_layout.solutionBar.height());
    const auto T = static_cast<qint64>(0.75 * lettersLabels.first()->frame().width());
    const qint64 s = std::min((W - 12) / n - 6, T);
    const qint64 y = static_cast<qint64>(H * 0.2);
    const qint64 h = static_cast<qint64>(H * 0.6);
    // Right to left: box 0 is the rightmost, and the run of boxes is centred in the bar.
    qint64 x = W - (W - (s + 6) * n) / 2 - s;
    for (qint64 i = 0; i < n; ++i) {
        auto* box = new SolutionBlock(QRectF(static_cast<double>(x), static_cast<double>(y),
                                             static_cast<double>(s), static_cast<double>(h)),
                                      m_workView);
        box->setObjectName(QStringLiteral("box%1").arg(i));
        solutionBlocks.append(box);
        solutionLetters.append(newPlaceholder());
        x -= s + 6;
    }
}

LetterLabel* GameViewController::newPlaceholder() {
    return LetterLabel::initWithText(QStringLiteral(""), m_workView);
}

QRectF GameViewController::boxFrameInWorkView(qint64 box) const {
    return solutionBlocks.at(box)->frame().translated(m_layout.solutionBar.topLeft());
}

// ---- taps ----

void GameViewController::tapTile(int index) {
    if (index < 0 || index >= lettersLabels.size()) {
        return;
    }
    LetterLabel* tile = lettersLabels.at(index);
    if (!tile->isOnScreen()) {
        return;
    }
    switch (tile->recognizer()) {
    case LetterLabel::LetterTap:
        letterTapAction(tile);
        break;
    case LetterLabel::SolutionLetterTap:
        solutionLetterTapAction(tile);
        break;
    default:
        break;
    }
}

void GameViewController::letterTapAction(LetterLabel* tile) {
    // A tile taken from the tray clicks; one sent back from a box is silent.
    SoundFactory::sharedInstance().playTap2();
    letterTap(tile);
}

void GameViewController::letterTap(LetterLabel* tile) {
    tile->bringToFront();
    qint64 box = -1;
    for (qint64 i = 0; i < solutionBlocks.size(); ++i) {
        if (solutionBlocks.at(i)->tag() == 0) {
            box = i;
            break;
        }
    }
    if (box < 0) {
        return;
    }
    tile->solutionBoxPos = box;
    tile->notifyChanged();
    solutionBlocks.at(box)->setTag(1);
    m_placed.removeAll(tile);
    m_placed.append(tile);
    QPointer<LetterLabel> guard(tile);
    const QRectF target = boxFrameInWorkView(box);
    Platform::shared().animator().animateWithDurationAnimationsCompletion(
        kMoveSeconds, [tile, target] { tile->setFrame(target); },
        [this, guard, box, alive = std::weak_ptr<int>(m_alive)] {
            // A reveal may have sent the tile back on its way; then this move no longer lands.
            if (alive.expired() || !guard || guard->parent() != m_workView || guard->solutionBoxPos != box ||
                guard->isRevealed) {
                return;
            }
            clearGestureRecognizersFrom(guard);
            guard->setRecognizer(LetterLabel::SolutionLetterTap);
            solutionLetters[box] = guard;
            checkAnswer();
        });
}

void GameViewController::solutionLetterTapAction(LetterLabel* tile) {
    solutionLetterTap(tile);
}

void GameViewController::solutionLetterTap(LetterLabel* tile) {
    const qint64 box = tile->solutionBoxPos;
    if (box >= 0 && box < solutionLetters.size()) {
        solutionLetters[box] = newPlaceholder();
        solutionBlocks.at(box)->setTag(0);
    }
    tile->solutionBoxPos = -1;
    QPointer<LetterLabel> guard(tile);
    const QRectF home = tile->originalFrame;
    Platform::shared().animator().animateWithDurationAnimationsCompletion(
        kMoveSeconds, [tile, home] { tile->setFrame(home); },
        [this, guard, alive = std::weak_ptr<int>(m_alive)] {
            if (alive.expired() || !guard || guard->parent() != m_workView) {
                return;
            }
            clearGestureRecognizersFrom(guard);
            guard->setRecognizer(LetterLabel::LetterTap);
        });
}

void GameViewController::clearGestureRecognizersFrom(LetterLabel* tile) {
    tile->setRecognizer(LetterLabel::NoRecognizer);
}

QString GameViewController::currentAnswer() const {
    QString row;
    for (const LetterLabel* l : solutionLetters) {
        row += l->text();
    }
    return row;
}

LetterLabel* GameViewController::tileInBox(int box) const {
    if (box < 0 || box >= solutionLetters.size() || solutionLetters.at(box)->text().isEmpty()) {
        return nullptr;
    }
    return solutionLetters.at(box);
}

void GameViewController::checkAnswer() {
    const auto info = game ? game->levelInfo() : nullptr;
    if (!info) {
        return;
    }
    const QString row = currentAnswer();
    if (row == info->solution) {
        qDebug("correct answer");
        stopTimer();
        gameSuccess();
    } else if (row.size() == info->solution.size()) {
        setSolutionBarImage(QStringLiteral("bg_solution_wrong"));
        SoundFactory::sharedInstance().playIncorrect();
        Util::delayCallbackForTotalSeconds(
            [this, alive = std::weak_ptr<int>(m_alive)] {
                if (!alive.expired()) {
                    setSolutionBarImage(QStringLiteral("bg_solution"));
                }
            },
            kWrongFlashSeconds);
    }
}

void GameViewController::setSolutionBarImage(const QString& image) {
    if (image != m_solutionBarImage) {
        m_solutionBarImage = image;
        emit solutionBarImageChanged();
    }
}

// ---- the first level's help ----

void GameViewController::showHelpPopuup() {
    m_helpPopupVisible = true;
    emit helpPopupVisibleChanged();
}

void GameViewController::displayHelpView() {
    showHelpPopuup();
}

void GameViewController::openCredits() {
    PresentationUtil::openCreditsViewController(this);
}

void GameViewController::dismissHelpAction() {
    if (!m_helpPopupVisible) {
        return;
    }
    m_helpPopupVisible = false;
    emit helpPopupVisibleChanged();
    auto& tutorials = TutorialAlertsManager::sharedInstance();
    if (game && game->gameRound == 0 && game->gameLevel == 0 &&
        !tutorials.isAlertShownWithId(kFirstLevelTutorial)) {
        Util::delayCallbackForTotalSeconds(
            [this, alive = std::weak_ptr<int>(m_alive)] {
                if (!alive.expired()) {
                    showFirstPopupMessage();
                }
            },
            2.0);
        tutorials.setAlertShownWithId(kFirstLevelTutorial);
    }
}

void GameViewController::showFirstPopupMessage() {
    Util::showMessageWithTitleOnDismiss(
        QStringLiteral("بما أنها أول مرحلة سنقوم بكشف حرفين من الحل لمساعدتك"), QStringLiteral("مساعدة"),
        [this, alive = std::weak_ptr<int>(m_alive)] {
            if (alive.expired()) {
                return;
            }
            revealRandomLetter();
            Util::delayCallbackForTotalSeconds(
                [this, alive] {
                    if (!alive.expired()) {
                        revealRandomLetter();
                    }
                },
                0.5);
        });
}

// ---- help on the board ----

void GameViewController::revealRandomLetter() {
    QList<LetterLabel*> hidden;
    for (LetterLabel* tile : std::as_const(correctLetters)) {
        if (!tile->isRevealed) {
            hidden.append(tile);
        }
    }
    if (hidden.isEmpty()) {
        // Every letter is already given: the level is over or about to be.
        return;
    }
    LetterLabel* tile =
        hidden.at(static_cast<qsizetype>(arc4random() % static_cast<std::uint32_t>(hidden.size())));

    // A tile standing in a box frees that box; its entry in the row stays until another tile lands there.
    if (tile->solutionBoxPos >= 0 && tile->solutionBoxPos < solutionBlocks.size()) {
        solutionBlocks.at(tile->solutionBoxPos)->setTag(0);
    }
    const qint64 target = tile->correctSolutionBoxPos;
    if (solutionBlocks.at(target)->tag() == 1) {
        // Another tile holds the box (or is on its way there): it goes back to the tray.
        for (LetterLabel* other : std::as_const(lettersLabels)) {
            if (other != tile && other->solutionBoxPos == target && !other->isRevealed &&
                other->isOnScreen()) {
                solutionLetterTap(other);
                break;
            }
        }
    }
    solutionBlocks.at(target)->setTag(1);
    tile->bringToFront();
    // Locked from the start of its move, so that no tap can take it elsewhere on the way.
    clearGestureRecognizersFrom(tile);
    QPointer<LetterLabel> guard(tile);
    const QRectF frame = boxFrameInWorkView(target);
    Platform::shared().animator().animateWithDurationAnimationsCompletion(
        kMoveSeconds, [tile, frame] { tile->setFrame(frame); },
        [this, guard, target, alive = std::weak_ptr<int>(m_alive)] {
            if (alive.expired() || !guard || guard->parent() != m_workView) {
                return;
            }
            clearGestureRecognizersFrom(guard);
            solutionLetters[target] = guard;
            guard->isRevealed = true;
            guard->setTitleColor(ColorUtil::getGreenColor());
            checkAnswer();
        });
}

void GameViewController::removeWrongLetters() {
    for (LetterLabel* tile : std::as_const(lettersLabels)) {
        if (tile->isCorrect || !tile->isOnScreen()) {
            continue;
        }
        if (tile->solutionBoxPos >= 0 && tile->solutionBoxPos < solutionBlocks.size()) {
            solutionBlocks.at(tile->solutionBoxPos)->setTag(0);
            solutionLetters[tile->solutionBoxPos] = newPlaceholder();
        }
        tile->removeFromSuperview();
    }
}

// ---- the level's life ----

void GameViewController::reset() {
    stopTimer();
    revealedLettersCount = 0;
    shareLevelRevealCount = 0;
    m_timeViewsVisible = true;
    emit timerViewsChanged();
    // Sharing for a letter is offered in the first twelve rounds only.
    setHelpViews(false, game && game->gameRound < 12, m_revealViewVisible);
}

void GameViewController::setHelpViews(bool watchVideo, bool shareReveal, bool revealView) {
    m_watchVideoButtonVisible = watchVideo;
    m_shareRevealVisible = shareReveal;
    m_revealViewVisible = revealView;
    emit helpViewsChanged();
}

qint64 GameViewController::nowSeconds() const {
    return Platform::shared().scheduler().now().toSecsSinceEpoch();
}

void GameViewController::startTimer() {
    // The clock of a running level is never shown.
    m_timeViewsVisible = false;
    emit timerViewsChanged();
    if (!Util::isConnected()) {
        return;
    }
    if (timer) {
        stopTimer();
    }
    timePeriod = 100;
    currentTick = 100.0f;
    timerAdsCount = 0;
    timer = Timer::scheduledTimerWithTimeInterval(kTickSeconds, true, [this] { onTimerTick(); });
    timer->fire();
}

void GameViewController::onTimerTick() {
    m_secondsText = QString::number(static_cast<qint64>(currentTick));
    currentTick = static_cast<float>(static_cast<double>(currentTick) - 0.1);
    m_timeProgress += -0.1 / static_cast<double>(timePeriod);
    emit timerViewsChanged();

    // Fifty seconds into a period, now and then, the share view is suggested to a player of a few sessions.
    if (std::fabs(static_cast<double>(currentTick) - 50.0) < 0.05) {
        const std::uint32_t r = arc4random();
        const qint64 sessions = SessionManager::sharedInstance().activeSessions();
        if (r % 5 == 2 && sessions >= 5 && sessions <= 15) {
            shareLevelWithFriends(nullptr);
        }
    }
    if (currentTick >= 9.95f && currentTick <= 10.05f) {
        preloadVideoRewardAd();
        return;
    }
    if (currentTick <= 0.0f) {
        timePeriod += 30;
        currentTick = static_cast<float>(timePeriod);
        m_timeProgress = 1.0;
        emit timerViewsChanged();
        const std::uint32_t r = arc4random();
        auto& ads = InterstitialManager::sharedInstance();
        if (ads.getProperPercentToShowSpecialAdmobAd() > static_cast<qint64>(r % 100) &&
            !ads.isAddCurrentlyDisplaying() && !Platform::shared().navigator().presentedViewController()) {
            // clang-format off
            Util::showMessageWithTitleOnOk(
                QStringLiteral("يبدو أنك تواجه صعوبة في ايجاد الحل .. هل تريد مشاهدة فيديو لكسب ذهب يمكنك من كشف حرف مجانا لمساعدتك ؟"),
                QStringLiteral("مساعدة"), [this, alive = std::weak_ptr<int>(m_alive)] {
                    if (alive.expired()) {
                        return;
                    }
                    InterstitialManager::sharedInstance().displayAdmobVideoAd();
                    isTimedAdWasShown = 1;
                });
            // clang-format on
        }
        timerAdsCount += 1;
        if (timerAdsCount == 2) {
            stopTimer();
        }
    }
}

void GameViewController::stopTimer() {
    if (timer) {
        timer->invalidate();
        timer.reset();
    }
}

void GameViewController::onStartNextLevel() {
    preloadInterstitialAd();
    startTimer();
}

void GameViewController::preloadInterstitialAd() {
    auto& ads = InterstitialManager::sharedInstance();
    if (GameIAPHelper::sharedInstance().areInAppsPurchased() || ads.admobNormalInterstitial ||
        !ads.isPreviousLoadAdFinished) {
        return;
    }
    ads.preloadAdmobAdAtTheRightTime();
}

void GameViewController::preloadVideoRewardAd() {
    auto& ads = InterstitialManager::sharedInstance();
    if (GameIAPHelper::sharedInstance().areInAppsPurchased() || ads.admobRewardedInterstitial ||
        !ads.isPreviousLoadRewardedVideoFinished) {
        return;
    }
    ads.preloadAdmobVideoAdAtTheRightTime();
}

GamePtr GameViewController::nextGameInRound() const {
    const GamePtr next = Game::initWithGameLevelAndGameRound(game->gameLevel + 1, game->gameRound);
    next->setLevelInfo(
        LevelsInfoReader::sharedInstance().getLevelInfoPackId(next->gameLevel, next->gameRound));
    return next;
}

void GameViewController::gameSuccess() {
    if (!game) {
        return;
    }
    SoundFactory::sharedInstance().playGameFinish();
    if (battleGameType >= 1) {
        // A battle level gives no gold, points or progress of its own: its result goes to the battle.
        battleSolved();
        return;
    }
    const GamePtr finished = game;
    auto& levels = LevelManager::sharedInstance();
    if (isPreviousGame) {
        const qint64 n = finished->gameLevel + 25 * finished->gameRound;
        qint64 points = 0;
        if (!levels.isLevelRewardedSecondTime(n) && Util::isConnected()) {
            levels.setLevelRewardedForSecondTime(n);
            points = 1;
        }
        ScorePointsManager::sharedInstance().addPoints(points);
        presentPopupViewControllerWithTypeGameAndPointsAndCredits(1, finished, points, 0);
        return;
    }
    qint64 credits = 0;
    qint64 points = 0;
    if (Util::isConnected()) {
        // Paid by the rank and round in which the level was played, before the level moves on.
        auto& ranks = RankManager::sharedInstance();
        credits = ranks.getLevelCreditsReward();
        CreditsManager::sharedInstance().addCredits(credits);
        points = ranks.getLevelPointsReward();
        ScorePointsManager::sharedInstance().addPoints(points);
    }
    UserStatsManager::sharedInstance().incrementCompletedLevelsForCurrentDay();
    InterstitialManager::sharedInstance().increaseActionCount();
    if (finished->gameLevel < 24) {
        presentPopupViewControllerWithTypeGameAndPointsAndCredits(0, finished, points, credits);
        levels.incrementCurrentLevel();
        setGame(nextGameInRound());
        setupGameview();
    } else {
        presentPopupViewControllerWithTypeGameAndPointsAndCredits(3, finished, points, credits);
        levels.incrementCurrentLevel();
    }
}

// ---- help actions ----

void GameViewController::creditsChangedAction() {
    m_creditsText = QString::number(CreditsManager::sharedInstance().currentCredits());
    emit balancesChanged();
}

void GameViewController::skipsChangedAction() {
    m_skipsText = QString::number(CreditsManager::sharedInstance().currentSkips());
    emit balancesChanged();
}

void GameViewController::handleNoEnoughCredits() {
    Platform::shared().alerts().showWithTitleMessageCancelButtonTitleOtherButtonTitlesTapBlock(
        QStringLiteral("لايوجد ذهب"),
        QStringLiteral("لايوجد ذهب كافي، يمكنك الذهاب الى المتجر وشراء المزيد من الذهب"), QString(),
        {QStringLiteral("اذهب الى المتجر")}, [this, alive = std::weak_ptr<int>(m_alive)](int) {
            if (!alive.expired()) {
                openStore(nullptr);
            }
        });
}

void GameViewController::openStore(QObject*) {
    SoundFactory::sharedInstance().playMenuTap();
    PresentationUtil::openInAppStore(this);
}

void GameViewController::revealLetter(QObject*) {
    SoundFactory::sharedInstance().playMenuTap();
    auto& credits = CreditsManager::sharedInstance();
    if (credits.currentCredits() < kRevealLetterCost) {
        handleNoEnoughCredits();
        return;
    }
    revealRandomLetter();
    credits.deductCredits(kRevealLetterCost);
}

void GameViewController::removeWrongLetters(QObject*) {
    SoundFactory::sharedInstance().playMenuTap();
    auto& credits = CreditsManager::sharedInstance();
    if (credits.currentCredits() < kRemoveLettersCost) {
        handleNoEnoughCredits();
        return;
    }
    removeWrongLetters();
    credits.deductCredits(kRemoveLettersCost);
}

void GameViewController::skipLevel(QObject*) {
    SoundFactory::sharedInstance().playMenuTap();
    if (isPreviousGame) {
        // Said, and the skip still goes on: on a previous level it costs a skip and moves the level on.
        Util::showMessageWithTitle(QStringLiteral("هذه مرحلة سابقة لذلك لايمكنك التجاوز"),
                                   QStringLiteral("مرحلة سابقة"));
    }
    if (isBonusGame) {
        Util::showMessageWithTitle(
            QStringLiteral("هذه مرحلة اختيارية لكسب مزيد من النقطا لذلك لايمكنك التجاوز"),
            QStringLiteral("مرحلة اختيارية"));
        return;
    }
    if (!game || game->gameLevel >= 24) {
        Util::showMessageWithTitle(QStringLiteral("لايمكنك تجاوز المرحلة الأخيرة في الجولة"),
                                   QStringLiteral("المرحلة الأخيرة"));
        return;
    }
    auto& credits = CreditsManager::sharedInstance();
    if (credits.currentSkips() <= 0) {
        Util::showMessageWithTitle(QStringLiteral("يمكنك تجريب الخيارات المجانية"),
                                   QStringLiteral("لقد انتهت التجاوزات لديك"));
        return;
    }
    Util::showMessageWithTitle(QStringLiteral("لقد تجاوزت هذه المرحلة وانتقلت للمرحلة التالية"),
                               QStringLiteral("تجاوز المرحلة"));
    credits.deductOneSkip();
    LevelManager::sharedInstance().incrementCurrentLevel();
    setGame(nextGameInRound());
    setupGameview();
}

void GameViewController::watchVideo(QObject*) {
    SoundFactory::sharedInstance().playClick1();
    auto& ads = InterstitialManager::sharedInstance();
    if (ads.admobRewardedInterstitial) {
        ads.displayAdmobVideoAd();
        return;
    }
    Platform::shared().progressHud().showWithMaskType(ProgressHud::Black);
    preloadVideoRewardAd();
    watchVideoBtnPressed = true;
}

void GameViewController::videoAdLoaded() {
    if (!watchVideoBtnPressed) {
        return;
    }
    Platform::shared().progressHud().dismiss();
    InterstitialManager::sharedInstance().displayAdmobVideoAd();
    watchVideoBtnPressed = false;
}

void GameViewController::videoAdFailedToLoad() {
    Platform::shared().progressHud().dismiss();
    if (watchVideoBtnPressed) {
        Util::showMessageWithTitle(QStringLiteral("حاول مرة اخرى بعد قليل"), QStringLiteral("لايوجد فيديو"));
        watchVideoBtnPressed = false;
    }
}

void GameViewController::videoWatchedAction() {
    SessionManager& sessions = SessionManager::sharedInstance();
    if (sessions.videoRewardsCount() >= kVideoRewardsPerSession) {
        Util::showMessageWithTitle(QStringLiteral("يمكنك المحاولة لاحقا بعد حوالي نصف ساعة أو أقل"),
                                   QStringLiteral("لم يتبقى لديك جوائز مشاهدة فيديو في هذه الجلسة"));
        return;
    }
    if (videoRewardedCount >= kVideoRewardsPerLevel) {
        Util::showMessageWithTitle(QStringLiteral("لقد وصلت للعدد المسموح به بالجوائز المجانية"),
                                   QStringLiteral("لايوجد ذهب"));
        return;
    }
    CreditsManager::sharedInstance().addCredits(kVideoRewardCredits);
    creditsChangedAction();
    Util::showMessageWithTitle(QStringLiteral("لقد ربحت %1 قطعة ذهبية").arg(kVideoRewardCredits),
                               QStringLiteral("قطع ذهب مجانية"));
    videoRewardedCount += 1;
    sessions.setVideoRewardsCount(sessions.videoRewardsCount() + 1);
}

QObject* GameViewController::shareViewObject() const {
    return shareView;
}

void GameViewController::setScreenshotLook(bool on) {
    m_screenshotTitleVisible = on;
    if (auto* banner = qobject_cast<GADBannerView*>(m_adsView->viewWithTag(AdManager::kBannerTag))) {
        banner->setHidden(on);
    }
    emit screenshotLookChanged();
}

QImage GameViewController::takeScreenshot() {
    setScreenshotLook(true);
    const QImage picture = ImageUtil::takeScreenshotForView(this);
    setScreenshotLook(false);
    return picture;
}

void GameViewController::shareLevelWithFriends(QObject*) {
    SoundFactory::sharedInstance().playMenuTap();
    if (shareView) {
        // Already up: the suggestion of the timer does not open a second one.
        return;
    }
    shareView = new ShareView(this);
    shareView->setupImageShareWithViewController(this);
    // The picture to share has the game's title and no banner.
    setScreenshotLook(true);
    shareView->prepareScreenshot();
    setScreenshotLook(false);
    emit shareViewChanged();
    shareLevelElapsedTime = nowSeconds();
}

void GameViewController::dismissShareViewAction() {
    if (!shareView) {
        return;
    }
    shareView->deleteLater();
    shareView = nullptr;
    emit shareViewChanged();
    // The level counts as shared by the time the panel stayed up; what was sent from it is not looked at.
    shareLevelElapsedTime = nowSeconds() - shareLevelElapsedTime;
    if (shareLevelElapsedTime >= kShareViewSeconds) {
        ShareManager::sharedInstance().incrementLevelsShared();
    }
}

void GameViewController::showRevealView(QObject*) {
    SoundFactory::sharedInstance().playMenuTap();
    shareLevelElapsedTime = nowSeconds();
    setHelpViews(m_watchVideoButtonVisible, m_shareRevealVisible, true);
}

void GameViewController::dismissPopupViewAction() {
    setHelpViews(m_watchVideoButtonVisible, m_shareRevealVisible, false);
}

void GameViewController::revealViewGeneralAction(int tag) {
    dismissPopupViewAction();
    switch (tag) {
    case 51:
        revealLetter(nullptr);
        break;
    case 52:
        removeWrongLetters(nullptr);
        break;
    case 53:
        skipLevel(nullptr);
        break;
    case 54:
        watchVideo(nullptr);
        break;
    case 55:
        shareAppOnWhatsapp();
        break;
    default:
        break;
    }
}

void GameViewController::shareAppOnWhatsapp() {
    const QVariantList content{
        QStringLiteral("انا جالس ألعب لعبة طارفولين وبصراحة جدا اللعبة بطلة!! حملها وماتندم"),
        ShareManager::appStorePage()};
    ShareManager::sharedInstance().shareContentOnViewControllerOnCompletion(
        content, this, [this, alive = std::weak_ptr<int>(m_alive)](const QString& activity) {
            if (alive.expired()) {
                return;
            }
            const QString name = activity.toLower();
            if (!name.contains("wb") && !name.contains("whats") && !name.contains("whatsapp")) {
                return;
            }
            if (isLevelShared) {
                Util::showMessageWithTitle(
                    QStringLiteral("عذرا لايمكنك مشاركة نفس المرحلة وربح جائزتها اكثر من مرة "),
                    QStringLiteral("لم تربح"));
                return;
            }
            auto& share = ShareManager::sharedInstance();
            share.incrementLevelsShared();
            if (share.levelsShared() < kSharedLevelsPaid + 1) {
                CreditsManager::sharedInstance().addCredits(kShareRewardCredits);
                creditsChangedAction();
                Util::showMessageWithTitle(QStringLiteral("لقد ربحت %1 ذهبة").arg(kShareRewardCredits),
                                           QStringLiteral("ذهب مجاني"));
            } else {
                Util::showMessageWithTitle(QStringLiteral("عذرا لم يتبقى لديك أي جوائز مشاركة"),
                                           QStringLiteral("لايوجد جوائز مشاركة"));
            }
            isLevelShared = true;
        });
}

void GameViewController::shareAppAndReveal(QObject*) {
    SoundFactory::sharedInstance().playMenuTap();
    const auto info = game ? game->levelInfo() : nullptr;
    const qint64 letters = info ? info->solution.size() : 0;
    if (shareLevelRevealCount >= 2 || (shareLevelRevealCount == 1 && letters < 6)) {
        Util::showMessageWithTitle(
            QStringLiteral("لايمكنك استعمال هذه الميزة لربح المزيد من الذهب حتى تنتقل للمرحلة التالية"),
            QStringLiteral("عذرا"));
        return;
    }
    Util::showMessageWithTitleOnDismiss(
        QStringLiteral(
            "شارك السؤال واكشف ذهب مجانا واختبر اصدقائك عبر فيسبوك او انستغرام او سناب شات او توتير او "
            "واتس اب او اي مكان اخر"),
        QStringLiteral("شارك المرحلة"), [this, letters, alive = std::weak_ptr<int>(m_alive)] {
            if (alive.expired()) {
                return;
            }
            ShareManager::sharedInstance().shareContentOnViewControllerOnCompletion(
                {takeScreenshot()}, this, [this, letters, alive](const QString& activity) {
                    if (alive.expired()) {
                        return;
                    }
                    static const QStringList kTargets{"facebook", "twitter",  "tweet",   "instagram",
                                                      "whatsapp", "snapchat", "message", "messenger",
                                                      "line",     "wechat",   "viber",   "bbm"};
                    const QString name = activity.toLower();
                    const bool known = std::any_of(kTargets.begin(), kTargets.end(),
                                                   [&name](const QString& t) { return name.contains(t); });
                    if (!known) {
                        return;
                    }
                    revealRandomLetter();
                    shareLevelRevealCount += 1;
                    if (shareLevelRevealCount == 2 || (shareLevelRevealCount == 1 && letters <= 5)) {
                        setHelpViews(m_watchVideoButtonVisible, false, m_revealViewVisible);
                    }
                });
        });
}

void GameViewController::scheduleSolutionNotification(QObject*) {
    SoundFactory::sharedInstance().playMenuTap();
    NotificationManager& reminders = NotificationManager::sharedInstance();
    const qint64 minutes = RankManager::sharedInstance().getNotificationWaitTime();
    const qint64 number = minutes > 59 ? minutes / 60 : minutes;
    const QString word = minutes > 59 ? QStringLiteral("ساعة") : QStringLiteral("دقيقة");
    const QString promise = QStringLiteral("سيصلك تنبيه بعد %1 %2 بالحل الصحيح   ").arg(number).arg(word);
    if (!reminders.areNotificationsAllowed()) {
        Util::showMessageWithTitleOnDismiss(promise, QStringLiteral("مساعدة"), [] {
            NotificationManager::sharedInstance().enableNotificationPermissions();
        });
    }
    if (reminders.isWaitNotificationIsScheduled()) {
        Util::showMessageWithTitle(
            QStringLiteral("لقد ضغطت زر الانتظار من قبل.. لذلك يرجى الانتظار حتى يصلك التنبيه "
                           "عند انتهاء الوقت المحدد"),
            QStringLiteral("خطأ"));
        return;
    }
    const auto info = game ? game->levelInfo() : nullptr;
    reminders.scheduleNotificationWithDelay(
        QStringLiteral("الحل الصحيح هو: %1").arg(info ? info->fullSolution : QString()), minutes);
    Util::showMessageWithTitle(promise, QStringLiteral("مساعدة"));
    reminders.setCurrentWaitMinutes(reminders.currentWaitMinutes() + 5);
}

void GameViewController::presentPopupViewControllerWithTypeGameAndPointsAndCredits(qint32 type,
                                                                                   const GamePtr& finished,
                                                                                   qint64 points,
                                                                                   qint64 credits) {
    auto& nav = Platform::shared().navigator();
    auto* popup = qobject_cast<LevelSuccessViewController*>(
        nav.instantiateViewControllerWithIdentifier("LevelSuccessViewController"));
    if (!popup) {
        return;
    }
    popup->type = type;
    popup->game = finished;
    popup->rewardedPoints = points;
    popup->credits = credits;
    popup->playScreen = this;
    nav.presentViewController(popup);
}

void GameViewController::openCurrentLevel() {
    auto& reader = LevelsInfoReader::sharedInstance();
    reader.loadAllPacksLevelsWithEnc(QStringLiteral("ok"), false);
    const auto& levels = LevelManager::sharedInstance();
    const GamePtr next =
        Game::initWithGameLevelAndGameRound(levels.getCurrentGameId(), levels.getCurrentRound());
    next->setLevelInfo(reader.getLevelInfoPackId(next->gameLevel, next->gameRound));
    isPreviousGame = false;
    setGame(next);
    setupGameview();
    if (!next->levelInfo() && reader.isPacksDataLoaded()) {
        Util::showMessageWithTitle(
            QStringLiteral("لقد أنهيت جميع المراحل المتوفرة حاليا، ترقب مراحل جديدة قريبا"),
            QStringLiteral("أحسنت"));
    }
}

void GameViewController::goBack(QObject*) {
    SoundFactory::sharedInstance().playMenuTap();
    stopTimer();
    Platform::shared().navigator().popViewController();
}

void GameViewController::presentInfoCardRequiredCredits(qint64 /*cardId*/, qint64 /*requiredCredits*/) {
    // No kind of puzzle in this game offers a card yet.
}

QList<QObject*> GameViewController::tiles() const {
    QList<QObject*> list;
    for (auto* t : lettersLabels) {
        list << t;
    }
    return list;
}

QList<int> GameViewController::trayOrder() const {
    QList<int> order;
    for (int i = 0; i < lettersLabels.size(); ++i) {
        order << i;
    }
    std::stable_sort(order.begin(), order.end(), [this](int a, int b) {
        const QRectF& fa = lettersLabels.at(a)->originalFrame;
        const QRectF& fb = lettersLabels.at(b)->originalFrame;
        if (std::abs(fa.center().y() - fb.center().y()) >= fa.height() / 2) {
            return fa.center().y() < fb.center().y();
        }
        return fa.center().x() > fb.center().x();
    });
    return order;
}

QList<QObject*> GameViewController::boxes() const {
    QList<QObject*> list;
    for (auto* b : solutionBlocks) {
        list << b;
    }
    return list;
}
