#pragma once

#include <QImage>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariantList>
#include <functional>

// The activity types a share reports, in the platform's own spelling; the game reads them as plain strings.
class UIActivity {
public:
    static inline const QString TypeWhatsApp = QStringLiteral("net.whatsapp.WhatsApp.ShareExtension");
    static inline const QString TypePostToFacebook =
        QStringLiteral("com.apple.UIKit.activity.PostToFacebook");
    static inline const QString TypePostToTwitter = QStringLiteral("com.apple.UIKit.activity.PostToTwitter");
    static inline const QString TypeInstagram = QStringLiteral("com.burbn.instagram.shareextension");
    static inline const QString TypeSnapchat = QStringLiteral("com.snapchat.Snapchat.ShareExtension");
    static inline const QString TypeTelegram = QStringLiteral("ph.telegra.Telegraph.Share");
    static inline const QString TypeMail = QStringLiteral("com.apple.UIKit.activity.Mail");
    static inline const QString TypeCopyToPasteboard =
        QStringLiteral("com.apple.UIKit.activity.CopyToPasteboard");
    static inline const QString TypeSaveToCameraRoll =
        QStringLiteral("com.apple.UIKit.activity.SaveToCameraRoll");
    // Offered by a phone, never by this sheet; games still name them to keep them out.
    static inline const QString TypePrint = QStringLiteral("com.apple.UIKit.activity.Print");
    static inline const QString TypeAirDrop = QStringLiteral("com.apple.UIKit.activity.AirDrop");
    static inline const QString TypeOpenInIBooks = QStringLiteral("com.apple.UIKit.activity.OpenInIBooks");
    static inline const QString TypeAssignToContact =
        QStringLiteral("com.apple.UIKit.activity.AssignToContact");
    static inline const QString TypeAddToReadingList =
        QStringLiteral("com.apple.UIKit.activity.AddToReadingList");
};

// Where a file is to be saved: the player chooses. Tests script the answer.
class FileChooser {
public:
    virtual ~FileChooser() = default;
    // The path the player chose, or empty when he declined.
    virtual QString saveFileName(const QString& title, const QString& suggestedPath);
};

// What a share carries: lines of text, a link and a picture, each optional.
struct ShareItems {
    QStringList texts;
    QUrl url;
    QImage image;

    // From a list of items in the platform's manner: strings, addresses and pictures, in any order.
    static ShareItems fromList(const QVariantList& items);
    QString text() const { return texts.join(QLatin1Char('\n')); }
    bool hasWords() const { return !texts.isEmpty() || !url.isEmpty(); }
};

// The one share screen of this platform, where a phone shows its share sheet, its compose sheets for a social
// service and its "open in" menu for a file. The view (ShareSheetOverlay.qml) draws the targets with their
// icons. A target that takes text opens its web share address with the text and the link; a picture is saved
// as a JPEG where the player chooses, and the target's web page then opens for him to post it. The completion
// names the activity of the chosen target; a cancel reports none. A target that cannot be reached is told to
// the player, and the sheet stays for another choice.
class ShareSheet : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool visible READ isVisible NOTIFY changed)
    Q_PROPERTY(bool compose READ isCompose NOTIFY changed)
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY changed)
    Q_PROPERTY(QString link READ link NOTIFY changed)
    Q_PROPERTY(QUrl picture READ picture NOTIFY changed)
    Q_PROPERTY(QVariantList targets READ targets NOTIFY changed)
public:
    enum class Target {
        WhatsApp,
        Facebook,
        Twitter,
        Instagram,
        Snapchat,
        Telegram,
        Mail,
        CopyLink,
        SavePicture
    };
    struct TargetInfo {
        Target target;
        QString activityType;
        QString name;
        QString glyph;
        QString color;
        QString glyphColor;
        // Opened after a picture is saved, or when there is nothing to put in a share address.
        QUrl webPage;
        bool picturesOnly;
        // A file's type identifier that hands a file over to this target.
        QString typeIdentifier;
    };
    using Completion = std::function<void(const QString& activityType, bool completed)>;

    static const QList<TargetInfo>& allTargets();
    static const TargetInfo* info(Target target);
    static const TargetInfo* infoForActivityType(const QString& activityType);
    // The web address that shares the text and the link on the target; the target's page when it has none.
    static QUrl shareAddress(Target target, const QString& text, const QUrl& link);

    // The share sheet for the items, without the excluded activity types.
    void presentActivity(const ShareItems& items, const QStringList& excludedActivityTypes, Completion done);
    // A compose sheet for one service: the text can be changed before it is posted.
    static bool isComposeAvailable(Target service);
    void presentCompose(Target service, const ShareItems& items, Completion done);
    // The "open in" menu for a picture file: the target the type identifier names, and saving it.
    void presentOpenIn(const QString& filePath, const QString& typeIdentifier, Completion done);

    bool isVisible() const { return static_cast<bool>(m_done); }
    bool isCompose() const { return m_compose; }
    QString title() const { return m_title; }
    QString text() const { return m_items.text(); }
    void setText(const QString& text);
    QString link() const { return m_items.url.toString(); }
    QUrl picture() const { return m_picture; }
    const QImage& image() const { return m_items.image; }
    QVariantList targets() const;
    QStringList offeredActivityTypes() const { return m_offered; }

    // The player picks a target; false when nothing left the game and the sheet stays.
    Q_INVOKABLE bool choose(const QString& activityType);
    // The compose sheet's post button.
    Q_INVOKABLE bool post();
    Q_INVOKABLE void cancel();

signals:
    void changed();

private:
    void present(const QString& title, const ShareItems& items, const QStringList& offered, bool compose,
                 Completion done);
    bool carry(const TargetInfo& target);
    bool open(const TargetInfo& target, const QUrl& address);
    void finish(const QString& activityType, bool completed);

    ShareItems m_items;
    QStringList m_offered;
    QString m_title;
    bool m_compose = false;
    QUrl m_picture;
    Completion m_done;
};

// Serves the pictures that the share screens show: "image://share/sheet/N" and "image://share/view/N".
class SharePictures {
public:
    static QUrl put(const QString& name, const QImage& image);
    static QImage get(const QString& name);
    // The provider the views read them through.
    static class QQuickImageProvider* provider();
};
