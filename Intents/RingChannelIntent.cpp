#include "Intents/RingChannelIntent.h"

#include "Alarms/RingwellAlarmError.h"

namespace ringwell {
namespace {

Awaitable<FireEvent> ring(RingChannelIntent intent, AppContext& ctx) {
    const std::optional<Channel> channel = ctx.store.channel(intent.channel);
    if (!channel)
        throw RingwellAlarmError::channelNotFound();
    co_return co_await ctx.scheduler.fire(*channel, intent.payload(ctx.clock.now()),
                                          RingKind::live);
}

} // namespace

NotificationInfo RingChannelIntent::payload(Date now) const {
    NotificationInfo info;
    info.title = notificationTitle.value_or("");
    info.subtitle = notificationSubtitle.value_or("");
    info.body = notificationBody.value_or("");
    info.date = receivedAt.value_or(now);
    return info;
}

Awaitable<FireEvent> RingChannelIntent::perform(AppContext& ctx) const {
    return ring(*this, ctx);
}

} // namespace ringwell
