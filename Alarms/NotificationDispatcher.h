#pragma once

#include "Alarms/AlarmScheduler.h"
#include "Alarms/AppContext.h"
#include "Core/NotificationInfo.h"
#include "Model/Channel.h"
#include "Model/FireEvent.h"
#include "Model/RingwellStore.h"
#include "Shared/Asio.h"

#include <string_view>

namespace ringwell {

// The entry of every forwarded notification: it feeds a waiting setup test,
// ignores Ringwell's own failure notices, records why nothing rang, or rings
// the matching channel through the scheduler. Every road records exactly one
// fire event; the ringing road's event is the scheduler's.
//
// Main thread only; `ctx` must outlive the awaitables. It keeps no state of
// its own.
namespace NotificationDispatcher {

// The log category of the Send line.
inline constexpr std::string_view logCategory = "SendToRingwell";
// Ringwell's own name as its notices arrive when forwarded back.
inline constexpr std::string_view ownAppName = "Ringwell";

// Handles one Send and returns the event it recorded. Never throws for an
// alarm that could not ring: that is posted as the "Ringwell couldn't ring"
// notice (a notice the centre refuses is logged) and the scheduler's failed
// event is returned.
Awaitable<FireEvent> handle(AppContext& ctx, ShortcutInputFields fields);

// Routes one notification and returns the recorded event: `noMatch` (also for
// a channel deleted meanwhile), `skipped` for a matching disabled channel,
// `cooledDown` within the channel's per-sender cooldown, else the scheduler's
// event. Throws RingwellAlarmError when the alarm could not ring. Every event
// it records, the scheduler's included, carries `routingCutShort` when the
// routing ran out of its matching budget (timed by ctx.matchingClock).
Awaitable<FireEvent> handle(AppContext& ctx, NotificationInfo notification);
// The same, with the error returned instead of thrown.
Awaitable<FireAttempt> route(AppContext& ctx, NotificationInfo notification);

// Whether the sender of `notification` rang `channel` within the channel's
// cooldown, judged by the channel's earlier live `fired` events.
bool isCoolingDown(const Channel& channel, const NotificationInfo& notification,
                   const RingwellStore& store);

} // namespace NotificationDispatcher
} // namespace ringwell
