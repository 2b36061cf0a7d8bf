// Rules for the texts that players send: display names, passwords, messages, settings records.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tarvolin::logic {

// Number of code points when s is valid UTF-8, otherwise nullopt.
std::optional<std::size_t> utf8Length(std::string_view s);

// A name of 2 to 32 characters, sent and once normalised, without blanks at either end and without
// control, invisible or direction-changing characters (format characters, default-ignorables such as the
// joiners and Hangul fillers, a variation selector that follows no character), unassigned or private-use
// ones. Returns a message when the name is refused.
std::optional<std::string> displayNameProblem(std::string_view name);
// The form a name is kept and shown in: NFKC (full-width letters, ligatures and Arabic presentation forms
// become the plain characters). name must be valid UTF-8.
std::string displayNameForm(std::string_view name);
// The key under which a name is unique and found: NFKC case-folded, without default-ignorable characters
// and tatweel, each run of blanks one space, none at the ends. Names that look alike share it.
std::string nameKey(std::string_view name);
// 8 to 128 bytes of UTF-8.
std::optional<std::string> passwordProblem(std::string_view password);
// Up to maxChars characters of UTF-8 without control characters other than newline.
std::optional<std::string> messageProblem(std::string_view message, std::size_t maxChars);

using SettingsItems = std::vector<std::pair<std::string, std::string>>;
// Reads "key=value" lines; blank lines and lines starting with '#' are skipped.
// Throws std::invalid_argument naming the line when a line is malformed or holds ',' or a second '='.
SettingsItems parseSettingsFile(std::string_view text);
// "key=value" items joined by commas.
std::string settingsRecord(const SettingsItems& items);

// A square SVG picture: the first letter of the name on a colour chosen by the identifier.
std::string avatarSvg(std::string_view playerId, std::string_view displayName);

} // namespace tarvolin::logic
