#include "RoundSelectorViewController.h"

#include <algorithm>

#include "outreach/Addresses.h"
#include "outreach/AppPromoView.h"

#include "LevelSelectorViewController.h"
#include "PresentationUtil.h"
#include "Util.h"
#include "core/Game.h"
#include "core/LevelManager.h"
#include "core/LevelsInfoReader.h"
#include "outreach/SoundFactory.h"
#include "platform/Platform.h"
#include "progress/RankManager.h"

#include <QColor>

RoundSelectorViewController::RoundSelectorViewController(QObject* parent)
    : ViewController(QStringLiteral("RoundSelectorViewController"), parent) {}

QColor RoundSelectorViewController::topbarColor() const {
    return Game::getGameTopbarColor();
}

void RoundSelectorViewController::viewDidLoad() {
    // The whole game's level list is read here, the first time the rounds are shown.
    LevelsInfoReader::sharedInstance().loadAllPacksLevelsWithEnc(QStringLiteral("ok"), false);
    if (arc4random() % 3 == 1) {
        setupEmitterLayer();
    }
}

void RoundSelectorViewController::setupEmitterLayer() {
    Platform::shared().emitter().startGCRankEmitterOnViewForDuration(this, kPromoStarsSeconds);
}

void RoundSelectorViewController::viewWillAppear() {
    currentGroup = LevelManager::sharedInstance().currentLevel() / 25;
    m_rows.clear();
    for (qint64 r = 0; r < tableViewNumberOfRowsInSection(); ++r) {
        m_rows.append(tableViewCellForRowAtIndexPath(r));
    }
    emit rowsChanged();
    // Back from a round's levels the focus stays where it was; else it starts on the current round.
    m_focus.reset(currentGroup, static_cast<int>(m_rows.size()));
    emit focusChanged();
}

void RoundSelectorViewController::focusOn(int index) {
    if (m_focus.moveTo(index, static_cast<int>(m_rows.size()))) {
        emit focusChanged();
    }
}

bool RoundSelectorViewController::keyPressed(const KeyPress& press) {
    const auto key = m_focus.keyPressed(press, static_cast<int>(m_rows.size()), 1);
    if (key == Keyboard::SelectorFocus::Key::Ignored) {
        return ViewController::keyPressed(press);
    }
    emit focusChanged();
    if (key == Keyboard::SelectorFocus::Key::Chosen) {
        tableViewDidSelectRowAtIndexPath(m_focus.index);
    }
    return true;
}

qint64 RoundSelectorViewController::tableViewNumberOfRowsInSection() const {
    return LevelsInfoReader::sharedInstance().packCount();
}

QVariantMap RoundSelectorViewController::tableViewCellForRowAtIndexPath(qint64 row) const {
    const auto& ranks = RankManager::sharedInstance();
    const Rank& rank = ranks.getRankForRound(row);
    const qint64 level = LevelManager::sharedInstance().currentLevel();
    const float progress = static_cast<float>(level - currentGroup * 25) / 25.0f;

    const qint64 place = row < ranks.packsLastGcRanks.size() ? ranks.packsLastGcRanks.at(row) : 0;
    const QString leaderboard = place == 0 ? QStringLiteral("---") : Util::formatLongNumber(place);

    QVariantMap cell{{"number", QString::number(row + 1)},
                     {"name", rank.name},
                     {"desc", rank.desc},
                     {"badge", rank.getBadge()},
                     // The locked look of the same rank, numbered from 0 as the ladder's rows are.
                     {"lockedBadge", QStringLiteral("gbadge%1.png").arg(rank.id - 1)}};
    if (row < currentGroup) {
        cell.insert({{"state", Finished},
                     {"image", "group1.png"},
                     {"progress", 1.0},
                     {"percent", "100%"},
                     {"leaderboard", leaderboard}});
    } else if (row == currentGroup) {
        cell.insert({{"state", Current},
                     {"image", "group1.png"},
                     {"progress", static_cast<double>(progress)},
                     {"percent", QStringLiteral("%1 %").arg(static_cast<qint64>(progress * 100))},
                     {"leaderboard", leaderboard}});
    } else {
        cell.insert({{"state", Locked},
                     {"image", "group2.png"},
                     {"progress", 0.0},
                     {"percent", ""},
                     {"leaderboard", "---"}});
    }
    return cell;
}

void RoundSelectorViewController::tableViewDidSelectRowAtIndexPath(int row) {
    SoundFactory::sharedInstance().playMenuTap();
    if (row < 0 || row >= tableViewNumberOfRowsInSection()) {
        return;
    }
    if (row <= currentGroup) {
        auto& nav = Platform::shared().navigator();
        auto* levels = qobject_cast<LevelSelectorViewController*>(
            nav.instantiateViewControllerWithIdentifier(QStringLiteral("LevelSelectorViewController")));
        if (levels) {
            levels->round = row;
            nav.pushViewController(levels);
        }
        return;
    }
    Util::showMessageWithTitle(QStringLiteral("أكمل جميع المجموعات السابقة لفك قفل هذه المجموعة"),
                               QStringLiteral("المجموعة مقفلة"));
}

void RoundSelectorViewController::goBack() {
    SoundFactory::sharedInstance().playMenuTap();
    Platform::shared().navigator().popViewController();
}

void RoundSelectorViewController::openAbout() {
    SoundFactory::sharedInstance().playMenuTap();
    PresentationUtil::openAboutViewController(this);
}

void RoundSelectorViewController::openPromoView() {
    Platform::shared().urls().openURL(Addresses::promoStorePage());
}

QString RoundSelectorViewController::promoTitle() const {
    return AppPromoView::getAppTitle(Addresses::promotedAppId());
}

QUrl RoundSelectorViewController::promoIcon() const {
    return AppPromoView::getAppIcon(Addresses::promotedAppId());
}
