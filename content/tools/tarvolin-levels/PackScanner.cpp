#include "PackScanner.h"

#include <QStringList>

#include <algorithm>

namespace tarvolin::levels {

namespace {

class LineIndex {
public:
    explicit LineIndex(const QString& text) {
        m_starts.push_back(0);
        for (qsizetype i = 0; i < text.size(); ++i) {
            if (text.at(i) == QLatin1Char('\n'))
                m_starts.push_back(i + 1);
        }
    }
    int lineOf(qsizetype offset) const {
        return static_cast<int>(std::upper_bound(m_starts.begin(), m_starts.end(), offset) -
                                m_starts.begin());
    }
    qsizetype startOfLine(qsizetype offset) const {
        return m_starts[static_cast<size_t>(lineOf(offset) - 1)];
    }

private:
    std::vector<qsizetype> m_starts;
};

struct Piece {
    qsizetype begin = 0; // offset of the piece's first character
    qsizetype end = 0;   // one past its last
};

// What QString::split(separator) yields for [begin, end), as offsets: pieces between the separators.
std::vector<Piece> splitPieces(const QString& text, qsizetype begin, qsizetype end, QStringView separator) {
    std::vector<Piece> pieces;
    qsizetype from = begin;
    while (true) {
        qsizetype at = text.indexOf(separator, from);
        if (at < 0 || at + separator.size() > end) {
            pieces.push_back({from, end});
            return pieces;
        }
        pieces.push_back({from, at});
        from = at + separator.size();
    }
}

bool onlyBlanksBefore(const QString& text, qsizetype lineStart, qsizetype at) {
    for (qsizetype i = lineStart; i < at; ++i) {
        if (!text.at(i).isSpace())
            return false;
    }
    return true;
}

} // namespace

PackScan scanPack(const QString& text) {
    PackScan scan;
    const LineIndex lines(text);

    const auto noteSeparator = [&](qsizetype at, QStringView separator) {
        if (!onlyBlanksBefore(text, lines.startOfLine(at), at))
            scan.misplaced.push_back({lines.lineOf(at), separator.toString()});
    };

    const std::vector<Piece> packPieces = splitPieces(text, 0, text.size(), kPackSeparator);
    scan.hasPack = packPieces.size() > 1;

    for (const Piece& before :
         splitPieces(text, packPieces.front().begin, packPieces.front().end, kLevelSeparator)) {
        if (before.begin != packPieces.front().begin)
            scan.recordsBeforeFirstPack.push_back(lines.lineOf(before.begin - kLevelSeparator.size()));
    }

    for (size_t s = 1; s < packPieces.size(); ++s) {
        const Piece& packPiece = packPieces[s];
        const qsizetype separatorAt = packPiece.begin - kPackSeparator.size();
        noteSeparator(separatorAt, kPackSeparator);
        const QStringView body = QStringView(text).mid(packPiece.begin, packPiece.end - packPiece.begin);
        if (!body.contains(QLatin1Char('\n')) && !body.contains(QLatin1Char(']'))) {
            scan.droppedPacks.push_back(lines.lineOf(separatorAt));
            continue;
        }
        Pack pack;
        pack.line = lines.lineOf(separatorAt);
        const std::vector<Piece> pieces = splitPieces(text, packPiece.begin, packPiece.end, kLevelSeparator);
        for (size_t r = 1; r < pieces.size(); ++r) {
            const Piece& piece = pieces[r];
            const qsizetype levelAt = piece.begin - kLevelSeparator.size();
            noteSeparator(levelAt, kLevelSeparator);
            Record record;
            record.line = lines.lineOf(levelAt);
            record.text = text.mid(piece.begin, piece.end - piece.begin);
            const QStringList parts = record.text.split(QLatin1Char('\n'));
            for (qsizetype i = 0; i < parts.size(); ++i)
                record.lines.push_back({record.line + static_cast<int>(i), parts[i].trimmed()});
            pack.records.push_back(std::move(record));
        }
        scan.packs.push_back(std::move(pack));
    }
    return scan;
}

const std::vector<QString>& gameKeys() {
    static const std::vector<QString> keys = {
        QStringLiteral("other_letters="), QStringLiteral("image="),          QStringLiteral("wiki="),
        QStringLiteral("wikipedia="),     QStringLiteral("copyright_photo"), QStringLiteral("riddle="),
        QStringLiteral("continent="),     QStringLiteral("area="),           QStringLiteral("pop="),
        QStringLiteral("gdp="),           QStringLiteral("country="),        QStringLiteral("timezone="),
        QStringLiteral("price="),         QStringLiteral("coordinates="),    QStringLiteral("facts="),
        QStringLiteral("established="),   QStringLiteral("stadium="),        QStringLiteral("titles="),
        QStringLiteral("players="),       QStringLiteral("manager="),        QStringLiteral("coach="),
        QStringLiteral("director="),      QStringLiteral("production="),     QStringLiteral("firstshow="),
        QStringLiteral("actors="),        QStringLiteral("story="),          QStringLiteral("sound="),
        QStringLiteral("type="),          QStringLiteral("info="),           QStringLiteral("youtube="),
    };
    return keys;
}

QString keyOfLine(const QString& trimmedLine) {
    for (const QString& key : gameKeys()) {
        if (trimmedLine.startsWith(key))
            return key;
    }
    return {};
}

} // namespace tarvolin::levels
