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
public:
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

signals:
    void cellsChanged();

private:
    QVariantList m_cells;
};
