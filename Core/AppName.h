#pragma once

#include <string>
#include <string_view>

// Which app a name stands for. People type app names into rules, watches and
// the capture list, and senders give them in notifications; "mail " and "Mail"
// are the same app everywhere: blanks around a name and letter case (full
// Unicode case folding, so "STRASSE" is "Straße") never tell two apps apart.
namespace ringwell {

// The name as it is kept and shown: without the blanks around it.
std::string cleanAppName(std::string_view name);

bool isSameApp(std::string_view a, std::string_view b);

// Equal for two names exactly when they are the same app: the key of maps
// that hold something per app.
std::string appKey(std::string_view name);

} // namespace ringwell
