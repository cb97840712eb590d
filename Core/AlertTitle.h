#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace ringwell {

// The title an alarm rings with. Characters are user-perceived characters, so
// a cut never splits an emoji sequence or a letter from its combining marks.
namespace AlertTitle {

// The longest title an alarm carries, ellipsis included.
inline constexpr std::size_t limit = 40;

// The prefix followed by the notification's title and body joined with ": "
// (each with its white space collapsed, empty ones dropped) when the channel
// shows notification text and any remains; otherwise the prefix followed by
// the channel name. Cut to `limit` characters.
std::string make(std::string_view channelName, const std::optional<std::string>& title,
                 const std::optional<std::string>& body, bool showNotificationText,
                 std::string_view prefix);

// The text unchanged when it has at most `limit` characters; otherwise its
// first `limit` - 1 characters followed by "…". A limit of 0 leaves nothing.
std::string truncate(std::string_view text, std::size_t limit);

} // namespace AlertTitle
} // namespace ringwell
