#include "Alphabet.h"

namespace tarvolin::levels {

QString describeCharacter(QChar c) {
    const QString code =
        QStringLiteral("U+%1").arg(QString::number(c.unicode(), 16).toUpper(), 4, QLatin1Char('0'));
    const bool visible = c.isPrint() && !c.isSpace() && c.category() != QChar::Mark_NonSpacing &&
                         c.category() != QChar::Other_Format;
    return visible ? QStringLiteral("'%1' (%2)").arg(c).arg(code) : code;
}

} // namespace tarvolin::levels
