#pragma once

#include "Core/JsonFwd.h"
#include "Core/Uuid.h"

#include <string>

namespace ringwell {

// The record attached to every alarm, shown by the alarm's presentation.
// `title`, `subtitle` and `body` are empty unless the channel shows the
// notification's text.
struct RingwellAlarmMetadata {
    Uuid channelID;
    std::string channelName;
    std::string app;
    std::string title;
    std::string subtitle;
    std::string body;

    bool operator==(const RingwellAlarmMetadata&) const = default;
};

json::Json toJson(const RingwellAlarmMetadata& metadata);
RingwellAlarmMetadata alarmMetadataFromJson(const json::Json& value); // throws json::DecodeError

} // namespace ringwell
