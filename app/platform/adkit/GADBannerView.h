#pragma once

#include "GADAdContent.h"
#include "GADMobileAds.h"

#include <QColor>
#include <QList>
#include <QObject>
#include <QRectF>
#include <QUrl>
#include <memory>

class GADBannerView;
class Timer;
class ViewController;

class GADBannerViewDelegate {
public:
    virtual ~GADBannerViewDelegate() = default;
    virtual void adViewDidReceiveAd(GADBannerView* view) = 0;
    virtual void adViewWillPresentScreen(GADBannerView* view) = 0;
    virtual void adViewDidFailToReceiveAdWithError(GADBannerView* view, const GADError& error) = 0;
};

// A banner: a view that QML draws (components/BannerAdView.qml) in its host. Once it has loaded a request it
// turns to the unit's next ad every kRotationSeconds while it exists and is not hidden.
class GADBannerView : public QObject {
    Q_OBJECT
    Q_PROPERTY(QRectF frame READ frame NOTIFY changed)
    Q_PROPERTY(bool hidden READ isHidden NOTIFY changed)
    Q_PROPERTY(bool loaded READ isLoaded NOTIFY changed)
    Q_PROPERTY(int tag READ tag NOTIFY changed)
    Q_PROPERTY(QString adIdentifier READ adIdentifier NOTIFY changed)
    Q_PROPERTY(QString kind READ kind NOTIFY changed)
    Q_PROPERTY(QString promotion READ promotion NOTIFY changed)
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QString body READ body NOTIFY changed)
    Q_PROPERTY(QString callToAction READ callToAction NOTIFY changed)
    Q_PROPERTY(QString actionUrl READ actionUrl NOTIFY changed)
    Q_PROPERTY(QUrl imageSource READ imageSource NOTIFY changed)
    Q_PROPERTY(QColor background READ background NOTIFY changed)
    Q_PROPERTY(QColor foreground READ foreground NOTIFY changed)
    Q_PROPERTY(QColor accent READ accent NOTIFY changed)
public:
    static constexpr double kRotationSeconds = 60.0;

    static GADBannerView* initWithFrame(const QRectF& frame, QObject* parent = nullptr);
    ~GADBannerView() override;

    void setAdUnitID(const QString& unit) { m_unit = unit; }
    QString adUnitID() const { return m_unit; }
    void setDelegate(GADBannerViewDelegate* delegate) { m_delegate = delegate; }
    GADBannerViewDelegate* delegate() const { return m_delegate; }
    void setRootViewController(ViewController* root) { m_root = root; }
    ViewController* rootViewController() const { return m_root; }
    // Fetches the unit's next banner; from then on the banner turns to the next one every kRotationSeconds.
    void loadRequest(const GADRequest& request);
    void setTag(int tag);
    int tag() const { return m_tag; }
    void setHidden(bool hidden);
    bool isHidden() const { return m_hidden; }
    QRectF frame() const { return m_frame; }
    void setFrame(const QRectF& frame);
    bool isLoaded() const { return m_content.has_value(); }

    QString adIdentifier() const { return m_content ? m_content->adIdentifier : QString(); }
    QString kind() const { return m_content ? m_content->kind : QString(); }
    QString promotion() const { return m_content ? m_content->promotion : QString(); }
    QString title() const { return m_content ? m_content->title : QString(); }
    QString body() const { return m_content ? m_content->body : QString(); }
    QString callToAction() const { return m_content ? m_content->callToAction : QString(); }
    QString actionUrl() const { return m_content ? m_content->actionUrl : QString(); }
    QUrl imageSource() const { return m_imageSource; }
    QColor background() const { return m_content ? m_content->background : QColor(Qt::transparent); }
    QColor foreground() const { return m_content ? m_content->foreground : QColor(Qt::black); }
    QColor accent() const { return m_content ? m_content->accent : QColor(Qt::transparent); }

    // A tap on the banner: the delegate hears a screen will open, then the ad's action opens.
    Q_INVOKABLE void tap();

signals:
    void changed();

private:
    explicit GADBannerView(const QRectF& frame, QObject* parent);
    void fetch();

    QRectF m_frame;
    QString m_unit;
    GADBannerViewDelegate* m_delegate = nullptr;
    ViewController* m_root = nullptr;
    int m_tag = 0;
    bool m_hidden = false;
    bool m_loading = false;
    std::optional<GADAdContent> m_content;
    QUrl m_imageSource;
    std::shared_ptr<Timer> m_rotation;
};

// The host banners are added to (the play screen's adsView). QML draws its subviews inside its frame.
class AdsHostView : public QObject {
    Q_OBJECT
    Q_PROPERTY(QRectF frame READ frame WRITE setFrame NOTIFY changed)
    Q_PROPERTY(QList<QObject*> subviews READ subviews NOTIFY changed)
public:
    explicit AdsHostView(QObject* parent = nullptr) : QObject(parent) {}
    AdsHostView(const QRectF& frame, QObject* parent) : QObject(parent), m_frame(frame) {}

    QRectF frame() const { return m_frame; }
    void setFrame(const QRectF& frame);
    QList<QObject*> subviews() const { return m_subviews; }
    // Takes the view in (it becomes the host's child, drawn over the earlier ones); a view leaves the host
    // when it is deleted.
    void addSubview(QObject* view);
    // The first subview whose "tag" property is `tag`, or null.
    QObject* viewWithTag(int tag) const;

signals:
    void changed();

private:
    QRectF m_frame;
    QList<QObject*> m_subviews;
};
