#pragma once

#include "platform/ViewController.h"

#include <QUrl>

#include <QColor>
#include <QVariantList>

// The levels of one round as a grid: solved, next or locked by the player's level.
class LevelSelectorViewController : public ViewController {
    Q_OBJECT
    Q_PROPERTY(QVariantList cells READ cells NOTIFY cellsChanged)
    Q_PROPERTY(QString currentRoundLabel READ currentRoundLabel NOTIFY cellsChanged)
    Q_PROPERTY(QColor topbarColor READ topbarColor CONSTANT)
    Q_PROPERTY(QString promoTitle READ promoTitle CONSTANT)
    Q_PROPERTY(QUrl promoIcon READ promoIcon CONSTANT)
    Q_PROPERTY(int focusIndex READ focusIndex NOTIFY focusChanged)
    Q_PROPERTY(bool focusShown READ focusShown NOTIFY focusChanged)
public:
    // The grid's columns, read right to left.
    static constexpr int kColumns = 5;

    explicit LevelSelectorViewController(QObject* parent = nullptr);

    qint64 round = 0;
    qint64 currentLevel = 0;

    void viewDidLoad() override;
    void viewWillAppear() override;

    qint64 collectionViewNumberOfItemsInSection() const;
    QVariantMap collectionViewCellForItemAtIndexPath(qint64 row) const;
    Q_INVOKABLE void collectionViewDidSelectItemAtIndexPath(int row);
    Q_INVOKABLE void goBack();
    Q_INVOKABLE void openAbout();
    // The panel of the maker's promoted game: a tap opens its store page and leaves the game.
    Q_INVOKABLE void openPromoView();
    QString promoTitle() const;
    QUrl promoIcon() const;
    Q_INVOKABLE void showTipOfTheDay();
    // The maker's pages on the social networks.
    Q_INVOKABLE void openFacebookPage();
    Q_INVOKABLE void openInstaPage();
    Q_INVOKABLE void openTwitterPage();

    QVariantList cells() const { return m_cells; }
    QString currentRoundLabel() const { return QString::number(round + 1); }
    QColor topbarColor() const;
    // The keyboard's focus: the level Enter opens (at first the next level to play), and whether its ring
    // shows (once an arrow was pressed).
    int focusIndex() const { return m_focus.index; }
    bool focusShown() const { return m_focus.shown; }
    // Tab reached this level: the ring and the arrows go on from it.
    Q_INVOKABLE void focusOn(int index);

signals:
    void cellsChanged();
    void focusChanged();

protected:
    // Arrows move the focus through the grid in reading order; Enter opens the focused level as a tap does.
    bool keyPressed(const KeyPress& press) override;

private:
    QVariantList m_cells;
    Keyboard::SelectorFocus m_focus;
};
