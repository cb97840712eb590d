#pragma once

#include "Core/Date.h"
#include "Core/NotificationInfo.h"
#include "Model/Channel.h"
#include "Model/FireEvent.h"

namespace ringwell {

// The fire events the dispatcher and the scheduler record share one shape:
// built here from the notification, then completed by the caller.
namespace EventRecord {

// A new event for `notification`: a new id; app, sender, title, subtitle and
// body each absent when empty; its time-sensitive flag and received fields;
// `receivedAt` its date; no channel, no alarm, an empty list of follow-ups,
// no error, not a test.
FireEvent make(const NotificationInfo& notification, FireOutcome outcome, Date firedAt);

// The same, taken by `channel`: its id and its name at this moment.
FireEvent make(const NotificationInfo& notification, FireOutcome outcome, Date firedAt,
               const Channel& channel);

} // namespace EventRecord
} // namespace ringwell
