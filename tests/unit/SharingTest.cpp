// Sharing and rating: the share screen's targets and what each reports, the game's share operations and the
// record they keep, WhatsApp's address, the pictures handed to apps, the store sheet's ten seconds, the
// prompts by active days, and the share panel's buttons.
#include "TestPlatform.h"
#include "core/LevelSuccessViewController.h"
#include "outreach/Addresses.h"
#include "outreach/ShareManager.h"
#include "outreach/ShareView.h"
#include "platform/MGInstagram.h"
#include "platform/storekit/SKStoreProductViewController.h"
#include "progress/SessionManager.h"
#include "screens/LevelSelectorViewController.h"
#include "screens/MainViewController.h"
#include "screens/Screens.h"

#include <QClipboard>
#include <QCoreApplication>
#include <QDir>
#include <QGuiApplication>
#include <QImageReader>
#include <QQuickWindow>
#include <QUrlQuery>

#include <gtest/gtest.h>

namespace {

// The screen whose picture is taken: a plain window of a phone's size.
class ScreenWindow {
public:
    ScreenWindow() {
        window.setColor(QColor("#2e2560"));
        window.resize(375, 667);
        window.show();
        QCoreApplication::processEvents();
    }
    QQuickWindow window;
};

class Sharing : public ::testing::Test {
protected:
    void SetUp() override { registerScreens(Platform::shared().navigator()); }
    ShareSheet& sheet() { return Platform::shared().shareSheet(); }
    ShareManager& share() { return ShareManager::sharedInstance(); }
    // Presents the items on the sheet with nothing excluded; the completion's answers gather in `reported`.
    void present(const QVariantList& items) {
        sheet().presentActivity(ShareItems::fromList(items), {}, [this](const QString& type, bool completed) {
            reported << (completed ? type : QStringLiteral("cancelled"));
        });
    }
    static QImage picture(int w, int h) {
        QImage image(w, h, QImage::Format_RGB32);
        image.fill(QColor("#f9c32d"));
        return image;
    }

    TestPlatform platform;
    QStringList reported;
};

TEST_F(Sharing, WhatsAppTakesArabicTextWithEveryCharacterThatWouldEndItsAddressEscaped) {
    const QString text = QStringLiteral("حل: كلمة/صورة? نعم,لا=1&2!");
    const QString link = QStringLiteral("https://tarvolin.app/?ref=share");
    const QString escaped = QStringLiteral(
        "%D8%AD%D9%84%3A%20%D9%83%D9%84%D9%85%D8%A9%2F%D8%B5%D9%88%D8%B1%D8%A9%3F%20%D9%86%D8%B9%D9%85%2C"
        "%D9%84%D8%A7%3D1%262!%20https%3A%2F%2Ftarvolin.app%2F%3Fref%3Dshare");
    EXPECT_EQ(ShareManager::whatsappEscapedText(text, link), escaped);

    // No WhatsApp on the device: false, so that the caller falls back to the share sheet.
    EXPECT_FALSE(share().shareOnWhatsapp({text, link}));
    platform.urls().installed << "whatsapp";
    EXPECT_TRUE(share().shareOnWhatsapp({text, link}));
    EXPECT_EQ(QString::fromLatin1(platform.urls().opened.last().toEncoded()),
              "whatsapp://send?text=" + escaped);
}

TEST_F(Sharing, EachTargetSendsWhatItCanAndReportsItsActivity) {
    const QString text = QStringLiteral("تعال العب معي & اربح");
    const QUrl link(QStringLiteral("https://tarvolin.app"));
    struct Case {
        QString type;
        QString host;
        QString textItem;
    };
    // A text target opens its web share address; the "&" of the text stays inside its value.
    const QList<Case> textTargets{{UIActivity::TypeWhatsApp, "wa.me", "text"},
                                  {UIActivity::TypePostToFacebook, "www.facebook.com", "quote"},
                                  {UIActivity::TypePostToTwitter, "x.com", "text"},
                                  {UIActivity::TypeTelegram, "t.me", "text"}};
    for (const Case& c : textTargets) {
        present({text, link});
        ASSERT_TRUE(sheet().choose(c.type)) << c.type.toStdString();
        const QUrl opened = platform.urls().opened.last();
        EXPECT_EQ(opened.host(), c.host);
        EXPECT_TRUE(QUrlQuery(opened).queryItemValue(c.textItem, QUrl::FullyDecoded).startsWith(text));
        EXPECT_TRUE(QUrlQuery(opened).query(QUrl::FullyDecoded).contains(link.toString()));
    }
    present({text, link});
    EXPECT_TRUE(sheet().choose(UIActivity::TypeMail));
    EXPECT_EQ(platform.urls().opened.last().scheme(), "mailto");
    EXPECT_EQ(QUrlQuery(platform.urls().opened.last()).queryItemValue("body", QUrl::FullyDecoded),
              text + "\n" + link.toString());
    present({text, link});
    EXPECT_TRUE(sheet().choose(UIActivity::TypeCopyToPasteboard));
    EXPECT_EQ(QGuiApplication::clipboard()->text(), text + "\n" + link.toString());
    QStringList expected;
    for (const Case& c : textTargets) {
        expected << c.type;
    }
    expected << UIActivity::TypeMail << UIActivity::TypeCopyToPasteboard;
    EXPECT_EQ(reported, expected);

    // Targets that take only pictures are not offered for words, and a cancel reports no activity.
    present({text, link});
    EXPECT_FALSE(sheet().offeredActivityTypes().contains(UIActivity::TypeInstagram));
    EXPECT_FALSE(sheet().choose(UIActivity::TypeSaveToCameraRoll));
    sheet().cancel();
    EXPECT_EQ(reported.last(), "cancelled");
    EXPECT_FALSE(sheet().isVisible());
}

TEST_F(Sharing, APictureIsSavedWhereThePlayerChoosesAndNothingIsReportedUntilItIs) {
    const QString where = QDir(platform.folder()).filePath("chosen.jpg");
    present({picture(300, 400)});
    EXPECT_EQ(sheet().offeredActivityTypes().size(), 9);

    // The player declines the question: the sheet stays, nothing reported.
    EXPECT_FALSE(sheet().choose(UIActivity::TypeSnapchat));
    EXPECT_TRUE(sheet().isVisible());
    EXPECT_TRUE(reported.isEmpty());

    // Saved, then the app's page opens for the player to post it.
    platform.files().answers << where;
    EXPECT_TRUE(sheet().choose(UIActivity::TypeSnapchat));
    EXPECT_EQ(QImageReader(where).format(), "jpeg");
    EXPECT_EQ(QImage(where).size(), QSize(300, 400));
    EXPECT_EQ(platform.urls().opened.last().host(), "web.snapchat.com");
    EXPECT_TRUE(platform.files().titles.last().contains("سناب شات"));

    // Saving alone.
    QFile::remove(where);
    present({picture(120, 80)});
    platform.files().answers << where;
    const int opened = static_cast<int>(platform.urls().opened.size());
    EXPECT_TRUE(sheet().choose(UIActivity::TypeSaveToCameraRoll));
    EXPECT_EQ(QImage(where).size(), QSize(120, 80));
    EXPECT_EQ(platform.urls().opened.size(), opened);
    EXPECT_EQ(reported, (QStringList{UIActivity::TypeSnapchat, UIActivity::TypeSaveToCameraRoll}));

    // A place that cannot be written is told, and the sheet stays.
    present({picture(50, 50)});
    platform.files().answers << QDir(platform.folder()).filePath("missing/folder/x.jpg");
    EXPECT_FALSE(sheet().choose(UIActivity::TypeSaveToCameraRoll));
    EXPECT_EQ(platform.alerts().title(), "تعذر حفظ الصورة");
    EXPECT_TRUE(sheet().isVisible());
}

TEST_F(Sharing, ATargetThatCannotBeReachedIsToldAndReportsNothing) {
    platform.urls().broken = true;
    present({QStringLiteral("نص"), QUrl("https://tarvolin.app")});
    EXPECT_FALSE(sheet().choose(UIActivity::TypeWhatsApp));
    EXPECT_EQ(platform.alerts().title(), "تعذر الوصول إلى واتساب");
    EXPECT_TRUE(sheet().isVisible());
    EXPECT_TRUE(reported.isEmpty());
    // A second sheet takes the place of the first, which counts as cancelled.
    present({QStringLiteral("نص")});
    EXPECT_EQ(reported, QStringList{"cancelled"});
}

TEST_F(Sharing, TheGamesSharesMarkItSharedOnlyWhenSomethingWentOut) {
    QStringList heard;
    share().shareAppOnCompletion(nullptr, [&heard](const QString& type) { heard << type; });
    ASSERT_TRUE(sheet().isVisible());
    EXPECT_TRUE(sheet().text().contains("طارفولين"));
    EXPECT_EQ(sheet().link(), Addresses::appStorePage().toString());
    const QStringList offered = sheet().offeredActivityTypes();
    EXPECT_TRUE(offered.contains(UIActivity::TypeMail));
    EXPECT_FALSE(offered.contains(UIActivity::TypeCopyToPasteboard));
    sheet().cancel();
    EXPECT_FALSE(share().isAppShared());
    EXPECT_TRUE(heard.isEmpty());

    // A picture of a level sent to WhatsApp through the content share marks the game as shared too.
    share().shareContentOnViewControllerOnCompletion({picture(200, 200)}, nullptr,
                                                     [&heard](const QString& type) { heard << type; });
    EXPECT_FALSE(sheet().offeredActivityTypes().contains(UIActivity::TypeMail));
    EXPECT_FALSE(sheet().offeredActivityTypes().contains(UIActivity::TypeSaveToCameraRoll));
    platform.files().answers << QDir(platform.folder()).filePath("level.jpg");
    EXPECT_TRUE(sheet().choose(UIActivity::TypeWhatsApp));
    EXPECT_EQ(heard, QStringList{UIActivity::TypeWhatsApp});
    EXPECT_TRUE(share().isAppShared());

    // The record is kept and read back at the next start.
    share().incrementLevelsShared();
    platform.restart();
    EXPECT_TRUE(ShareManager::sharedInstance().isAppShared());
    EXPECT_EQ(ShareManager::sharedInstance().levelsShared(), 1);
    EXPECT_FALSE(ShareManager::sharedInstance().isAppRated());
}

TEST_F(Sharing, RatingAndTheMakersPages) {
    share().rateApp();
    EXPECT_EQ(platform.urls().opened.last(), Addresses::appStorePage());
    EXPECT_TRUE(share().isAppRated());

    // Each page in its app when the app is there, on the web otherwise.
    share().openOurFacebookPage();
    EXPECT_EQ(platform.urls().opened.last(), Addresses::facebookPage());
    platform.urls().installed << "fb"
                              << "instagram";
    share().openOurFacebookPage();
    EXPECT_EQ(platform.urls().opened.last(), Addresses::facebookApp());
    share().openOurInstagramPage();
    EXPECT_EQ(platform.urls().opened.last(), Addresses::instagramApp());
    share().openOurTwitterPage();
    EXPECT_EQ(platform.urls().opened.last(), Addresses::twitterPage());
}

TEST_F(Sharing, TheMakersPageCountsOnceThePlayerStaysTenSecondsInTheStoreSheet) {
    auto& nav = Platform::shared().navigator();
    share().openAppInStoreWithViewController(Addresses::makerStoreIdentifier(), nullptr);
    auto* sheetScreen = qobject_cast<SKStoreProductViewController*>(nav.presentedViewController());
    ASSERT_NE(sheetScreen, nullptr);
    EXPECT_EQ(sheetScreen->productTitle(), "ألعابنا الأخرى");
    sheetScreen->openProductPage();
    EXPECT_EQ(platform.urls().opened.last(), Addresses::makerStorePage());
    // Known for this run at once; kept only after ten seconds.
    EXPECT_TRUE(share().isOurAppsOpened());
    platform.scheduler().advance(9);
    sheetScreen->done();
    EXPECT_EQ(nav.presentedViewController(), nullptr);
    EXPECT_FALSE(platform.defaults().boolForKey(ShareManager::kIsOurAppsOpenedKey));

    share().openAppInStoreWithViewController(Addresses::makerStoreIdentifier(), nullptr);
    platform.scheduler().advance(10);
    qobject_cast<SKStoreProductViewController*>(nav.presentedViewController())->done();
    EXPECT_TRUE(platform.defaults().boolForKey(ShareManager::kIsOurAppsOpenedKey));

    // The game's own page marks the sheet as a rating, in memory only.
    EXPECT_FALSE(share().isRateOpened());
    share().openAppInStoreWithViewController(Addresses::appStoreIdentifier(), nullptr);
    EXPECT_TRUE(share().isRateOpened());
    EXPECT_FALSE(share().isAppRated());
}

TEST_F(Sharing, LoyalPlayersAreAskedToShareOrRateOnTheirActiveDays) {
    auto& sessions = SessionManager::sharedInstance();
    // The prompt's title on that day with that draw; a draw of -1 checks that nothing is drawn.
    const auto askOn = [&](qint64 day, int draw) {
        sessions.setAcitveDays(day);
        const int before = platform.random().draws();
        if (draw >= 0) {
            platform.random().queue({static_cast<std::uint32_t>(draw)});
        }
        share().askLoyalUsersToShareRate();
        EXPECT_EQ(platform.random().draws() - before, draw >= 0 ? 1 : 0) << day;
        const QString title = platform.alerts().title();
        while (platform.alerts().isVisible()) {
            platform.alerts().press(0);
        }
        return title;
    };
    const QString shareTitle = QStringLiteral("شارك اللعبة");
    const QString rateTitle = QStringLiteral("قيّم اللعبة");
    for (qint64 day : {7, 13, 20, 24, 35, 41}) {
        EXPECT_EQ(askOn(day, -1), QString()) << day;
    }
    EXPECT_EQ(askOn(8, 1), shareTitle);
    // The share prompt leads to the game's share sheet.
    EXPECT_TRUE(sheet().isVisible());
    sheet().cancel();
    EXPECT_EQ(askOn(8, 2), QString());
    EXPECT_EQ(askOn(12, 4), shareTitle);
    sheet().cancel();
    EXPECT_EQ(askOn(36, 1), shareTitle);
    sheet().cancel();
    EXPECT_EQ(askOn(40, 7), shareTitle);
    sheet().cancel();
    EXPECT_EQ(askOn(21, 2), QString());
    EXPECT_EQ(askOn(23, 3), rateTitle);
    // The rate prompt's only button opens the store page.
    EXPECT_EQ(platform.urls().opened.last(), Addresses::appStorePage());
    EXPECT_TRUE(share().isAppRated());
    // Once rated, those days ask nothing, not even to share.
    EXPECT_EQ(askOn(21, -1), QString());
}

TEST_F(Sharing, TheIncentiveDrawDependsOnTheSessions) {
    auto& sessions = SessionManager::sharedInstance();
    sessions.setActiveSessions(5);
    platform.random().queue({5, 6, 3});
    EXPECT_EQ(share().getCurrentIncentive(), 1u); // 5 mod 4
    EXPECT_EQ(share().getCurrentIncentive(), 2u); // 6 mod 4
    EXPECT_EQ(share().getCurrentIncentive(), 0u);
    sessions.setActiveSessions(6);
    platform.random().queue({5, 12, 21});
    EXPECT_EQ(share().getCurrentIncentive(), 0u); // 5 mod 10
    EXPECT_EQ(share().getCurrentIncentive(), 2u);
    EXPECT_EQ(share().getCurrentIncentive(), 1u);
}

TEST_F(Sharing, ThePanelsPictureGoesToTheAppsAtBothSizes) {
    ScreenWindow screen;
    ShareView view;
    view.setupImageShareWithViewController(nullptr);
    // Without a screen behind it the panel has nothing to show.
    view.prepareScreenshot();
    EXPECT_TRUE(view.screenshot.isNull());

    auto* parent = new ViewController(QStringLiteral("Host"));
    Platform::shared().navigator().setRootViewController(parent);
    view.setupImageShareWithViewController(parent);
    view.prepareScreenshot();
    ASSERT_FALSE(view.screenshot.isNull());
    EXPECT_FALSE(view.screenshotSource().isEmpty());
    const QSize full = view.screenshot.size();
    EXPECT_EQ(view.cornerRadius(), ShareView::kImageCornerRadius);
    EXPECT_EQ(view.actionForTag(96), "shareImageGeneralAction");

    // No WhatsApp on this device: the player is told, and the share sheet takes the picture instead.
    view.buttonTapped(92);
    EXPECT_EQ(platform.alerts().title(), "WhatsApp not installed.");
    platform.alerts().press(0);
    EXPECT_TRUE(sheet().isVisible());
    EXPECT_EQ(sheet().image().size(), full);
    EXPECT_TRUE(sheet().text().isEmpty());
    sheet().cancel();

    // With WhatsApp: the picture handed over as its file, at the screen's size; a second one overwrites it.
    platform.urls().installed << "whatsapp"
                              << "instagram";
    view.buttonTapped(92);
    const QString whatsapp = QDir(platform.folder()).filePath("home/Documents/whatsAppTmp.jpg");
    EXPECT_EQ(QImage(whatsapp).size(), full);
    EXPECT_EQ(sheet().offeredActivityTypes(),
              (QStringList{UIActivity::TypeWhatsApp, UIActivity::TypeSaveToCameraRoll}));
    sheet().cancel();

    // Instagram takes the picture at 700 by 700.
    view.buttonTapped(94);
    EXPECT_EQ(view.screenshot.size(), QSize(700, 700));
    const QString instagram = QDir(platform.folder()).filePath("home/" + MGInstagram::kFile);
    EXPECT_EQ(QImageReader(instagram).format(), "jpeg");
    EXPECT_EQ(QImage(instagram).size(), QSize(700, 700));
    EXPECT_EQ(sheet().offeredActivityTypes().first(), UIActivity::TypeInstagram);
    sheet().cancel();
    view.buttonTapped(92);
    EXPECT_EQ(QImage(whatsapp).size(), QSize(700, 700));
    sheet().cancel();
    platform.urls().installed.clear();
    view.buttonTapped(94); // without the app only the log hears of it, and nothing is handed over
    EXPECT_FALSE(platform.alerts().isVisible());
    EXPECT_FALSE(sheet().isVisible());

    // Facebook's compose sheet shows the picture; X's gets the picture where its text goes, so it opens
    // empty for the player to write.
    view.buttonTapped(93);
    EXPECT_TRUE(sheet().isCompose());
    EXPECT_FALSE(sheet().image().isNull());
    sheet().cancel();
    view.buttonTapped(91);
    EXPECT_TRUE(sheet().isCompose());
    EXPECT_TRUE(sheet().text().isEmpty());
    EXPECT_TRUE(sheet().image().isNull());
    sheet().setText(QStringLiteral("من يعرف الحل؟"));
    EXPECT_TRUE(sheet().post());
    EXPECT_EQ(QUrlQuery(platform.urls().opened.last()).queryItemValue("text", QUrl::FullyDecoded),
              "من يعرف الحل؟");
    // The general button sends the message, the store page and the picture.
    view.buttonTapped(96);
    EXPECT_EQ(sheet().text(), share().getShareMessage());
    EXPECT_EQ(sheet().link(), Addresses::appStorePage().toString());
    EXPECT_FALSE(sheet().image().isNull());
    sheet().cancel();
    view.buttonTapped(95);
    EXPECT_TRUE(sheet().offeredActivityTypes().contains(UIActivity::TypeSnapchat));
    sheet().cancel();
}

TEST_F(Sharing, ThePanelsTextFormSendsTheInvitationOrRates) {
    ShareView view;
    view.setupTextShareWithViewController(nullptr);
    EXPECT_EQ(view.cornerRadius(), ShareView::kTextCornerRadius);
    EXPECT_EQ(view.buttons().size(), 5);
    // WhatsApp is not on a desktop: the sheet instead, with the store page as text.
    view.buttonTapped(92);
    ASSERT_TRUE(sheet().isVisible());
    EXPECT_FALSE(sheet().isCompose());
    EXPECT_TRUE(sheet().text().endsWith(Addresses::appStorePage().toString()));
    sheet().cancel();
    view.buttonTapped(93);
    EXPECT_TRUE(sheet().isCompose());
    EXPECT_EQ(sheet().offeredActivityTypes(), QStringList{UIActivity::TypePostToFacebook});
    EXPECT_EQ(sheet().text(), share().getShareMessage());
    EXPECT_TRUE(sheet().post());
    EXPECT_EQ(platform.urls().opened.last().host(), "www.facebook.com");
    view.buttonTapped(91);
    EXPECT_TRUE(share().isAppRated());
    // A compose sheet that nothing can reach is not offered: the sheet takes its place.
    platform.urls().broken = true;
    view.buttonTapped(94);
    EXPECT_FALSE(sheet().isCompose());
    EXPECT_TRUE(sheet().isVisible());
}

TEST_F(Sharing, TheScreensButtonsShareRateAndOpenThePages) {
    auto& nav = Platform::shared().navigator();
    auto* main = new MainViewController();
    nav.setRootViewController(main);
    main->shareAction();
    EXPECT_TRUE(sheet().isVisible());
    sheet().cancel();
    main->rateAction();
    EXPECT_TRUE(share().isAppRated());

    auto* levels = new LevelSelectorViewController();
    nav.pushViewController(new ViewController(QStringLiteral("Rounds")));
    nav.pushViewController(levels);
    levels->openFacebookPage();
    levels->openTwitterPage();
    levels->openInstaPage();
    const QList<QUrl> pages{Addresses::facebookPage(), Addresses::twitterPage(), Addresses::instagramPage()};
    EXPECT_EQ(platform.urls().opened.mid(1), pages);

    // Back from a solved level to the rounds, a player on his eighth day may be asked to share.
    SessionManager::sharedInstance().setAcitveDays(8);
    platform.random().queue({4});
    LevelSuccessViewController success;
    success.goBackToLevelsSelectorViewController();
    EXPECT_EQ(nav.depth(), 2);
    EXPECT_EQ(platform.alerts().title(), "شارك اللعبة");
}

} // namespace
