#include "Core/AlertTitle.h"

#include "Core/Utf8.h"
#include "Core/Whitespace.h"

namespace ringwell::AlertTitle {
namespace {

constexpr std::string_view ellipsis = "\u2026";

// The notification's own words, or nothing when neither title nor body has any.
std::string notificationText(const std::optional<std::string>& title,
                             const std::optional<std::string>& body) {
    std::string text;
    for (const auto* part : {&title, &body}) {
        if (!*part)
            continue;
        std::string collapsed = text::collapsedWhitespace(**part);
        if (collapsed.empty())
            continue;
        if (!text.empty())
            text += ": ";
        text += collapsed;
    }
    return text;
}

} // namespace

std::string make(std::string_view channelName, const std::optional<std::string>& title,
                 const std::optional<std::string>& body, bool showNotificationText,
                 std::string_view prefix) {
    std::string text = showNotificationText ? notificationText(title, body) : std::string();
    if (text.empty())
        text = channelName;
    return truncate(std::string(prefix) + text, limit);
}

std::string truncate(std::string_view text, std::size_t limit) {
    if (text::characterCount(text) <= limit)
        return std::string(text);
    if (limit == 0)
        return std::string();
    return text::prefixCharacters(text, limit - 1) + std::string(ellipsis);
}

} // namespace ringwell::AlertTitle
