#pragma once

#include "Alarms/AppContext.h"
#include "Core/Date.h"
#include "Core/Uuid.h"
#include "Model/FireEvent.h"
#include "Shared/Asio.h"

#include <optional>
#include <string>
#include <string_view>

namespace ringwell {

// "Ring Ringwell Channel": rings one chosen channel at once, by hand or from
// another automation, with an optional notification text for the alarm's title.
struct RingChannelIntent {
    static constexpr std::string_view title = "Ring Ringwell Channel";

    Uuid channel; // the chosen ChannelEntity's id
    std::optional<std::string> notificationTitle;
    std::optional<std::string> notificationSubtitle;
    std::optional<std::string> notificationBody;
    std::optional<Date> receivedAt; // now when absent

    // The notification the alarm rings for: no app and no sender, the given
    // texts (empty when absent), dated `receivedAt` or `now`, not time-sensitive.
    NotificationInfo payload(Date now) const;

    // Rings the channel and returns the scheduler's event: `skipped` for a
    // disabled channel and `coalesced` for one already ringing, neither an
    // error. Throws RingwellAlarmError: `channelNotFound` (recording nothing)
    // when the channel was deleted, else the scheduler's error. The intent is
    // copied; `ctx` must outlive the awaitable.
    Awaitable<FireEvent> perform(AppContext& ctx) const;

    bool operator==(const RingChannelIntent&) const = default;
};

} // namespace ringwell
