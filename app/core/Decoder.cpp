#include "Decoder.h"

namespace {
QString shifted(const QString& text, int delta) {
    QString out(text.size(), Qt::Uninitialized);
    for (qsizetype i = 0; i < text.size(); ++i) {
        out[i] = QChar(static_cast<char16_t>(text.at(i).unicode() + delta));
    }
    return out;
}
} // namespace

QString Decoder::decodeText(const QString& text) {
    return shifted(text, -11);
}
QString Decoder::encodeText(const QString& text) {
    return shifted(text, 11);
}
