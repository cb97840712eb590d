#include "Shared/RingwellAlarmMetadata.h"
#include "Core/Json.h"

namespace ringwell {

json::Json toJson(const RingwellAlarmMetadata& metadata) {
    return json::Json{{"channelID", metadata.channelID.toString()},
                      {"channelName", metadata.channelName},
                      {"app", metadata.app},
                      {"title", metadata.title},
                      {"subtitle", metadata.subtitle},
                      {"body", metadata.body}};
}

RingwellAlarmMetadata alarmMetadataFromJson(const json::Json& value) {
    json::requireObject(value, "metadata");
    return {json::requireUuid(value, "channelID"),  json::requireString(value, "channelName"),
            json::requireString(value, "app"),      json::requireString(value, "title"),
            json::requireString(value, "subtitle"), json::requireString(value, "body")};
}

} // namespace ringwell
