#include "SettingsFile.h"

#include <QBuffer>
#include <QDebug>
#include <QPoint>
#include <QRect>
#include <QSize>
#include <QStringList>

#include <atomic>
#include <optional>

namespace {

std::atomic<int> g_unreadable{0};

void reportUnreadable(const QString& what) {
    g_unreadable.fetch_add(1, std::memory_order_relaxed);
    qWarning().noquote() << "A value in the settings file could not be read (" + what +
                                "); it reads as absent.";
}

bool isHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

int hexValue(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    return (c | 0x20) - 'a' + 10;
}

// ---- The binary encoding of a value -----------------------------------------------------------------------

// Walks a value as QDataStream writes it, without building it. Only the types the game keeps in its
// settings are accepted, so that every allocation the real decoder makes is bounded by the checks here.
class VariantWalk {
public:
    VariantWalk(QByteArrayView bytes, QDataStream::Version version) : m_bytes(bytes), m_version(version) {}

    bool variant(int depth) {
        if (depth > kMaxDepth) {
            return false;
        }
        quint32 type = 0;
        if (!u32(type)) {
            return false;
        }
        if (m_version >= QDataStream::Qt_4_2 && !skip(1)) {
            return false; // the null flag
        }
        switch (type) {
        case QMetaType::UnknownType:
            // An empty value; older streams carry an empty text after it.
            return m_version >= QDataStream::Qt_5_0 || text();
        case QMetaType::Bool:
            return skip(1);
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::QTime:
            return skip(4);
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
        case QMetaType::Double:
            return skip(8);
        case QMetaType::QChar:
            return skip(2);
        case QMetaType::QString:
            return text();
        case QMetaType::QByteArray:
            return bytes();
        case QMetaType::QStringList: {
            quint32 n = 0;
            if (!count(n, 4)) {
                return false;
            }
            for (quint32 i = 0; i < n; ++i) {
                if (!text()) {
                    return false;
                }
            }
            return true;
        }
        case QMetaType::QVariantList: {
            quint32 n = 0;
            if (!count(n, 4)) {
                return false;
            }
            for (quint32 i = 0; i < n; ++i) {
                if (!variant(depth + 1)) {
                    return false;
                }
            }
            return true;
        }
        case QMetaType::QVariantMap:
        case QMetaType::QVariantHash: {
            quint32 n = 0;
            if (!count(n, 8)) {
                return false;
            }
            for (quint32 i = 0; i < n; ++i) {
                if (!text() || !variant(depth + 1)) {
                    return false;
                }
            }
            return true;
        }
        case QMetaType::QDate:
            return skip(m_version >= QDataStream::Qt_5_0 ? 8 : 4);
        case QMetaType::QDateTime:
            return dateTime();
        default:
            return false;
        }
    }

    bool atEnd() const { return m_pos == m_bytes.size(); }

private:
    static constexpr int kMaxDepth = 8;

    qsizetype remaining() const { return m_bytes.size() - m_pos; }

    bool skip(qsizetype n) {
        if (remaining() < n) {
            return false;
        }
        m_pos += n;
        return true;
    }

    bool u32(quint32& value) {
        if (remaining() < 4) {
            return false;
        }
        value = 0;
        for (int i = 0; i < 4; ++i) {
            value = (value << 8) | static_cast<quint8>(m_bytes[m_pos + i]);
        }
        m_pos += 4;
        return true;
    }

    // A count of items each at least `itemBytes` long, all of which must fit in what is left.
    bool count(quint32& n, qsizetype itemBytes) {
        return u32(n) && static_cast<qsizetype>(n) <= remaining() / itemBytes;
    }

    bool bytes() {
        quint32 n = 0;
        if (!u32(n)) {
            return false;
        }
        return n == 0xffffffffu || skip(n);
    }

    bool text(QString* out = nullptr) {
        quint32 n = 0;
        if (!u32(n)) {
            return false;
        }
        if (n == 0xffffffffu) {
            return true;
        }
        if (n % 2 != 0 || remaining() < static_cast<qsizetype>(n)) {
            return false;
        }
        if (out) {
            for (quint32 i = 0; i < n; i += 2) {
                out->append(QChar(static_cast<char16_t>((static_cast<quint8>(m_bytes[m_pos + i]) << 8) |
                                                        static_cast<quint8>(m_bytes[m_pos + i + 1]))));
            }
        }
        m_pos += n;
        return true;
    }

    bool dateTime() {
        if (!skip(m_version >= QDataStream::Qt_5_0 ? 8 : 4) || !skip(4) || remaining() < 1) {
            return false;
        }
        const auto timeKind = static_cast<quint8>(m_bytes[m_pos++]);
        if (m_version < QDataStream::Qt_5_2) {
            return true;
        }
        if (timeKind == Qt::OffsetFromUTC) {
            return skip(4);
        }
        if (timeKind == Qt::TimeZone) {
            QString id;
            if (!text(&id)) {
                return false;
            }
            if (id != QLatin1String("OffsetFromUtc")) {
                return true;
            }
            // A zone at a fixed offset: its name, offset, full name, abbreviation, territory and comment.
            return text() && skip(4) && text() && text() && skip(4) && text();
        }
        return true;
    }

    QByteArrayView m_bytes;
    QDataStream::Version m_version;
    qsizetype m_pos = 0;
};

QVariant decodeBinary(const QString& payload, QDataStream::Version version) {
    for (QChar c : payload) {
        if (c.unicode() > 0xff) {
            reportUnreadable(QStringLiteral("a binary value with a character beyond one byte"));
            return {};
        }
    }
    const QByteArray bytes = payload.toLatin1();
    if (!SettingsFile::isDecodableVariant(bytes, version)) {
        reportUnreadable(
            QStringLiteral("a binary value that is damaged or of a type the game does not keep"));
        return {};
    }
    QDataStream stream(bytes);
    stream.setVersion(version);
    QVariant result;
    stream >> result;
    if (stream.status() != QDataStream::Ok) {
        reportUnreadable(QStringLiteral("a binary value that does not decode"));
        return {};
    }
    return result;
}

// ---- Text values -----------------------------------------------------------------------------------------

std::optional<QList<int>> numbers(QStringView args, int expected) {
    const auto words = args.split(u' ');
    if (words.size() != expected) {
        return std::nullopt;
    }
    QList<int> out;
    for (QStringView p : words) {
        bool ok = false;
        out.append(p.toInt(&ok));
        if (!ok) {
            return std::nullopt;
        }
    }
    return out;
}

QVariant stringToVariant(const QString& s) {
    if (s.startsWith(u'@') && s.endsWith(u')')) {
        const auto inner = [&](qsizetype prefix) { return QStringView(s).sliced(prefix).chopped(1); };
        if (s.startsWith(QLatin1String("@ByteArray("))) {
            return inner(11).toLatin1();
        }
        if (s.startsWith(QLatin1String("@String("))) {
            return inner(8).toString();
        }
        if (s.startsWith(QLatin1String("@Variant("))) {
            return decodeBinary(inner(9).toString(), QDataStream::Qt_4_0);
        }
        if (s.startsWith(QLatin1String("@DateTime("))) {
            return decodeBinary(inner(10).toString(), QDataStream::Qt_5_6);
        }
        if (s == QLatin1String("@Invalid()")) {
            return {};
        }
        if (s.startsWith(QLatin1String("@Rect("))) {
            if (const auto n = numbers(inner(6), 4)) {
                return QRect(n->at(0), n->at(1), n->at(2), n->at(3));
            }
        } else if (s.startsWith(QLatin1String("@Size("))) {
            if (const auto n = numbers(inner(6), 2)) {
                return QSize(n->at(0), n->at(1));
            }
        } else if (s.startsWith(QLatin1String("@Point("))) {
            if (const auto n = numbers(inner(7), 2)) {
                return QPoint(n->at(0), n->at(1));
            }
        }
    }
    if (s.startsWith(QLatin1String("@@"))) {
        return s.mid(1);
    }
    return s;
}

void chopTrailingSpaces(QString& s, qsizetype limit) {
    qsizetype n = s.size();
    while (n > limit && (s.at(n - 1) == u' ' || s.at(n - 1) == u'\t')) {
        --n;
    }
    s.truncate(n);
}

// Undoes the escaping of a value: backslash escapes (named, hexadecimal, octal, and a backslash before a
// line break that continues the line), double quotes around stretches that keep their spaces and commas, and
// commas between the items of a list. Returns the items, or one text when there is no list.
QStringList unescapeValue(QByteArrayView raw, bool* isList) {
    QStringList items;
    QString current;
    *isList = false;
    bool inQuotes = false;
    bool quoted = false;
    qsizetype chopLimit = 0;
    qsizetype i = 0;
    const qsizetype n = raw.size();

    const auto skipSpaces = [&] {
        while (i < n && (raw[i] == ' ' || raw[i] == '\t')) {
            ++i;
        }
    };
    const auto appendCode = [&](quint32 code) {
        current.append(code <= 0xffff ? QChar(static_cast<char16_t>(code))
                                      : QChar(QChar::ReplacementCharacter));
        chopLimit = current.size();
    };

    skipSpaces();
    while (i < n) {
        const char c = raw[i];
        if (c == '\\') {
            ++i;
            if (i >= n) {
                break;
            }
            const char e = raw[i++];
            switch (e) {
            case 'a':
                appendCode('\a');
                break;
            case 'b':
                appendCode('\b');
                break;
            case 'f':
                appendCode('\f');
                break;
            case 'n':
                appendCode('\n');
                break;
            case 'r':
                appendCode('\r');
                break;
            case 't':
                appendCode('\t');
                break;
            case 'v':
                appendCode('\v');
                break;
            case '"':
            case '?':
            case '\'':
            case '\\':
                appendCode(static_cast<quint8>(e));
                break;
            case 'x': {
                quint32 code = 0;
                while (i < n && isHexDigit(raw[i])) {
                    code = std::min<quint32>((code << 4) | static_cast<quint32>(hexValue(raw[i])), 0x110000);
                    ++i;
                }
                appendCode(code);
                break;
            }
            case '\n':
            case '\r':
                // A line continued on the next: the break (\n, \r, \r\n or \n\r) is dropped.
                if (i < n && (raw[i] == '\n' || raw[i] == '\r') && raw[i] != e) {
                    ++i;
                }
                chopLimit = current.size();
                break;
            default:
                if (e >= '0' && e <= '7') {
                    quint32 code = static_cast<quint32>(e - '0');
                    while (i < n && raw[i] >= '0' && raw[i] <= '7') {
                        code = std::min<quint32>((code << 3) | static_cast<quint32>(raw[i] - '0'), 0x110000);
                        ++i;
                    }
                    appendCode(code);
                } else {
                    chopLimit = current.size(); // an unknown escape is dropped
                }
            }
        } else if (c == '"') {
            ++i;
            quoted = true;
            inQuotes = !inQuotes;
            if (!inQuotes) {
                skipSpaces();
            }
        } else if (c == ',' && !inQuotes) {
            if (!quoted) {
                chopTrailingSpaces(current, chopLimit);
            }
            *isList = true;
            items.append(current);
            current.clear();
            chopLimit = 0;
            quoted = false;
            ++i;
            skipSpaces();
        } else {
            qsizetype j = i + 1;
            while (j < n && raw[j] != '\\' && raw[j] != '"' && (raw[j] != ',' || inQuotes)) {
                ++j;
            }
            current.append(QString::fromUtf8(raw.sliced(i, j - i)));
            i = j;
        }
    }
    if (!quoted) {
        chopTrailingSpaces(current, chopLimit);
    }
    items.append(current);
    return items;
}

// ---- Keys ------------------------------------------------------------------------------------------------

// Keys keep letters, digits, `_`, `-` and `.`; a slash becomes a backslash and anything else a %XX or
// %UXXXX code.
QByteArray escapeKey(const QString& key) {
    static const char hex[] = "0123456789ABCDEF";
    QByteArray out;
    for (QChar qc : key) {
        const char16_t c = qc.unicode();
        if (c == u'/') {
            out += '\\';
        } else if ((c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') ||
                   c == u'_' || c == u'-' || c == u'.') {
            out += static_cast<char>(c);
        } else if (c <= 0xff) {
            out += '%';
            out += hex[c >> 4];
            out += hex[c & 0xf];
        } else {
            out += "%U";
            for (int shift = 12; shift >= 0; shift -= 4) {
                out += hex[(c >> shift) & 0xf];
            }
        }
    }
    return out;
}

QString unescapeKey(QByteArrayView raw) {
    QString out;
    qsizetype i = 0;
    const qsizetype n = raw.size();
    while (i < n) {
        const char c = raw[i];
        if (c == '\\') {
            out += u'/';
            ++i;
        } else if (c == '%' && i + 5 < n && raw[i + 1] == 'U' && isHexDigit(raw[i + 2]) &&
                   isHexDigit(raw[i + 3]) && isHexDigit(raw[i + 4]) && isHexDigit(raw[i + 5])) {
            out += QChar(static_cast<char16_t>(hexValue(raw[i + 2]) << 12 | hexValue(raw[i + 3]) << 8 |
                                               hexValue(raw[i + 4]) << 4 | hexValue(raw[i + 5])));
            i += 6;
        } else if (c == '%' && i + 2 < n && isHexDigit(raw[i + 1]) && isHexDigit(raw[i + 2])) {
            out += QChar(static_cast<char16_t>(hexValue(raw[i + 1]) << 4 | hexValue(raw[i + 2])));
            i += 3;
        } else {
            qsizetype j = i + 1;
            while (j < n && raw[j] != '\\' && raw[j] != '%') {
                ++j;
            }
            out += QString::fromUtf8(raw.sliced(i, j - i));
            i = j;
        }
    }
    return out;
}

// ---- Writing values --------------------------------------------------------------------------------------

QString variantToString(const QVariant& v) {
    switch (v.typeId()) {
    case QMetaType::UnknownType:
        return QStringLiteral("@Invalid()");
    case QMetaType::QByteArray:
        return QStringLiteral("@ByteArray(") + QString::fromLatin1(v.toByteArray()) + u')';
    case QMetaType::QString:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Bool:
    case QMetaType::Float:
    case QMetaType::Double: {
        QString s = v.toString();
        if (s.startsWith(u'@')) {
            s.prepend(u'@');
        }
        return s;
    }
    case QMetaType::QRect: {
        const QRect r = v.toRect();
        return QStringLiteral("@Rect(%1 %2 %3 %4)").arg(r.x()).arg(r.y()).arg(r.width()).arg(r.height());
    }
    case QMetaType::QSize: {
        const QSize s = v.toSize();
        return QStringLiteral("@Size(%1 %2)").arg(s.width()).arg(s.height());
    }
    case QMetaType::QPoint: {
        const QPoint p = v.toPoint();
        return QStringLiteral("@Point(%1 %2)").arg(p.x()).arg(p.y());
    }
    default: {
        const bool dateTime = v.typeId() == QMetaType::QDateTime;
        QByteArray bytes;
        {
            QDataStream stream(&bytes, QIODevice::WriteOnly);
            stream.setVersion(dateTime ? QDataStream::Qt_5_6 : QDataStream::Qt_4_0);
            stream << v;
        }
        return QLatin1String(dateTime ? "@DateTime(" : "@Variant(") + QString::fromLatin1(bytes) + u')';
    }
    }
}

void escapeString(const QString& s, QByteArray& out) {
    const qsizetype start = out.size();
    const bool binary = s.startsWith(QLatin1String("@ByteArray(")) ||
                        s.startsWith(QLatin1String("@Variant(")) || s.startsWith(QLatin1String("@DateTime("));
    bool needsQuotes = false;
    bool escapeNextIfHex = false;
    for (qsizetype k = 0; k < s.size(); ++k) {
        const char16_t c = s.at(k).unicode();
        if (c == u';' || c == u',' || c == u'=') {
            needsQuotes = true;
        }
        // After a numeric escape a hex digit would be read as part of it, so it is escaped too.
        if (escapeNextIfHex && c < 0x80 && isHexDigit(static_cast<char>(c))) {
            out += "\\x" + QByteArray::number(static_cast<uint>(c), 16);
            continue;
        }
        escapeNextIfHex = false;
        switch (c) {
        case u'\0':
            out += "\\0";
            escapeNextIfHex = true;
            break;
        case u'\a':
            out += "\\a";
            break;
        case u'\b':
            out += "\\b";
            break;
        case u'\f':
            out += "\\f";
            break;
        case u'\n':
            out += "\\n";
            break;
        case u'\r':
            out += "\\r";
            break;
        case u'\t':
            out += "\\t";
            break;
        case u'\v':
            out += "\\v";
            break;
        case u'"':
            out += "\\\"";
            break;
        case u'\\':
            out += "\\\\";
            break;
        default:
            if (c <= 0x1f || (c >= 0x7f && binary)) {
                out += "\\x" + QByteArray::number(static_cast<uint>(c), 16);
                escapeNextIfHex = true;
            } else if (c < 0x80) {
                out += static_cast<char>(c);
            } else if (QChar::isHighSurrogate(c) && k + 1 < s.size() && s.at(k + 1).isLowSurrogate()) {
                out += s.mid(k, 2).toUtf8();
                ++k;
            } else {
                out += QString(QChar(c)).toUtf8();
            }
        }
    }
    if (needsQuotes || (out.size() > start && (out.at(start) == ' ' || out.back() == ' '))) {
        out.insert(start, '"');
        out += '"';
    }
}

} // namespace

namespace SettingsFile {

QSettings::Format format() {
    static const QSettings::Format registered =
        QSettings::registerFormat(QStringLiteral("ini"), &read, &write, Qt::CaseSensitive);
    return registered;
}

int unreadableValueCount() {
    return g_unreadable.load(std::memory_order_relaxed);
}

bool isDecodableVariant(QByteArrayView bytes, QDataStream::Version version) {
    VariantWalk walk(bytes, version);
    return walk.variant(0);
}

QVariant decodeValue(QByteArrayView text) {
    bool isList = false;
    const QStringList items = unescapeValue(text, &isList);
    if (!isList) {
        return stringToVariant(items.constFirst());
    }
    bool typed = false;
    for (const QString& item : items) {
        if (item.startsWith(u'@') && !item.startsWith(QLatin1String("@@"))) {
            typed = true;
        }
    }
    if (typed) {
        QVariantList values;
        values.reserve(items.size());
        for (const QString& item : items) {
            values.append(stringToVariant(item));
        }
        return values;
    }
    QStringList texts;
    texts.reserve(items.size());
    for (const QString& item : items) {
        texts.append(item.startsWith(QLatin1String("@@")) ? item.mid(1) : item);
    }
    return texts;
}

QByteArray encodeValue(const QVariant& value) {
    QByteArray out;
    const bool list = value.typeId() == QMetaType::QStringList ||
                      (value.typeId() == QMetaType::QVariantList && value.toList().size() != 1);
    if (!list) {
        escapeString(variantToString(value), out);
        return out;
    }
    const QVariantList items = value.toList();
    if (items.isEmpty()) {
        return "@Invalid()";
    }
    for (qsizetype i = 0; i < items.size(); ++i) {
        if (i > 0) {
            out += ", ";
        }
        escapeString(variantToString(items.at(i)), out);
    }
    return out;
}

bool read(QIODevice& device, QSettings::SettingsMap& map) {
    if (device.size() > kMaxFileBytes) {
        qWarning().noquote() << "The settings file is" << device.size()
                             << "bytes long, more than a settings file"
                             << "of the game can be; it is not read.";
        return false;
    }
    QByteArray data = device.read(kMaxFileBytes + 1);
    if (data.size() > kMaxFileBytes) {
        return false;
    }
    if (data.startsWith("\xef\xbb\xbf")) {
        data.remove(0, 3);
    }

    QString section;
    qsizetype i = 0;
    const qsizetype n = data.size();
    while (i < n) {
        // One logical line: it ends at a line break outside quotes that no backslash escapes.
        const qsizetype start = i;
        qsizetype equals = -1;
        bool inQuotes = false;
        while (i < n) {
            const char c = data[i];
            if (c == '\\') {
                // The backslash and what it escapes; a line break escaped is one break, whichever pair it is.
                ++i;
                if (i < n) {
                    const char e = data[i++];
                    if (i < n && ((e == '\n' && data[i] == '\r') || (e == '\r' && data[i] == '\n'))) {
                        ++i;
                    }
                }
                continue;
            }
            if (c == '"') {
                inQuotes = !inQuotes;
            } else if (c == '=' && !inQuotes && equals < 0) {
                equals = i;
            } else if ((c == '\n' || c == '\r') && !inQuotes) {
                break;
            }
            ++i;
        }
        const QByteArrayView raw = QByteArrayView(data).sliced(start, i - start);
        ++i; // past the line break
        const QByteArrayView line = raw.trimmed();
        if (line.isEmpty() || line.front() == ';' || line.front() == '#') {
            continue;
        }
        if (line.front() == '[') {
            const qsizetype close = line.lastIndexOf(']');
            const QString name = unescapeKey(line.sliced(1, (close > 0 ? close : line.size()) - 1));
            if (name.compare(QLatin1String("General"), Qt::CaseInsensitive) == 0) {
                section.clear();
            } else if (name.compare(QLatin1String("%General"), Qt::CaseInsensitive) == 0) {
                section = name.mid(1);
            } else {
                section = name;
            }
            continue;
        }
        if (equals < 0) {
            continue;
        }
        const QString key = unescapeKey(raw.first(equals - start).trimmed());
        if (key.isEmpty()) {
            continue;
        }
        const QByteArrayView value = raw.sliced(equals - start + 1);
        map.insert(section.isEmpty() ? key : section + u'/' + key, decodeValue(value));
    }
    return true;
}

bool write(QIODevice& device, const QSettings::SettingsMap& map) {
    // Keys without a slash go to [General]; the others to the section named by their first part.
    QMap<QString, QList<QPair<QString, QVariant>>> sections;
    for (auto it = map.cbegin(); it != map.cend(); ++it) {
        const qsizetype slash = it.key().indexOf(u'/');
        const QString name = slash < 0 ? QString() : it.key().left(slash);
        sections[name].append({slash < 0 ? it.key() : it.key().mid(slash + 1), it.value()});
    }
    QByteArray out;
    for (auto it = sections.cbegin(); it != sections.cend(); ++it) {
        if (!out.isEmpty()) {
            out += '\n';
        }
        QByteArray name = escapeKey(it.key());
        if (name.isEmpty()) {
            name = "General";
        } else if (name.compare("General", Qt::CaseInsensitive) == 0) {
            name.prepend('%');
        }
        out += '[' + name + "]\n";
        for (const auto& [key, value] : it.value()) {
            out += escapeKey(key) + '=' + encodeValue(value) + '\n';
        }
    }
    return device.write(out) == out.size();
}

} // namespace SettingsFile
