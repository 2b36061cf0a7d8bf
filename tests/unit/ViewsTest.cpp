// The puzzle views, the info card and the launch sequence.
#include "TestPlatform.h"
#include "core/AppDelegate.h"
#include "core/GameView.h"
#include "core/GameViewController.h"
#include "core/InfoCardView.h"
#include "core/LevelManager.h"
#include "core/LevelsInfoReader.h"
#include "screens/ColorUtil.h"
#include "screens/MainViewController.h"

#include <QDir>
#include <QFile>
#include <QLocale>
#include <QTimeZone>
#include <gtest/gtest.h>

namespace {

GamePtr gameWith(const QString& solution, const QString& image = QStringLiteral("nothing")) {
    auto game = Game::initWithGameLevelAndGameRound(2, 4);
    auto info = std::make_shared<LevelInfo>();
    info->solution = info->fullSolution = solution;
    info->imageName = image;
    game->setLevelInfo(info);
    return game;
}

TEST(WordViews, GridAndLettersToRevealByLength) {
    TestPlatform platform;
    std::unique_ptr<WordView> view(WordView::loadInstance({0, 0, 300, 300}));
    view->initGameViewWithGame(gameWith("شمسي"));
    EXPECT_EQ(view->maxLettersToReveal, 1);
    // Read right to left: picture 1 top right, 2 top left, 3 bottom right.
    EXPECT_GT(view->imageView1->frame().x(), view->imageView2->frame().x());
    EXPECT_GT(view->imageView3->frame().y(), view->imageView1->frame().y());
    // A picture that is not shipped shows as empty.
    EXPECT_TRUE(view->imageView1->source().isEmpty());

    std::unique_ptr<WordView> five(WordView::loadInstance({0, 0, 300, 300}));
    five->initGameViewWithGame(gameWith("شمسية"));
    EXPECT_EQ(five->maxLettersToReveal, 2);
}

TEST(WordViews, APictureIsNamedByItsLineOfTheDescriptionsOrByItsNumber) {
    const QString file = QStringLiteral("moon_1\tبدر في الليل\nsun_1\tشمس وسحابة في السماء\r\n"
                                        "xsun_2\tليس لها\nsun_2\t  \nsun_3\tدوار الشمس");
    EXPECT_EQ(WordView::descriptionIn(file, QStringLiteral("sun"), 1),
              QStringLiteral("شمس وسحابة في السماء"));
    EXPECT_EQ(WordView::descriptionIn(file, QStringLiteral("moon"), 1), QStringLiteral("بدر في الليل"));
    // The last line needs no newline; a name inside another name, an empty text or no line at all give the
    // number.
    EXPECT_EQ(WordView::descriptionIn(file, QStringLiteral("sun"), 3), QStringLiteral("دوار الشمس"));
    EXPECT_EQ(WordView::descriptionIn(file, QStringLiteral("sun"), 2), QStringLiteral("الصورة 2"));
    EXPECT_EQ(WordView::descriptionIn(file, QStringLiteral("un"), 1), QStringLiteral("الصورة 1"));
    EXPECT_EQ(WordView::descriptionIn(file, QStringLiteral("star"), 4), QStringLiteral("الصورة 4"));
    EXPECT_EQ(WordView::descriptionIn(QString(), QString(), 1), QStringLiteral("الصورة 1"));

    // Without the pictures' resource every picture still has a name to be read by.
    TestPlatform platform;
    std::unique_ptr<WordView> view(WordView::loadInstance({0, 0, 300, 300}));
    view->initGameViewWithGame(gameWith("شمس"));
    EXPECT_EQ(view->imageView4->description(), QStringLiteral("الصورة 4"));
}

TEST(WordViews, TapEnlargesAPictureAndTheNextTapShrinksIt) {
    TestPlatform platform;
    auto game = gameWith("قمر");
    std::unique_ptr<WordView> view(WordView::loadInstance({0, 0, 300, 300}));
    view->initGameViewWithGame(game);
    const QRectF small = view->imageView3->frame();
    view->tapPicture(2);
    EXPECT_EQ(view->imageView3->frame(), view->fullFrame);
    EXPECT_GT(view->imageView3->z(), view->imageView1->z());
    EXPECT_EQ(platform.animator().lastDuration(), 0.2);
    view->tapPicture(2);
    EXPECT_EQ(view->imageView3->frame(), small);
    view->tapPicture(7);
    EXPECT_EQ(view->imageView3->frame(), small);
}

class InfoCards : public ::testing::Test {
protected:
    InfoCardView* card(const QString& record, qint64 id) {
        auto level = LevelsInfoReader::levelWithString(record);
        m_card.reset(InfoCardView::initWithLevel(level));
        m_card->setupViewWithId(id);
        return m_card.get();
    }
    TestPlatform platform;
    std::unique_ptr<InfoCardView> m_card;
};

TEST_F(InfoCards, PriceComparisonAgainstAnIndexOfSeventy) {
    auto* even = card("x\nprice=70\n", 1);
    EXPECT_EQ(even->cheaperPercentLabel, QStringLiteral("أرخص بنسبة 0%"));
    EXPECT_EQ(even->cheaperPercentColor, ColorUtil::getGreenColor());
    auto* dearer = card("x\nprice=71\n", 1);
    EXPECT_EQ(dearer->cheaperPercentLabel, QStringLiteral("أغلى بنسبة 1%"));
    EXPECT_EQ(dearer->cheaperPercentColor, ColorUtil::getRedColor());
    EXPECT_EQ(card("x\nprice=70.9\n", 1)->cheaperPercentLabel, QStringLiteral("أرخص بنسبة 0%"));
    EXPECT_EQ(card("x\nprice=35\n", 1)->cheaperPercentLabel, QStringLiteral("أرخص بنسبة 50%"));
}

TEST_F(InfoCards, FactsLabelsAndTimes) {
    auto* c = card("x\nfacts=one***two***three\ncontinent=asia\narea=10\nstadium=s\ntimezone=3\n", 1);
    EXPECT_EQ(c->factAtTag(10), "one");
    EXPECT_EQ(c->factAtTag(30), "three");
    EXPECT_EQ(c->factAtTag(40), "");
    EXPECT_EQ(c->continentLabel, QStringLiteral("آسيا"));
    EXPECT_EQ(c->areaLabel, "10");
    EXPECT_EQ(c->stadiumLabel, "s");
    // The test clock stands at 09:30 local time; three hours from UTC is its own zone.
    const QDateTime now = platform.scheduler().now();
    EXPECT_EQ(c->currentTimeLabel, QLocale::c().toString(now.toLocalTime(), "hh:mm AP"));
    EXPECT_EQ(c->cityTimeLabel, QLocale::c().toString(now.toTimeZone(QTimeZone(3 * 3600)), "hh:mm AP"));
}

TEST_F(InfoCards, MapHintsAtARegionOrPinsTheCity) {
    platform.random().queue({25, 5});
    auto* region = card("x\ncoordinates=30,31\n", 2);
    // 30 + 25 % 20 - 10 and 31 + 5 % 40 - 20.
    EXPECT_EQ(region->mapCenter, QPointF(25, 16));
    EXPECT_EQ(region->mapSpan, QPointF(20, 40));
    EXPECT_FALSE(region->hasPin);

    auto* city = card("x\ncoordinates=48.85,2.35\n", 3);
    EXPECT_TRUE(city->hasPin);
    EXPECT_EQ(city->pin, QPointF(48.85, 2.35));
    EXPECT_EQ(city->mapSpan, QPointF(0.01, 0.02));

    auto* nowhere = card("x\n", 3);
    EXPECT_FALSE(nowhere->hasPin);
    platform.random().queue({0, 0});
    auto* unset = card("x\ncoordinates=1,2,3\n", 2);
    EXPECT_EQ(unset->mapCenter, QPointF(-10, -20));
}

class Launch : public ::testing::Test {
protected:
    void SetUp() override { platform.writePackFile(2, QStringLiteral("حل%1"), QStringLiteral("ابتثجحخدذ")); }
    TestPlatform platform;
};

TEST_F(Launch, OpensTheMainScreenAtTheSavedPositionAndClearsTheBadge) {
    platform.defaults().setIntegerForKey(27, "currentLevel");
    AppDelegate app;
    app.setApplicationIconBadgeNumber(4);
    EXPECT_TRUE(app.applicationDidFinishLaunchingWithOptions({}));
    auto* main = qobject_cast<MainViewController*>(Platform::shared().navigator().rootViewController());
    ASSERT_NE(main, nullptr);
    EXPECT_EQ(main->currentLevelLabel(), "28");
    EXPECT_EQ(main->currentRoundLabel(), "2");
    EXPECT_EQ(app.applicationIconBadgeNumber(), 0);
    EXPECT_FALSE(platform.alerts().isVisible());
    EXPECT_FALSE(app.isPenaltyMessageShown);
    // The level list is read only when the rounds are first shown.
    EXPECT_FALSE(LevelsInfoReader::sharedInstance().isPacksDataLoaded());
}

TEST_F(Launch, APlayScreenBeyondTheLastPackSaysSo) {
    platform.defaults().setIntegerForKey(50, "currentLevel");
    auto* play = new GameViewController();
    Platform::shared().navigator().setRootViewController(play);
    play->openCurrentLevel();
    EXPECT_EQ(play->game->levelInfo(), nullptr);
    EXPECT_TRUE(play->solutionBlocks.isEmpty());
    EXPECT_EQ(platform.alerts().count(), 1);
}

} // namespace
