#pragma once

#include "BoardLayout.h"
#include "Game.h"
#include "GameView.h"
#include "LetterLabel.h"
#include "platform/Scheduler.h"
#include "platform/ViewController.h"

#include <QList>
#include <QPointer>
#include <memory>

// The play screen: the puzzle view above, the letter board below. A tap moves a tile in two phases: the box
// is taken at once, and the tile lands (and the row is checked) when its 0.3-second move ends.
class GameViewController : public ViewController, public GameViewDelegate {
    Q_OBJECT
    Q_PROPERTY(QObject* gameView READ gameViewObject NOTIFY boardChanged)
    Q_PROPERTY(QList<QObject*> tiles READ tiles NOTIFY boardChanged)
    Q_PROPERTY(QList<QObject*> boxes READ boxes NOTIFY boardChanged)
    Q_PROPERTY(QString gameNameText READ gameNameText NOTIFY boardChanged)
    Q_PROPERTY(QString levelText READ levelText NOTIFY boardChanged)
    Q_PROPERTY(QString solutionBarImage READ solutionBarImage NOTIFY solutionBarImageChanged)
    Q_PROPERTY(bool helpPopupVisible READ helpPopupVisible NOTIFY helpPopupVisibleChanged)
    Q_PROPERTY(QColor topBarColor READ topBarColor CONSTANT)
    Q_PROPERTY(QRectF topBarFrame READ topBarFrame CONSTANT)
    Q_PROPERTY(QRectF gameViewFrame READ gameViewFrame CONSTANT)
    Q_PROPERTY(QRectF workViewFrame READ workViewFrame CONSTANT)
    Q_PROPERTY(QRectF solutionBarFrame READ solutionBarFrame CONSTANT)
    Q_PROPERTY(bool canGoBack READ canGoBack CONSTANT)
public:
    static constexpr double kMoveSeconds = 0.3;
    static constexpr double kWrongFlashSeconds = 0.5;
    static constexpr int kTrayTileCount = 12;
    static inline const QString kFillerString = QStringLiteral("تصخضذأدسش");
    static inline const QString kFirstLevelTutorial = QStringLiteral("FirstLevelTutorial");

    explicit GameViewController(QObject* parent = nullptr);
    ~GameViewController() override;

    // Fields of the play screen.
    GamePtr game;
    bool isPreviousGame = false;
    bool isBonusGame = false;
    qint64 battleGameType = 0;
    std::shared_ptr<Timer> timer;
    qint64 revealedLettersCount = 0;
    qint64 shareLevelRevealCount = 0;
    qint64 videoRewardedCount = 0;

    // The board.
    QList<LetterLabel*> lettersLabels;
    QList<LetterLabel*> correctLetters;
    QList<SolutionBlock*> solutionBlocks;
    QList<LetterLabel*> solutionLetters;
    GameView* gameView = nullptr;

    void setGame(GamePtr g) { game = std::move(g); }

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

    void reset();
    void stopTimer();
    void onStartNextLevel();
    void gameSuccess();
    void presentPopupViewControllerWithTypeGameAndPointsAndCredits(qint32 type, const GamePtr& finished,
                                                                   qint64 points, qint64 credits);
    Q_INVOKABLE void goBack();
    // Opens the level that LevelManager says comes next.
    void openCurrentLevel();

    void presentInfoCardRequiredCredits(qint64 cardId, qint64 requiredCredits) override;

    // What the view forwards: a tap on tile `index` of lettersLabels.
    Q_INVOKABLE void tapTile(int index);

    // The text of the row, box by box (placeholders give nothing).
    QString currentAnswer() const;
    LetterLabel* tileInBox(int box) const;
    const BoardLayout& layout() const { return m_layout; }

    QObject* gameViewObject() const { return gameView; }
    QList<QObject*> tiles() const;
    QList<QObject*> boxes() const;
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

signals:
    void boardChanged();
    void solutionBarImageChanged();
    void helpPopupVisibleChanged();

private:
    void setSolutionBarImage(const QString& image);
    QRectF boxFrameInWorkView(qint64 box) const;
    LetterLabel* newPlaceholder();
    void dropBoard();

    BoardLayout m_layout;
    QString m_gameNameText;
    QString m_levelText;
    QString m_solutionBarImage = QStringLiteral("bg_solution");
    bool m_helpPopupVisible = false;
    // Everything made for one level hangs here and goes with the next setupGameview.
    QObject* m_workView = nullptr;
    // Guards callbacks that outlive the controller or the board they were made for.
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
};
