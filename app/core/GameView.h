#pragma once

#include "Game.h"

#include <QObject>
#include <QRectF>
#include <memory>

class GameViewDelegate {
public:
    virtual ~GameViewDelegate() = default;
    virtual void presentInfoCardRequiredCredits(qint64 cardId, qint64 requiredCredits) = 0;
};

// One picture of a game view.
class PictureView : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString source READ source NOTIFY changed)
    Q_PROPERTY(QRectF frame READ frame NOTIFY changed)
    Q_PROPERTY(int z READ z NOTIFY changed)
    Q_PROPERTY(QString description READ description NOTIFY changed)
public:
    PictureView(const QRectF& frame, QObject* parent) : QObject(parent), m_frame(frame) {}
    QString source() const { return m_source; }
    void setSource(const QString& source);
    QRectF frame() const { return m_frame; }
    void setFrame(const QRectF& frame);
    int z() const { return m_z; }
    void bringToFront();
    // What a screen reader says for the picture: a short Arabic text of what it shows.
    QString description() const { return m_description; }
    void setDescription(const QString& description);

signals:
    void changed();

private:
    QString m_source;
    QString m_description;
    QRectF m_frame;
    int m_z = 0;
};

// What the player has to guess: the puzzle half of the play screen. Subclasses show one kind of puzzle.
class GameView : public QObject {
    Q_OBJECT
    Q_PROPERTY(QList<QObject*> pictures READ pictures CONSTANT)
    Q_PROPERTY(QRectF fullFrame READ fullFrameValue CONSTANT)
    Q_PROPERTY(bool touchesEnabled READ touchesEnabled NOTIFY changed)
public:
    static constexpr double kPictureAnimationSeconds = 0.2;

    explicit GameView(const QRectF& bounds, QObject* parent = nullptr);

    PictureView* imageView1 = nullptr;
    PictureView* imageView2 = nullptr;
    PictureView* imageView3 = nullptr;
    PictureView* imageView4 = nullptr;
    bool isInfoCardDisplayed = false;
    QRectF originalFrame;
    QRectF fullFrame;
    qint64 round = 0;
    GameViewDelegate* delegate = nullptr;
    std::weak_ptr<Game> game;
    qint64 firstLetterSeconds = 0;
    qint64 maxLettersToReveal = 0;

    virtual void initGameViewWithGame(const GamePtr& game);
    virtual void setRoundParams();
    virtual void loadAndSetupControls();
    virtual void moreInfoButtonAction();
    virtual void createImageTapRecognizer();
    virtual void imageTapAction(PictureView* picture);
    virtual void resetGame() {}

    Q_INVOKABLE void tapPicture(int index);
    QList<QObject*> pictures() const;
    QRectF fullFrameValue() const { return fullFrame; }
    bool touchesEnabled() const { return m_touchesEnabled; }
    PictureView* picture(int index) const;

signals:
    void changed();

protected:
    bool m_touchesEnabled = false;
    bool m_tapsRecognized = false;
};

// The four-pictures view: four pictures in a two-by-two grid, read right to left.
class WordView : public GameView {
    Q_OBJECT
public:
    // Picture resources are looked up as PREFIX + NAME_k.jpg.
    static constexpr const char* kPicturePrefix = ":/pictures/";
    // What each picture shows, "NAME_k<TAB>TEXT" a line, built beside the pictures by the content tool.
    static constexpr const char* kDescriptionsResource = ":/pictures/descriptions.tsv";

    // The description of NAME_k from the text of such a file; "الصورة k" when it has none.
    static QString descriptionIn(const QString& descriptions, const QString& name, int k);

    static WordView* loadInstance(const QRectF& bounds, QObject* parent = nullptr);
    void initGameViewWithGame(const GamePtr& game) override;
    void loadAndSetupControls() override;

private:
    using GameView::GameView;
};
