// The data of a turn-based match as the service hands it over: `unarchive` of the raw bytes, and
// `fromValues` of the values a JSON document gives. What is read back must survive a round trip.

#include "multiplayer/GCMatchData.h"

#include <QByteArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QVariantMap>

#include <cstddef>
#include <cstdint>

namespace {

void check(bool condition) {
    if (!condition) {
        __builtin_trap();
    }
}

void checkRoundTrip(const GCMatchData& d) {
    const QVariantMap values = d.values();
    const QByteArray bytes = d.archivedData();
    if (bytes.size() > GCMatchData::kMaxBytes) {
        return;
    }
    // Text that UTF-8 cannot carry (a lone surrogate) is mended once; after that the data stays as it is.
    const auto again = GCMatchData::unarchive(bytes);
    check(again.has_value() && again->archivedData() == bytes);
    for (auto it = values.begin(); it != values.end(); ++it) {
        if (it.value().typeId() != QMetaType::QString && again->contains(it.key())) {
            check(again->number(it.key()) == it.value().toLongLong());
        }
    }
    for (auto it = values.begin(); it != values.end(); ++it) {
        check(d.contains(it.key()));
        if (it.value().typeId() == QMetaType::QString) {
            check(d.string(it.key()) == it.value().toString());
        } else {
            check(!d.string(it.key()) && d.number(it.key()) == it.value().toLongLong());
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    if (const auto d = GCMatchData::unarchive(bytes)) {
        checkRoundTrip(*d);
    }
    // The values of a document as a variant map: doubles and nulls, lists and maps are no match data.
    const QJsonDocument doc = QJsonDocument::fromJson(bytes);
    if (doc.isObject()) {
        if (const auto d = GCMatchData::fromValues(doc.object().toVariantMap())) {
            checkRoundTrip(*d);
        }
    }
    return 0;
}
