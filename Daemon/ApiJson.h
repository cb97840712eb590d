#pragma once

#include "Core/ActivityStats.h"
#include "Core/JsonFwd.h"
#include "Core/RulePreview.h"
#include "Model/FireEvent.h"
#include "Model/RingwellStore.h"

namespace ringwell {

// JSON forms the API adds to the records' own.

// The channel's own form with every escalation header value masked: the API
// never gives a secret back (an update that sends the mask keeps the value).
json::Json channelForApi(const Channel& channel);

// The event's own form followed by "label" and "icon", the outcome's shared
// display mapping.
json::Json eventWithLabel(const FireEvent& event);

// {"received", "rang", "days": [{"start", "received", "rang"}], "topApps",
//  "topChannels", "outcomes": [{"name", "count"}]}
json::Json toJson(const ActivityStats& stats);

// The statistics of the last seven days of the store's log.
ActivityStats weekStatistics(const RingwellStore& store, Date now, const Calendar& calendar);

// {"id", "notification", "verdict": {"kind", "by"?, "byName"?}, "matchesRule",
//  "checks": [...]} with the entry's check-by-check explanation, matched within
// `budget`.
json::Json toJson(const PreviewEntry& entry, const ChannelRule& rule, const RingwellStore& store,
                  const Calendar& calendar, MatchBudget& budget);

} // namespace ringwell
