#include "CreditsViewController.h"

#include "platform/Platform.h"

#include <QFile>

CreditsViewController::CreditsViewController(QObject* parent)
    : ViewController(QStringLiteral("CreditsViewController"), parent) {
    QFile file(QStringLiteral(":/credits.txt"));
    if (file.open(QIODevice::ReadOnly)) {
        m_text = QString::fromUtf8(file.readAll()).trimmed();
    } else {
        qWarning("The credits are missing from the game's resources.");
    }
}

void CreditsViewController::close() {
    Platform::shared().navigator().dismissViewController();
}
