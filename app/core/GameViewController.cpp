#include "GameViewController.h"

#include "LevelManager.h"
#include "LevelSuccessViewController.h"
#include "LevelsInfoReader.h"
#include "platform/Platform.h"
#include "progress/TutorialAlertsManager.h"
#include "screens/ColorUtil.h"
#include "screens/Util.h"

#include <QDebug>
#include <cmath>

GameViewController::GameViewController(QObject* parent)
    : ViewController(QStringLiteral("GameViewController"), parent),
      m_layout(BoardLayout::forDevice(Platform::shared().device().cls())) {}

GameViewController::~GameViewController() {
    if (timer) {
        timer->invalidate();
    }
}

void GameViewController::viewDidLoad() {
    setupGameview();
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
    solutionBlocks.at(box)->setTag(1);
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
    auto& nav = Platform::shared().navigator();
    if (auto* credits =
            nav.instantiateViewControllerWithIdentifier(QStringLiteral("CreditsViewController"))) {
        nav.presentViewController(credits);
    }
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
}

void GameViewController::stopTimer() {
    if (timer) {
        timer->invalidate();
        timer.reset();
    }
}

void GameViewController::onStartNextLevel() {}

void GameViewController::gameSuccess() {
    if (!game) {
        return;
    }
    const GamePtr finished = game;
    if (isPreviousGame) {
        presentPopupViewControllerWithTypeGameAndPointsAndCredits(1, finished, 0, 0);
        return;
    }
    auto& levels = LevelManager::sharedInstance();
    if (finished->gameLevel < 24) {
        presentPopupViewControllerWithTypeGameAndPointsAndCredits(0, finished, 0, 0);
        levels.incrementCurrentLevel();
        const GamePtr next =
            Game::initWithGameLevelAndGameRound(finished->gameLevel + 1, finished->gameRound);
        next->setLevelInfo(
            LevelsInfoReader::sharedInstance().getLevelInfoPackId(next->gameLevel, next->gameRound));
        setGame(next);
        setupGameview();
    } else {
        presentPopupViewControllerWithTypeGameAndPointsAndCredits(3, finished, 0, 0);
        levels.incrementCurrentLevel();
    }
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

void GameViewController::goBack() {
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

QList<QObject*> GameViewController::boxes() const {
    QList<QObject*> list;
    for (auto* b : solutionBlocks) {
        list << b;
    }
    return list;
}
