#include "logic/text_rules.h"
#include <cmath>
#include <cstdio>

#include <cstdint>
#include <stdexcept>

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

namespace tarvolin::logic {
namespace {

// Decodes the code point at s[i], advancing i; nullopt on malformed UTF-8.
std::optional<char32_t> next(std::string_view s, std::size_t& i) {
    auto b0 = static_cast<unsigned char>(s[i]);
    int len = b0 < 0x80 ? 1 : (b0 >> 5) == 0x6 ? 2 : (b0 >> 4) == 0xE ? 3 : (b0 >> 3) == 0x1E ? 4 : 0;
    if (len == 0 || i + static_cast<std::size_t>(len) > s.size()) {
        return std::nullopt;
    }
    char32_t cp = len == 1 ? b0 : len == 2 ? (b0 & 0x1Fu) : len == 3 ? (b0 & 0x0Fu) : (b0 & 0x07u);
    for (int k = 1; k < len; ++k) {
        auto b = static_cast<unsigned char>(s[i + static_cast<std::size_t>(k)]);
        if ((b >> 6) != 0x2) {
            return std::nullopt;
        }
        cp = (cp << 6) | (b & 0x3Fu);
    }
    static constexpr char32_t kMin[] = {0, 0, 0x80, 0x800, 0x10000};
    if (cp < kMin[len] || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) {
        return std::nullopt; // overlong form, out of range, or a surrogate
    }
    i += static_cast<std::size_t>(len);
    return cp;
}

bool isControl(char32_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x2028 || c == 0x2029;
}
bool isBlank(char32_t c) {
    return c == ' ' || c == 0xA0 || c == 0x3000 || (c >= 0x2000 && c <= 0x200B);
}

constexpr char32_t kTatweel = 0x0640;

bool isVariationSelector(char32_t c) {
    return (c >= 0xFE00 && c <= 0xFE0F) || (c >= 0xE0100 && c <= 0xE01EF) || (c >= 0x180B && c <= 0x180D) ||
           c == 0x180F;
}

// Why a character may not stand in a name at this place (after `before`, 0 at the start), or nullptr.
const char* invisibleProblem(char32_t c, char32_t before) {
    if (isControl(c)) {
        return "the display name holds a control character";
    }
    if (isVariationSelector(c)) {
        // A variation selector changes how the character before it is drawn; alone it is invisible.
        if (before == 0 || isVariationSelector(before) || u_isUWhiteSpace(static_cast<UChar32>(before))) {
            return "the display name holds a variation selector that follows no character";
        }
        return nullptr;
    }
    const auto u = static_cast<UChar32>(c);
    if (u_charType(u) == U_FORMAT_CHAR || u_hasBinaryProperty(u, UCHAR_DEFAULT_IGNORABLE_CODE_POINT) ||
        c == 0x2800) {
        return "the display name holds an invisible or direction-changing character";
    }
    const auto type = u_charType(u);
    if (type == U_UNASSIGNED || type == U_PRIVATE_USE_CHAR || type == U_SURROGATE) {
        return "the display name holds an unassigned or private-use character";
    }
    return nullptr;
}

const icu::Normalizer2& normalizer(bool caseFold) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* n = caseFold ? icu::Normalizer2::getNFKCCasefoldInstance(status)
                                         : icu::Normalizer2::getNFKCInstance(status);
    if (U_FAILURE(status) || n == nullptr) {
        throw std::runtime_error(std::string("ICU normalisation data is missing: ") + u_errorName(status));
    }
    return *n;
}

icu::UnicodeString normalized(std::string_view s, bool caseFold) {
    UErrorCode status = U_ZERO_ERROR;
    icu::UnicodeString out = normalizer(caseFold).normalize(
        icu::UnicodeString::fromUTF8(icu::StringPiece(s.data(), static_cast<int32_t>(s.size()))), status);
    if (U_FAILURE(status)) {
        throw std::runtime_error(std::string("cannot normalise a name: ") + u_errorName(status));
    }
    return out;
}

std::string toUtf8(const icu::UnicodeString& s) {
    std::string out;
    s.toUTF8String(out);
    return out;
}

std::string trim(std::string_view s) {
    std::size_t b = s.find_first_not_of(" \t\r");
    if (b == std::string_view::npos) {
        return {};
    }
    std::size_t e = s.find_last_not_of(" \t\r");
    return std::string(s.substr(b, e - b + 1));
}

std::string escapeXml(std::string_view s) {
    std::string out;
    for (char c : s) {
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        case '\'':
            out += "&apos;";
            break;
        default:
            out += c;
        }
    }
    return out;
}

} // namespace

std::optional<std::size_t> utf8Length(std::string_view s) {
    std::size_t n = 0;
    for (std::size_t i = 0; i < s.size();) {
        if (!next(s, i)) {
            return std::nullopt;
        }
        ++n;
    }
    return n;
}

std::optional<std::string> displayNameProblem(std::string_view name) {
    if (name.size() > 1024) {
        return "the display name must have 2 to 32 characters";
    }
    if (!utf8Length(name)) {
        return "the display name is not valid UTF-8";
    }
    // The characters as sent, then as they are kept: normalising can neither hide nor bring in a problem.
    for (const std::string& form : {std::string(name), displayNameForm(name)}) {
        std::size_t i = 0;
        std::size_t count = 0;
        char32_t first = 0;
        char32_t last = 0;
        while (i < form.size()) {
            char32_t c = *next(form, i);
            if (const char* why = invisibleProblem(c, last)) {
                return why;
            }
            first = count++ == 0 ? c : first;
            last = c;
        }
        if (count < 2 || count > 32) {
            return "the display name must have 2 to 32 characters";
        }
        if (isBlank(first) || isBlank(last) || u_isUWhiteSpace(static_cast<UChar32>(first)) ||
            u_isUWhiteSpace(static_cast<UChar32>(last))) {
            return "the display name begins or ends with a blank";
        }
    }
    if (*utf8Length(nameKey(name)) < 2) {
        return "the display name must have 2 to 32 characters besides tatweel";
    }
    return std::nullopt;
}

std::string displayNameForm(std::string_view name) {
    return toUtf8(normalized(name, false));
}

std::string nameKey(std::string_view name) {
    // NFKC with case folding also drops the default-ignorable characters (joiners, selectors, marks of
    // direction); tatweel only stretches a joining and goes too; blanks count as one space between words.
    const icu::UnicodeString folded = normalized(name, true);
    icu::UnicodeString key;
    bool blank = false;
    for (int32_t i = 0; i < folded.length(); i = folded.moveIndex32(i, 1)) {
        const UChar32 c = folded.char32At(i);
        if (c == static_cast<UChar32>(kTatweel)) {
            continue;
        }
        if (u_isUWhiteSpace(c)) {
            blank = !key.isEmpty();
            continue;
        }
        if (blank) {
            key.append(static_cast<UChar>(' '));
            blank = false;
        }
        key.append(c);
    }
    return toUtf8(key);
}

std::optional<std::string> passwordProblem(std::string_view password) {
    if (password.size() < 8 || password.size() > 128) {
        return "the password must have 8 to 128 bytes";
    }
    if (!utf8Length(password)) {
        return "the password is not valid UTF-8";
    }
    return std::nullopt;
}

std::optional<std::string> messageProblem(std::string_view message, std::size_t maxChars) {
    auto len = utf8Length(message);
    if (!len) {
        return "the message is not valid UTF-8";
    }
    if (*len > maxChars) {
        return "the message is longer than " + std::to_string(maxChars) + " characters";
    }
    for (std::size_t i = 0; i < message.size();) {
        char32_t c = *next(message, i);
        if (c != '\n' && isControl(c)) {
            return "the message holds a control character";
        }
    }
    return std::nullopt;
}

SettingsItems parseSettingsFile(std::string_view text) {
    SettingsItems items;
    std::size_t lineNo = 0;
    while (!text.empty()) {
        std::size_t nl = text.find('\n');
        std::string line = trim(text.substr(0, nl));
        text = nl == std::string_view::npos ? std::string_view{} : text.substr(nl + 1);
        ++lineNo;
        if (line.empty() || line[0] == '#') {
            continue;
        }
        std::size_t eq = line.find('=');
        if (eq == std::string::npos || trim(line.substr(0, eq)).empty() ||
            line.find('=', eq + 1) != std::string::npos || line.find(',') != std::string::npos ||
            line.find("<br>") != std::string::npos) {
            throw std::invalid_argument("settings line " + std::to_string(lineNo) +
                                        ": expected key=value without ',' or a second '='");
        }
        std::string key = trim(line.substr(0, eq));
        std::string value = trim(line.substr(eq + 1));
        bool replaced = false;
        for (auto& [k, v] : items) {
            if (k == key) {
                v = value;
                replaced = true;
            }
        }
        if (!replaced) {
            items.emplace_back(std::move(key), std::move(value));
        }
    }
    return items;
}

std::string settingsRecord(const SettingsItems& items) {
    std::string out;
    for (const auto& [k, v] : items) {
        if (!out.empty()) {
            out += ',';
        }
        out += k + "=" + v;
    }
    return out;
}

std::string avatarSvg(std::string_view playerId, std::string_view displayName) {
    std::uint32_t h = 2166136261u;
    for (char c : playerId) {
        h = (h ^ static_cast<unsigned char>(c)) * 16777619u;
    }
    std::string initial;
    if (!displayName.empty()) {
        std::size_t i = 0;
        if (next(displayName, i)) {
            initial = std::string(displayName.substr(0, i));
        }
    }
    // A hue from the identifier at saturation 55% and lightness 45%, written as #rrggbb: SVG readers that
    // know only the basic colour forms (such as the game's) draw it too.
    const double hue = static_cast<double>(h % 360);
    const double sat = 0.55, light = 0.45;
    const double chroma = (1.0 - std::fabs(2.0 * light - 1.0)) * sat;
    const double x = chroma * (1.0 - std::fabs(std::fmod(hue / 60.0, 2.0) - 1.0));
    const double m = light - chroma / 2.0;
    double r = 0, g = 0, b = 0;
    switch (static_cast<int>(hue / 60.0)) {
    case 0:
        r = chroma;
        g = x;
        break;
    case 1:
        r = x;
        g = chroma;
        break;
    case 2:
        g = chroma;
        b = x;
        break;
    case 3:
        g = x;
        b = chroma;
        break;
    case 4:
        r = x;
        b = chroma;
        break;
    default:
        r = chroma;
        b = x;
        break;
    }
    char colour[8];
    std::snprintf(colour, sizeof colour, "#%02x%02x%02x", static_cast<int>(std::lround((r + m) * 255)),
                  static_cast<int>(std::lround((g + m) * 255)), static_cast<int>(std::lround((b + m) * 255)));
    return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"128\" height=\"128\" viewBox=\"0 0 128 128\">"
           "<rect width=\"128\" height=\"128\" rx=\"24\" fill=\"" +
           std::string(colour) +
           "\"/>"
           "<text x=\"64\" y=\"84\" font-size=\"64\" font-family=\"sans-serif\" text-anchor=\"middle\" "
           "fill=\"#ffffff\">" +
           escapeXml(initial) + "</text></svg>";
}

} // namespace tarvolin::logic
