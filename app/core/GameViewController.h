#pragma once

#include "BattleDelegate.h"
#include "BoardLayout.h"
#include "Game.h"
#include "GameView.h"
#include "LetterLabel.h"
#include "platform/Scheduler.h"
#include "platform/ViewController.h"
#include "platform/adkit/GADBannerView.h"

#include <QImage>
#include <QList>
#include <QPointer>
#include <memory>

// The play screen: the puzzle view above, the letter board below. A tap moves a tile in two phases: the box
// is taken at once, and the tile lands (and the row is checked) when its 0.3-second move ends.
class ShareView;

class GameViewController : public ViewController, public GameViewDelegate {
    Q_OBJECT
    Q_PROPERTY(QObject* gameView READ gameViewObject NOTIFY boardChanged)
    Q_PROPERTY(QList<QObject*> tiles READ tiles NOTIFY boardChanged)
    Q_PROPERTY(QList<QObject*> boxes READ boxes NOTIFY boardChanged)
    // The tiles' indexes as the tray reads, top row first and right to left: the tiles themselves are in the
    // answer's order, which a screen reader walking them must not give away.
    Q_PROPERTY(QList<int> trayOrder READ trayOrder NOTIFY boardChanged)
    Q_PROPERTY(QString gameNameText READ gameNameText NOTIFY boardChanged)
    Q_PROPERTY(QString levelText READ levelText NOTIFY boardChanged)
    Q_PROPERTY(QString solutionBarImage READ solutionBarImage NOTIFY solutionBarImageChanged)
    Q_PROPERTY(bool helpPopupVisible READ helpPopupVisible NOTIFY helpPopupVisibleChanged)
    Q_PROPERTY(QColor topBarColor READ topBarColor CONSTANT)
    Q_PROPERTY(QRectF topBarFrame READ topBarFrame CONSTANT)
    Q_PROPERTY(QRectF gameViewFrame READ gameViewFrame CONSTANT)
    Q_PROPERTY(QRectF workViewFrame READ workViewFrame CONSTANT)
    Q_PROPERTY(QRectF solutionBarFrame READ solutionBarFrame CONSTANT)
    Q_PROPERTY(QObject* adsView READ adsViewObject CONSTANT)
    Q_PROPERTY(bool canGoBack READ canGoBack CONSTANT)
    Q_PROPERTY(QString creditsText READ creditsText NOTIFY balancesChanged)
    Q_PROPERTY(QString skipsText READ skipsText NOTIFY balancesChanged)
    Q_PROPERTY(QString revealCostText READ revealCostText CONSTANT)
    Q_PROPERTY(QString removeCostText READ removeCostText CONSTANT)
    Q_PROPERTY(QString screenshotTitleText READ screenshotTitleText CONSTANT)
    Q_PROPERTY(bool screenshotTitleVisible READ screenshotTitleVisible NOTIFY screenshotLookChanged)
    Q_PROPERTY(QObject* shareView READ shareViewObject NOTIFY shareViewChanged)
    Q_PROPERTY(QString secondsText READ secondsText NOTIFY timerViewsChanged)
    Q_PROPERTY(double timeProgress READ timeProgress NOTIFY timerViewsChanged)
    Q_PROPERTY(bool timeViewsVisible READ timeViewsVisible NOTIFY timerViewsChanged)
    Q_PROPERTY(bool watchVideoButtonVisible READ watchVideoButtonVisible NOTIFY helpViewsChanged)
    Q_PROPERTY(bool shareRevealVisible READ shareRevealVisible NOTIFY helpViewsChanged)
    Q_PROPERTY(bool revealViewVisible READ revealViewVisible NOTIFY helpViewsChanged)
    Q_PROPERTY(QRectF revealButtonFrame READ revealButtonFrame CONSTANT)
    Q_PROPERTY(QRectF removeButtonFrame READ removeButtonFrame CONSTANT)
    Q_PROPERTY(bool battleBarVisible READ battleBarVisible NOTIFY battleViewsChanged)
    Q_PROPERTY(QString battleQuestionText READ battleQuestionText NOTIFY battleViewsChanged)
    Q_PROPERTY(QString battleSecondsText READ battleSecondsText NOTIFY battleViewsChanged)
public:
    static constexpr double kMoveSeconds = 0.3;
    static constexpr double kWrongFlashSeconds = 0.5;
    static constexpr int kTrayTileCount = 12;
    static inline const QString kFillerString = QStringLiteral("تصخضذأدسش");
    static inline const QString kFirstLevelTutorial = QStringLiteral("FirstLevelTutorial");
    static constexpr qint64 kRevealLetterCost = 50;
    static constexpr qint64 kRemoveLettersCost = 100;
    static constexpr qint64 kVideoRewardCredits = 25;
    static constexpr qint64 kShareRewardCredits = 50;
    static constexpr qint64 kVideoRewardsPerLevel = 8;
    static constexpr qint64 kVideoRewardsPerSession = 9;
    static constexpr qint64 kSharedLevelsPaid = 10;
    static constexpr qint64 kShareViewSeconds = 9;
    static constexpr double kTickSeconds = 0.1;
    // The seconds a battle level gives.
    static constexpr qint64 kBattleTimeLimit = 40;

    explicit GameViewController(QObject* parent = nullptr);
    ~GameViewController() override;

    // Fields of the play screen.
    GamePtr game;
    bool isPreviousGame = false;
    bool isBonusGame = false;
    // 0 normal play; 1 the player plays a battle first; 2 the player answers a battle.
    qint64 battleGameType = 0;
    BattleDelegate* battleDelegate = nullptr;
    qint64 battleTick = 0;
    std::shared_ptr<Timer> battleTimer;
    std::shared_ptr<Timer> timer;
    qint64 timePeriod = 0;
    float currentTick = 0.0f;
    qint64 timerAdsCount = 0;
    qint64 isTimedAdWasShown = 0;
    qint64 revealedLettersCount = 0;
    qint64 shareLevelRevealCount = 0;
    qint64 videoRewardedCount = 0;
    bool watchVideoBtnPressed = false;
    bool isLevelShared = false;
    qint64 shareLevelElapsedTime = 0;
    // The share panel while it is up (over its dimmed layer).
    ShareView* shareView = nullptr;

    // The board.
    QList<LetterLabel*> lettersLabels;
    QList<LetterLabel*> correctLetters;
    QList<SolutionBlock*> solutionBlocks;
    QList<LetterLabel*> solutionLetters;
    GameView* gameView = nullptr;

    void setGame(GamePtr g) { game = std::move(g); }
    void setBattleGameType(qint64 type) { battleGameType = type; }
    void setBattleDelegate(BattleDelegate* delegate) { battleDelegate = delegate; }

    // Battle mode (its own file).
    void setupBattle();
    void onBattleTimerTick();
    Q_INVOKABLE void closeBattleButtonTapped();
    bool battleBarVisible() const { return m_battleBarVisible; }
    QString battleQuestionText() const { return m_battleQuestionText; }
    QString battleSecondsText() const { return m_battleSecondsText; }

    void viewDidLoad() override;

    void setupGameview();
    void loadWorkView();
    void initLettersArray();
    void setupLettersArray();
    void shuffleLettersPositions();
    void createSolutionBlocks();
    void letterTapAction(LetterLabel* tile);
    void letterTap(LetterLabel* tile);
    void solutionLetterTapAction(LetterLabel* tile);
    void solutionLetterTap(LetterLabel* tile);
    void clearGestureRecognizersFrom(LetterLabel* tile);
    void checkAnswer();

    void showHelpPopuup();
    Q_INVOKABLE void dismissHelpAction();
    Q_INVOKABLE void displayHelpView();
    // The attributions of the pictures and the font, from the help popup.
    Q_INVOKABLE void openCredits();
    void showFirstPopupMessage();

    // Help that acts on the board, without any charge.
    void revealRandomLetter();
    void removeWrongLetters();

    // Paid and free help, from the screen's buttons (the sender is not used).
    Q_INVOKABLE void revealLetter(QObject* sender);
    Q_INVOKABLE void removeWrongLetters(QObject* sender);
    Q_INVOKABLE void skipLevel(QObject* sender);
    Q_INVOKABLE void watchVideo(QObject* sender);
    Q_INVOKABLE void shareLevelWithFriends(QObject* sender);
    Q_INVOKABLE void showRevealView(QObject* sender);
    Q_INVOKABLE void revealViewGeneralAction(int tag);
    Q_INVOKABLE void dismissPopupViewAction();
    Q_INVOKABLE void shareAppAndReveal(QObject* sender);
    Q_INVOKABLE void scheduleSolutionNotification(QObject* sender);
    Q_INVOKABLE void openStore(QObject* sender);
    void shareAppOnWhatsapp();
    Q_INVOKABLE void dismissShareViewAction();
    // A picture of the screen with the game's title shown and the banner hidden.
    QImage takeScreenshot();
    void handleNoEnoughCredits();
    void videoWatchedAction();
    void videoAdLoaded();
    void videoAdFailedToLoad();
    void creditsChangedAction();
    void skipsChangedAction();

    void reset();
    void startTimer();
    void onTimerTick();
    void stopTimer();
    void onStartNextLevel();
    void preloadInterstitialAd();
    void preloadVideoRewardAd();
    void gameSuccess();
    void presentPopupViewControllerWithTypeGameAndPointsAndCredits(qint32 type, const GamePtr& finished,
                                                                   qint64 points, qint64 credits);
    Q_INVOKABLE void goBack(QObject* sender = nullptr);
    // Opens the level that LevelManager says comes next.
    void openCurrentLevel();

    void presentInfoCardRequiredCredits(qint64 cardId, qint64 requiredCredits) override;

    // What the view forwards: a tap on tile `index` of lettersLabels.
    Q_INVOKABLE void tapTile(int index);

    // The keyboard (its own file). Typed letters move the first tray tile of each letter, in reading order,
    // as a tap on it does; true when one was moved. Nothing happens while a popup covers the board.
    Q_INVOKABLE bool typeLetters(const QString& text);
    // Takes back the letter placed last that is still in its box, as a tap on the box does.
    Q_INVOKABLE bool takeBackLastLetter();
    // Runs the help action of Ctrl+digit (1 to 9) when the screen offers it now and no popup is open.
    Q_INVOKABLE bool runHelpShortcut(int digit);
    // The tooltip of the help action of Ctrl+digit: its name and its keys.
    Q_INVOKABLE QString helpToolTip(int digit) const;
    // The help popup, the help list, the share panel, a presented screen or an overlay is up.
    bool popupOpen() const;

    // The text of the row, box by box (placeholders give nothing).
    QString currentAnswer() const;
    LetterLabel* tileInBox(int box) const;
    const BoardLayout& layout() const { return m_layout; }

    QObject* gameViewObject() const { return gameView; }
    // The host of the banner, along the bottom of the screen.
    AdsHostView* adsView() const { return m_adsView; }
    QObject* adsViewObject() const { return m_adsView; }
    QList<QObject*> tiles() const;
    QList<QObject*> boxes() const;
    QList<int> trayOrder() const;
    QString gameNameText() const { return m_gameNameText; }
    QString levelText() const { return m_levelText; }
    QString solutionBarImage() const { return m_solutionBarImage; }
    bool helpPopupVisible() const { return m_helpPopupVisible; }
    QColor topBarColor() const { return Game::getGameTopbarColor(); }
    QRectF topBarFrame() const { return m_layout.topBar; }
    QRectF gameViewFrame() const { return m_layout.gameView; }
    QRectF workViewFrame() const { return m_layout.workView; }
    QRectF solutionBarFrame() const { return m_layout.solutionBar; }
    bool canGoBack() const;
    QString creditsText() const { return m_creditsText; }
    QString skipsText() const { return m_skipsText; }
    QString revealCostText() const { return QString::number(kRevealLetterCost); }
    QString removeCostText() const { return QString::number(kRemoveLettersCost); }
    QString screenshotTitleText() const { return QStringLiteral("لعبة %1").arg(QStringLiteral("طارفولين")); }
    bool screenshotTitleVisible() const { return m_screenshotTitleVisible; }
    QObject* shareViewObject() const;
    QString secondsText() const { return m_secondsText; }
    double timeProgress() const { return m_timeProgress; }
    bool timeViewsVisible() const { return m_timeViewsVisible; }
    bool watchVideoButtonVisible() const { return m_watchVideoButtonVisible; }
    bool shareRevealVisible() const { return m_shareRevealVisible; }
    bool revealViewVisible() const { return m_revealViewVisible; }
    QRectF revealButtonFrame() const { return m_layout.revealButton; }
    QRectF removeButtonFrame() const { return m_layout.removeButton; }

signals:
    void boardChanged();
    void solutionBarImageChanged();
    void helpPopupVisibleChanged();
    void balancesChanged();
    void timerViewsChanged();
    void helpViewsChanged();
    void battleViewsChanged();
    void shareViewChanged();
    void screenshotLookChanged();

protected:
    bool keyPressed(const KeyPress& press) override;

private:
    // The tray tile with this letter that reading order reaches first (top row first, right to left); -1
    // when no tile in the tray carries it.
    int trayTileWithLetter(QChar letter) const;
    void battleSolved();
    void stopBattleTimer();
    void finishBattle(qint64 score);
    void setSolutionBarImage(const QString& image);
    QRectF boxFrameInWorkView(qint64 box) const;
    LetterLabel* newPlaceholder();
    void dropBoard();
    void setHelpViews(bool watchVideo, bool shareReveal, bool revealView);
    qint64 nowSeconds() const;
    // Shows the title and hides the banner while the picture of the screen is taken.
    void setScreenshotLook(bool on);
    // The level that follows in the same round, with its content.
    GamePtr nextGameInRound() const;

    BoardLayout m_layout;
    AdsHostView* m_adsView = nullptr;
    QString m_gameNameText;
    QString m_levelText;
    QString m_solutionBarImage = QStringLiteral("bg_solution");
    bool m_helpPopupVisible = false;
    QString m_creditsText;
    QString m_skipsText;
    QString m_secondsText;
    double m_timeProgress = 1.0;
    bool m_timeViewsVisible = true;
    bool m_watchVideoButtonVisible = false;
    bool m_shareRevealVisible = true;
    bool m_revealViewVisible = false;
    bool m_screenshotTitleVisible = false;
    bool m_battleBarVisible = false;
    bool m_battleOver = false; // a result has been given
    QString m_battleQuestionText;
    QString m_battleSecondsText;
    // The tiles sent to a box, the last one last; a tile appears once, at its latest move.
    QList<QPointer<LetterLabel>> m_placed;
    // Everything made for one level hangs here and goes with the next setupGameview.
    QObject* m_workView = nullptr;
    // Guards callbacks that outlive the controller or the board they were made for.
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
};
