#include "Outreach.h"

#include "screens/Util.h"

AdPacing* Outreach::ads = nullptr;
Sharing* Outreach::sharing = nullptr;

void Outreach::clear() {
    ads = nullptr;
    sharing = nullptr;
}

void Outreach::showUnavailable(const QString& what) {
    Util::showMessageWithTitle(
        QStringLiteral("%1 غير متوفر في هذه النسخة من اللعبة بعد، ترقبه في التحديث القادم").arg(what),
        kUnavailableTitle);
}
