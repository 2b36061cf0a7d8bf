#include "GameIAPHelper.h"

#include "platform/SharedInstances.h"

const QStringList& GameIAPHelper::packs() {
    static const QStringList ids{kPack1, kPack2, kPack3, kPack4, kPack5};
    return ids;
}

GameIAPHelper& GameIAPHelper::sharedInstance() {
    return Shared<GameIAPHelper>::instance();
}

GameIAPHelper::GameIAPHelper() {
    const QHash<QString, QString> prices{{kPack1, QStringLiteral("$1.99")},
                                         {kPack2, QStringLiteral("$3.99")},
                                         {kPack3, QStringLiteral("$5.99")},
                                         {kPack4, QStringLiteral("$8.99")},
                                         {kPack5, QStringLiteral("$12.99")}};
    const QHash<QString, qint64> credits{
        {kPack1, 900}, {kPack2, 3000}, {kPack3, 6000}, {kPack4, 12000}, {kPack5, 25000}};
    const QHash<QString, qint64> skips{{kPack1, 5}, {kPack2, 15}, {kPack3, 30}, {kPack4, 50}, {kPack5, 100}};
    setUp(QSet<QString>(packs().begin(), packs().end()), prices, credits, skips);
}
