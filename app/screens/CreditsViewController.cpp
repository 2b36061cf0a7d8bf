#include "CreditsViewController.h"

#include "platform/Platform.h"

#include <QFile>
#include <QRegularExpression>

#include <algorithm>

CreditsViewController::CreditsViewController(QObject* parent)
    : ViewController(QStringLiteral("CreditsViewController"), parent) {
    QFile file(QStringLiteral(":/credits.txt"));
    if (file.open(QIODevice::ReadOnly)) {
        m_text = QString::fromUtf8(file.readAll()).trimmed();
    } else {
        qWarning("The credits are missing from the game's resources.");
    }
}

QString CreditsViewController::html() const {
    static const QRegularExpression address(QStringLiteral("(https?://[^\\s]+[^\\s.,;:)])"));
    QString out;
    for (const QString& line : m_text.split(QLatin1Char('\n'))) {
        if (line.trimmed().isEmpty()) {
            out += QStringLiteral("<p>&nbsp;</p>");
            continue;
        }
        // A paragraph with Arabic in it reads from the right, even where it names products in Latin
        // letters; the English ones from the left.
        const bool leftToRight = std::none_of(line.cbegin(), line.cend(),
                                              [](QChar c) { return c.script() == QChar::Script_Arabic; });
        QString body = line.toHtmlEscaped();
        body.replace(address, QStringLiteral("\u2066<a href=\"\\1\">\\1</a>\u2069"));
        out += leftToRight ? QStringLiteral("<p dir=\"ltr\" align=\"left\">")
                           : QStringLiteral("<p dir=\"rtl\" align=\"right\">");
        out += body + QStringLiteral("</p>");
    }
    return out;
}

void CreditsViewController::close() {
    Platform::shared().navigator().dismissViewController();
}
