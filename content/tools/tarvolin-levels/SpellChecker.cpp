#include "SpellChecker.h"

#include <QFile>
#include <QFileInfo>

#include <hunspell.hxx>
#include <iconv.h>

#include <cerrno>
#include <optional>
#include <string>

namespace tarvolin::levels {

namespace {

bool isUtf8(const QString& encoding) {
    const QString e = encoding.toUpper().remove(QLatin1Char('-'));
    return e == QLatin1String("UTF8");
}

// The word in the dictionary's encoding; nothing when the encoding has no place for one of its letters.
std::optional<std::string> encode(const QString& word, const QString& encoding) {
    const QByteArray utf8 = word.toUtf8();
    if (isUtf8(encoding))
        return utf8.toStdString();
    iconv_t cd = iconv_open(encoding.toLatin1().constData(), "UTF-8");
    if (cd == reinterpret_cast<iconv_t>(-1))
        return std::nullopt;
    std::string out(static_cast<size_t>(utf8.size()) * 4 + 4, '\0');
    char* in = const_cast<char*>(utf8.constData());
    size_t inLeft = static_cast<size_t>(utf8.size());
    char* outPtr = out.data();
    size_t outLeft = out.size();
    const size_t result = iconv(cd, &in, &inLeft, &outPtr, &outLeft);
    iconv_close(cd);
    if (result == static_cast<size_t>(-1) || result > 0) // failed, or replaced a letter it could not hold
        return std::nullopt;
    out.resize(out.size() - outLeft);
    return out;
}

} // namespace

std::unique_ptr<SpellChecker> SpellChecker::open(const QString& path, QString* error) {
    QString stem = path;
    if (stem.endsWith(QLatin1String(".dic")) || stem.endsWith(QLatin1String(".aff")))
        stem.chop(4);
    const QString aff = stem + QLatin1String(".aff");
    const QString dic = stem + QLatin1String(".dic");
    for (const QString& file : {aff, dic}) {
        if (!QFileInfo(file).isReadable()) {
            if (error)
                *error =
                    QStringLiteral("cannot read the dictionary file %1 (Debian: apt-get install hunspell-ar)")
                        .arg(file);
            return nullptr;
        }
    }
    std::unique_ptr<SpellChecker> checker(new SpellChecker);
    checker->m_hunspell =
        std::make_unique<Hunspell>(QFile::encodeName(aff).constData(), QFile::encodeName(dic).constData());
    checker->m_encoding = QString::fromStdString(checker->m_hunspell->get_dict_encoding());
    if (checker->m_encoding.isEmpty())
        checker->m_encoding = QStringLiteral("ISO8859-1"); // hunspell's own default without a SET line
    return checker;
}

SpellChecker::~SpellChecker() = default;

bool SpellChecker::knows(const QString& word) const {
    const std::optional<std::string> encoded = encode(word, m_encoding);
    return encoded && m_hunspell->spell(*encoded);
}

} // namespace tarvolin::levels
