#include "Alarms/RingwellNotifications.h"

namespace ringwell::RingwellNotifications {

NoticeRequest failureNotice(std::string_view message,
                            const std::optional<std::string>& channelName) {
    std::string title(failureTitle);
    if (channelName)
        title += " " + *channelName;
    return {std::string(failureIdentifier),
            std::move(title),
            std::string(message),
            std::string(failureThread),
            {{std::string(openAction), std::string(openLabel)}}};
}

Awaitable<void> postFailure(NoticeCenter& center, std::string message,
                            std::optional<std::string> channelName) {
    co_await center.add(failureNotice(message, channelName));
}

} // namespace ringwell::RingwellNotifications
