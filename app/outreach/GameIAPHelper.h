#pragma once

#include "IAPHelper.h"

// This build's catalogue: five packs of gold and skips. The process-wide helper.
class GameIAPHelper : public IAPHelper {
public:
    static inline const QString kPack1 = QStringLiteral("com.molvane.tarvolin.pack1");
    static inline const QString kPack2 = QStringLiteral("com.molvane.tarvolin.pack2");
    static inline const QString kPack3 = QStringLiteral("com.molvane.tarvolin.pack3");
    static inline const QString kPack4 = QStringLiteral("com.molvane.tarvolin.pack4");
    static inline const QString kPack5 = QStringLiteral("com.molvane.tarvolin.pack5");
    static const QStringList& packs();

    static GameIAPHelper& sharedInstance();
    GameIAPHelper();
    void loadData() {}
};
