#pragma once

#include "Alarms/NoticeCenter.h"
#include "Shared/Asio.h"

#include <optional>
#include <string>
#include <string_view>

namespace ringwell {

// The notice that tells the person an alarm could not ring.
namespace RingwellNotifications {

inline constexpr std::string_view failureTitle = "Ringwell couldn't ring";
// Every failure notice groups under this thread.
inline constexpr std::string_view failureThread = "ringwell-failure";
// Fixed, so that a newer failure notice replaces one still shown.
inline constexpr std::string_view failureIdentifier = "ring-failed";

// A click on the notice opens the web app.
inline constexpr std::string_view openAction = "default";
inline constexpr std::string_view openLabel = "Open Ringwell";

// "Ringwell couldn't ring", followed by a space and the channel name when one
// is given; the failure message as the body; "Open Ringwell" as the click.
NoticeRequest failureNotice(std::string_view message,
                            const std::optional<std::string>& channelName);

// Posts the failure notice. Throws what the centre throws when it refuses the
// notice. Main thread only; `center` must outlive the awaitable.
Awaitable<void> postFailure(NoticeCenter& center, std::string message,
                            std::optional<std::string> channelName);

} // namespace RingwellNotifications
} // namespace ringwell
