#include "LevelSelectorViewController.h"

#include <algorithm>

#include "outreach/Addresses.h"
#include "outreach/AppPromoView.h"

#include "PresentationUtil.h"
#include "Util.h"
#include "core/Game.h"
#include "core/GameViewController.h"
#include "core/LevelManager.h"
#include "core/LevelsInfoReader.h"
#include "outreach/ShareManager.h"
#include "outreach/SoundFactory.h"
#include "platform/Platform.h"
#include "progress/TipsManager.h"

LevelSelectorViewController::LevelSelectorViewController(QObject* parent)
    : ViewController(QStringLiteral("LevelSelectorViewController"), parent) {}

QColor LevelSelectorViewController::topbarColor() const {
    return Game::getGameTopbarColor();
}

void LevelSelectorViewController::viewDidLoad() {
    currentLevel = LevelManager::sharedInstance().currentLevel();
}

void LevelSelectorViewController::viewWillAppear() {
    currentLevel = LevelManager::sharedInstance().currentLevel();
    m_cells.clear();
    for (qint64 r = 0; r < collectionViewNumberOfItemsInSection(); ++r) {
        m_cells.append(collectionViewCellForItemAtIndexPath(r));
    }
    emit cellsChanged();
    // Back from a level the focus stays where it was; else it starts on the level to play next.
    m_focus.reset(currentLevel - round * 25, static_cast<int>(m_cells.size()));
    emit focusChanged();
}

void LevelSelectorViewController::focusOn(int index) {
    if (m_focus.moveTo(index, static_cast<int>(m_cells.size()))) {
        emit focusChanged();
    }
}

bool LevelSelectorViewController::keyPressed(const KeyPress& press) {
    const auto key = m_focus.keyPressed(press, static_cast<int>(m_cells.size()), kColumns);
    if (key == Keyboard::SelectorFocus::Key::Ignored) {
        return ViewController::keyPressed(press);
    }
    emit focusChanged();
    if (key == Keyboard::SelectorFocus::Key::Chosen) {
        collectionViewDidSelectItemAtIndexPath(m_focus.index);
    }
    return true;
}

qint64 LevelSelectorViewController::collectionViewNumberOfItemsInSection() const {
    const auto* packs = LevelsInfoReader::sharedInstance().packsData();
    if (!packs || round < 0 || round >= packs->size()) {
        return 0;
    }
    return packs->at(round).size();
}

QVariantMap LevelSelectorViewController::collectionViewCellForItemAtIndexPath(qint64 row) const {
    const qint64 g = round * 25 + row;
    const QString image = g < currentLevel    ? QStringLiteral("level1.png")
                          : g == currentLevel ? QStringLiteral("level2.png")
                                              : QStringLiteral("level3.png");
    const int state = g < currentLevel ? 0 : (g == currentLevel ? 1 : 2);
    return {{"number", QString::number(row + 1)}, {"image", image}, {"state", state}};
}

void LevelSelectorViewController::collectionViewDidSelectItemAtIndexPath(int row) {
    SoundFactory::sharedInstance().playMenuTap();
    if (row < 0 || row >= collectionViewNumberOfItemsInSection()) {
        return;
    }
    const GamePtr game = Game::initWithGameLevelAndGameRound(row, round);
    game->setLevelInfo(LevelsInfoReader::sharedInstance().getLevelInfoPackId(row, round));
    const qint64 g = round * 25 + row;
    if (g > currentLevel) {
        Util::showMessageWithTitle(QStringLiteral("أكمل جميع المراحل السابقة لفك قفل هذه المرحلة"),
                                   QStringLiteral("المرحلة مقفلة"));
        return;
    }
    auto& nav = Platform::shared().navigator();
    auto* play = qobject_cast<GameViewController*>(
        nav.instantiateViewControllerWithIdentifier(QStringLiteral("GameViewController")));
    if (!play) {
        return;
    }
    play->setGame(game);
    play->isPreviousGame = g < currentLevel;
    nav.pushViewController(play);
}

void LevelSelectorViewController::goBack() {
    SoundFactory::sharedInstance().playMenuTap();
    Platform::shared().navigator().popViewController();
}

void LevelSelectorViewController::showTipOfTheDay() {
    TipsManager::sharedInstance().showTipOfTheDayBanner();
}

void LevelSelectorViewController::openAbout() {
    SoundFactory::sharedInstance().playMenuTap();
    PresentationUtil::openAboutViewController(this);
}

void LevelSelectorViewController::openPromoView() {
    Platform::shared().urls().openURL(Addresses::promoStorePage());
}

QString LevelSelectorViewController::promoTitle() const {
    return AppPromoView::getAppTitle(Addresses::promotedAppId());
}

QUrl LevelSelectorViewController::promoIcon() const {
    return AppPromoView::getAppIcon(Addresses::promotedAppId());
}

void LevelSelectorViewController::openFacebookPage() {
    SoundFactory::sharedInstance().playMenuTap();
    ShareManager::sharedInstance().openOurFacebookPage();
}

void LevelSelectorViewController::openInstaPage() {
    SoundFactory::sharedInstance().playMenuTap();
    ShareManager::sharedInstance().openOurInstagramPage();
}

void LevelSelectorViewController::openTwitterPage() {
    SoundFactory::sharedInstance().playMenuTap();
    ShareManager::sharedInstance().openOurTwitterPage();
}
