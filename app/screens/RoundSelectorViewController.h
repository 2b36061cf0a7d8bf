#pragma once

#include "platform/ViewController.h"

#include <QUrl>
#include <QVariantList>

// The rounds as a table of groups, each tied to a rank of the ladder: finished, current or locked by the
// player's level.
class RoundSelectorViewController : public ViewController {
    Q_OBJECT
    Q_PROPERTY(QVariantList rows READ rows NOTIFY rowsChanged)
    Q_PROPERTY(int currentGroup READ currentGroupValue NOTIFY rowsChanged)
    Q_PROPERTY(QString titleLabel READ titleLabel CONSTANT)
    Q_PROPERTY(QColor topbarColor READ topbarColor CONSTANT)
    Q_PROPERTY(QString promoTitle READ promoTitle CONSTANT)
    Q_PROPERTY(QUrl promoIcon READ promoIcon CONSTANT)
    Q_PROPERTY(int focusIndex READ focusIndex NOTIFY focusChanged)
    Q_PROPERTY(bool focusShown READ focusShown NOTIFY focusChanged)
public:
    enum State { Finished = 0, Current = 1, Locked = 2 };

    explicit RoundSelectorViewController(QObject* parent = nullptr);

    static constexpr double kPromoStarsSeconds = 4.0;
    qint64 currentGroup = 0;

    void viewDidLoad() override;
    void viewWillAppear() override;

    qint64 tableViewNumberOfRowsInSection() const;
    // One row: number, name, desc, state, image, progress (0 to 1), percent text, leaderboard text.
    QVariantMap tableViewCellForRowAtIndexPath(qint64 row) const;
    Q_INVOKABLE void tableViewDidSelectRowAtIndexPath(int row);
    Q_INVOKABLE void goBack();
    Q_INVOKABLE void openAbout();
    // The panel of the maker's promoted game: a tap opens its store page and leaves the game.
    Q_INVOKABLE void openPromoView();
    QString promoTitle() const;
    QUrl promoIcon() const;
    // Stars fall from the promotion panel on one visit in three.
    void setupEmitterLayer();

    QVariantList rows() const { return m_rows; }
    int currentGroupValue() const { return static_cast<int>(currentGroup); }
    QString titleLabel() const { return QStringLiteral("طارفولين"); }
    QColor topbarColor() const;
    // The keyboard's focus: the row Enter opens (at first the current round), and whether its ring shows
    // (once an arrow was pressed).
    int focusIndex() const { return m_focus.index; }
    bool focusShown() const { return m_focus.shown; }
    // Tab reached this row: the ring and the arrows go on from it.
    Q_INVOKABLE void focusOn(int index);

signals:
    void rowsChanged();
    void focusChanged();

protected:
    // Arrows move the focus through the rows in reading order; Enter opens the focused one as a tap does.
    bool keyPressed(const KeyPress& press) override;

private:
    QVariantList m_rows;
    Keyboard::SelectorFocus m_focus;
};
