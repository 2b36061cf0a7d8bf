#pragma once

#include <QImage>
#include <QObject>
#include <QPointer>
#include <QUrl>
#include <QVariantList>

class ViewController;

// The panel of share buttons that a screen puts up over a dimmed layer. In its picture form it shows a
// picture of the screen (taken by prepareScreenshot) and sends it to a chosen app; in its text form it sends
// the game's invitation, or rates the game. Its buttons are known by their tags.
class ShareView : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool imageForm READ isImageForm NOTIFY changed)
    Q_PROPERTY(double cornerRadius READ cornerRadius NOTIFY changed)
    Q_PROPERTY(QUrl screenshotSource READ screenshotSource NOTIFY changed)
    Q_PROPERTY(QVariantList buttons READ buttons NOTIFY changed)
public:
    static constexpr int kPreviewTag = 90;
    static constexpr double kTextCornerRadius = 30.0;
    static constexpr double kImageCornerRadius = 10.0;

    explicit ShareView(QObject* parent = nullptr) : QObject(parent) {}

    void setupTextShareWithViewController(ViewController* controller);
    void setupImageShareWithViewController(ViewController* controller);
    // Takes the picture of the parent's screen and shows it in the preview.
    void prepareScreenshot();

    bool isImageForm() const { return m_imageForm; }
    double cornerRadius() const { return m_imageForm ? kImageCornerRadius : kTextCornerRadius; }
    QUrl screenshotSource() const { return m_screenshotSource; }
    QVariantList buttons() const;
    // The action that the button with the tag runs in the present form, empty for none.
    QString actionForTag(int tag) const;

    Q_INVOKABLE void buttonTapped(int tag);

    // The text form.
    void rateAction();
    void shareWhatsappAction();
    void shareFacebookAction();
    void shareTwitterAction();
    void shareGeneralAction();
    // The picture form.
    void shareImageOnTwitterAction();
    void shareImageOnWhatsappAction();
    void shareImageOnFacebookAction();
    void shareInstagramAction();
    void shareSnapchatAction();
    void shareImageGeneralAction();

    QPointer<ViewController> parentViewController;
    QImage screenshot;

signals:
    void changed();

private:
    void setup(ViewController* controller, bool imageForm);
    void fallBackToSheet(const QVariantList& items);
    void showScreenshot();

    bool m_imageForm = true;
    QUrl m_screenshotSource;
};
