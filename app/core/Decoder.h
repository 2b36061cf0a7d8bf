#pragma once

#include <QString>

// The scrambled level files shift every UTF-16 code unit by 11; decoding shifts it back, with the wrap of
// 16-bit arithmetic and nothing else (newlines are shifted like any other unit).
class Decoder {
public:
    static QString decodeText(const QString& text);
    // The inverse, used to make scrambled files.
    static QString encodeText(const QString& text);
};
