#include "ShareView.h"

#include "ShareManager.h"
#include "platform/ShareSheet.h"
#include "screens/ImageUtil.h"

#include <QVariantMap>

namespace {
struct Button {
    int tag;
    void (ShareView::*action)();
    const char* actionName;
    const char* name;
    const char* glyph;
    const char* color;
};
// Tags 91 to 96 with the action each runs, in the text form and in the picture form.
const Button kTextButtons[] = {
    {91, &ShareView::rateAction, "rateAction", "قيّم اللعبة", "★", "#f9c32d"},
    {92, &ShareView::shareWhatsappAction, "shareWhatsappAction", "واتساب", "✆", "#25d366"},
    {93, &ShareView::shareFacebookAction, "shareFacebookAction", "فيسبوك", "f", "#1877f2"},
    {94, &ShareView::shareTwitterAction, "shareTwitterAction", "إكس", "X", "#0f1419"},
    {95, &ShareView::shareGeneralAction, "shareGeneralAction", "المزيد", "⋯", "#5b6b7f"},
};
const Button kImageButtons[] = {
    {91, &ShareView::shareImageOnTwitterAction, "shareImageOnTwitterAction", "إكس", "X", "#0f1419"},
    {92, &ShareView::shareImageOnWhatsappAction, "shareImageOnWhatsappAction", "واتساب", "✆", "#25d366"},
    {93, &ShareView::shareImageOnFacebookAction, "shareImageOnFacebookAction", "فيسبوك", "f", "#1877f2"},
    {94, &ShareView::shareInstagramAction, "shareInstagramAction", "إنستغرام", "◎", "#d6249f"},
    {95, &ShareView::shareSnapchatAction, "shareSnapchatAction", "سناب شات", "S", "#fffc00"},
    {96, &ShareView::shareImageGeneralAction, "shareImageGeneralAction", "المزيد", "⋯", "#5b6b7f"},
};

const Button* findButton(bool imageForm, int tag) {
    const auto find = [tag](const auto& table) -> const Button* {
        for (const Button& b : table) {
            if (b.tag == tag) {
                return &b;
            }
        }
        return nullptr;
    };
    return imageForm ? find(kImageButtons) : find(kTextButtons);
}
} // namespace

void ShareView::setupTextShareWithViewController(ViewController* controller) {
    setup(controller, false);
}

void ShareView::setupImageShareWithViewController(ViewController* controller) {
    setup(controller, true);
}

void ShareView::setup(ViewController* controller, bool imageForm) {
    parentViewController = controller;
    m_imageForm = imageForm;
    emit changed();
}

void ShareView::prepareScreenshot() {
    screenshot = ImageUtil::takeScreenshotForView(parentViewController);
    showScreenshot();
}

void ShareView::showScreenshot() {
    m_screenshotSource = SharePictures::put(QStringLiteral("view"), screenshot);
    emit changed();
}

QVariantList ShareView::buttons() const {
    QVariantList list;
    const auto add = [&list](const auto& table) {
        for (const Button& b : table) {
            list << QVariantMap{{"tag", b.tag},
                                {"name", QString::fromUtf8(b.name)},
                                {"glyph", QString::fromUtf8(b.glyph)},
                                {"color", QString::fromLatin1(b.color)}};
        }
    };
    if (m_imageForm) {
        add(kImageButtons);
    } else {
        add(kTextButtons);
    }
    return list;
}

QString ShareView::actionForTag(int tag) const {
    const Button* b = findButton(m_imageForm, tag);
    return b ? QString::fromLatin1(b->actionName) : QString();
}

void ShareView::buttonTapped(int tag) {
    if (const Button* b = findButton(m_imageForm, tag)) {
        (this->*(b->action))();
    }
}

void ShareView::fallBackToSheet(const QVariantList& items) {
    ShareManager::sharedInstance().shareContentOnViewControllerOnCompletion(items, parentViewController,
                                                                            nullptr);
}

// ---- the text form ----

void ShareView::rateAction() {
    ShareManager::sharedInstance().rateApp();
}

void ShareView::shareWhatsappAction() {
    auto& share = ShareManager::sharedInstance();
    // WhatsApp takes the store page as a string.
    const QStringList items{share.getShareMessage(), ShareManager::appStorePage().toString()};
    if (!share.shareOnWhatsapp(items)) {
        fallBackToSheet({items.at(0), items.at(1)});
    }
}

void ShareView::shareFacebookAction() {
    auto& share = ShareManager::sharedInstance();
    const QVariantList items{share.getShareMessage(), ShareManager::appStorePage()};
    if (!share.shareOnFacebookOnViewcontroller(items, parentViewController)) {
        fallBackToSheet(items);
    }
}

void ShareView::shareTwitterAction() {
    auto& share = ShareManager::sharedInstance();
    const QVariantList items{share.getShareMessage(), ShareManager::appStorePage()};
    if (!share.shareOnTwitterOnViewcontroller(items, parentViewController)) {
        fallBackToSheet(items);
    }
}

void ShareView::shareGeneralAction() {
    fallBackToSheet({ShareManager::sharedInstance().getShareMessage(), ShareManager::appStorePage()});
}

// ---- the picture form ----

void ShareView::shareImageOnTwitterAction() {
    // The picture stands where the compose sheet takes its text: it opens empty, and the player writes.
    const QVariantList items{screenshot};
    if (!ShareManager::sharedInstance().shareImageOnTwitterOnViewcontroller(items, parentViewController)) {
        fallBackToSheet(items);
    }
}

void ShareView::shareImageOnWhatsappAction() {
    if (!ShareManager::sharedInstance().shareImageOnWhatsappOnViewController(screenshot,
                                                                             parentViewController)) {
        fallBackToSheet({screenshot});
    }
}

void ShareView::shareImageOnFacebookAction() {
    if (!ShareManager::sharedInstance().shareImageOnFacebookOnViewcontroller(screenshot,
                                                                             parentViewController)) {
        fallBackToSheet({screenshot});
    }
}

void ShareView::shareInstagramAction() {
    screenshot = ImageUtil::resizeImageWidthHeight(screenshot, ShareManager::kInstagramPictureSide,
                                                   ShareManager::kInstagramPictureSide);
    showScreenshot();
    ShareManager::sharedInstance().shareImageOnInstagramOnViewController(screenshot, parentViewController);
}

void ShareView::shareSnapchatAction() {
    fallBackToSheet({screenshot});
}

void ShareView::shareImageGeneralAction() {
    auto& share = ShareManager::sharedInstance();
    fallBackToSheet({share.getShareMessage(), ShareManager::appStorePage(), screenshot});
}
