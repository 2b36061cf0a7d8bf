#include "Outreach.h"

#include "screens/Util.h"

Sharing* Outreach::sharing = nullptr;

void Outreach::clear() {
    sharing = nullptr;
}

void Outreach::showUnavailable(const QString& what) {
    Util::showMessageWithTitle(
        QStringLiteral("%1 غير متوفر في هذه النسخة من اللعبة بعد، ترقبه في التحديث القادم").arg(what),
        kUnavailableTitle);
}
