#pragma once

#include "platform/ViewController.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>

// A card for one of the maker's other games: its title, description, icon and promotion picture, a download
// button and a close button. A tap anywhere on the card downloads. The games come from the promoted-game
// table (resources/promoted-games.json); an identifier that is not there gives an empty card whose buttons
// still work.
class AppPromoView : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString appId READ appId NOTIFY changed)
    Q_PROPERTY(QString titleLabel READ titleLabel NOTIFY changed)
    Q_PROPERTY(QString descLabel READ descLabel NOTIFY changed)
    Q_PROPERTY(QUrl iconImage READ iconImage NOTIFY changed)
    Q_PROPERTY(QUrl promoImage READ promoImage NOTIFY changed)
    Q_PROPERTY(bool hidden READ isHidden NOTIFY changed)
    Q_PROPERTY(double iconCornerRadius READ iconCornerRadius CONSTANT)
public:
    static constexpr double kIconCornerRadius = 10.0;

    explicit AppPromoView(QObject* parent = nullptr) : QObject(parent) {}

    void setupWithViewControllerAndAppId(ViewController* parent, const QString& appId);

    static QString getAppTitle(const QString& appId);
    static QString getAppDesc(const QString& appId);
    static QUrl getAppIcon(const QString& appId);
    static QUrl getAppPromoImage(const QString& appId);
    // The table's identifiers, in order.
    static QStringList promotedAppIds();

    Q_INVOKABLE void handleSingleTap() { gotoAppAction(); }
    Q_INVOKABLE void gotoAppAction();
    Q_INVOKABLE void closeAction();

    ViewController* parentViewController() const { return m_parent; }
    QString appId() const { return m_appId; }
    QString titleLabel() const { return m_title; }
    QString descLabel() const { return m_desc; }
    QUrl iconImage() const { return m_icon; }
    QUrl promoImage() const { return m_promo; }
    bool isHidden() const { return m_hidden; }
    double iconCornerRadius() const { return kIconCornerRadius; }

signals:
    void changed();

private:
    QPointer<ViewController> m_parent;
    QString m_appId;
    QString m_title;
    QString m_desc;
    QUrl m_icon;
    QUrl m_promo;
    bool m_hidden = false;
};

// The screen that puts a card up over a dimming background (--open promo): the card's superview.
class AppPromoViewController : public ViewController {
    Q_OBJECT
    Q_PROPERTY(QObject* card READ card CONSTANT)
public:
    explicit AppPromoViewController(QObject* parent = nullptr);
    // The game the card shows; the configured promoted game until set.
    void setAppId(const QString& appId);
    void viewDidLoad() override;
    QObject* card() const { return m_card; }
    AppPromoView* promoView() const { return m_card; }

private:
    AppPromoView* m_card;
    QString m_appId;
};
