#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QDataStream>
#include <QIODevice>
#include <QSettings>
#include <QVariant>

// The player's settings file is INI text as other tools write it: `[section]` lines, `key=value` lines,
// comma-separated lists, and typed values such as `@ByteArray(...)`, `@Variant(...)` and `@DateTime(...)`,
// the last two holding binary-encoded values. The file lies on the player's disk, where anything may change
// it, so the game reads it with its own reader: every value is decoded from text it has checked first, and
// the binary encoding in particular is walked before it is decoded, so that no length or count in it can
// make the decoder ask for more memory than the file itself holds. A value that does not pass reads as
// absent, with a line in the log, and the reader counts it (see unreadableValueCount()).
namespace SettingsFile {

// The format to open the settings file with: QSettings with this format reads and writes through the
// functions below. Registered on first use.
QSettings::Format format();

bool read(QIODevice& device, QSettings::SettingsMap& map);
bool write(QIODevice& device, const QSettings::SettingsMap& map);

// One value as it stands after the `=` of its line.
QVariant decodeValue(QByteArrayView text);
// The text that decodeValue() reads back as the same value.
QByteArray encodeValue(const QVariant& value);

// Whether a binary-encoded value (as a stream of the given version holds it) is one the reader decodes:
// of a type the game stores, nested at most a few levels, and with every length and count within the
// bytes that follow it.
bool isDecodableVariant(QByteArrayView bytes, QDataStream::Version version);

// How many values all reads so far have found unreadable. A caller compares it before and after opening a
// file to know whether the file held any.
int unreadableValueCount();

// Files larger than this are not settings files of the game; they are not read at all.
inline constexpr qint64 kMaxFileBytes = 8 * 1024 * 1024;

} // namespace SettingsFile
