#include "Model/FireEvent.h"
#include "Core/Json.h"

namespace ringwell {
namespace {

struct OutcomeInfo {
    std::string_view raw;
    std::string_view label;
    std::string_view icon;
};

const OutcomeInfo& info(FireOutcome outcome) {
    static constexpr OutcomeInfo table[] = {
        {"fired", "Fired", "alarm.waves.left.and.right.fill"},
        {"coalesced", "Alarm already active", "square.stack"},
        {"cooledDown", "Cooldown", "hourglass"},
        {"skipped", "Skipped (disabled)", "bell.slash"},
        {"noMatch", "No match", "line.3.horizontal.decrease"},
        {"failed", "Failed", "exclamationmark.triangle"},
        {"setupTest", "Setup test received", "checkmark.seal"},
        {"ignored", "Ignored (Ringwell's own)", "arrow.uturn.backward"},
        {"silent", "Silent", "wifi.exclamationmark"},
    };
    static_assert(std::size(table) == std::size(FireOutcomes::allCases));
    return table[static_cast<std::size_t>(outcome)];
}

template <typename T, typename Encode>
void putOptional(json::Json& out, const char* key, const std::optional<T>& value, Encode encode) {
    if (value)
        out[key] = encode(*value);
}

const auto same = [](const auto& value) { return json::Json(value); };

} // namespace

std::string_view rawValue(FireOutcome outcome) {
    return info(outcome).raw;
}

std::optional<FireOutcome> fireOutcomeFromRaw(std::string_view raw) {
    for (auto outcome : FireOutcomes::allCases) {
        if (rawValue(outcome) == raw)
            return outcome;
    }
    return std::nullopt;
}

std::string_view label(FireOutcome outcome) {
    return info(outcome).label;
}
std::string_view icon(FireOutcome outcome) {
    return info(outcome).icon;
}

OutcomeIconTint iconTint(FireOutcome outcome) {
    return outcome == FireOutcome::failed ? OutcomeIconTint::red : OutcomeIconTint::secondary;
}

NotificationInfo FireEvent::notification() const {
    NotificationInfo info;
    info.app = app.value_or("");
    info.sender = sender.value_or("");
    info.title = title.value_or("");
    info.subtitle = subtitle.value_or("");
    info.body = body.value_or("");
    info.date = receivedAt;
    info.isTimeSensitive = isTimeSensitive.value_or(false);
    info.received = received;
    return info;
}

json::Json toJson(const FireEvent& event) {
    auto uuid = [](const Uuid& id) { return json::Json(id.toString()); };
    json::Json out = json::Json::object();
    out["id"] = event.id.toString();
    putOptional(out, "channelID", event.channelID, uuid);
    putOptional(out, "channelName", event.channelName, same);
    putOptional(out, "alarmID", event.alarmID, uuid);
    putOptional(out, "followUpAlarmIDs", event.followUpAlarmIDs, [&](const auto& ids) {
        json::Json list = json::Json::array();
        for (const auto& id : ids)
            list.push_back(uuid(id));
        return list;
    });
    putOptional(out, "app", event.app, same);
    putOptional(out, "sender", event.sender, same);
    putOptional(out, "title", event.title, same);
    putOptional(out, "subtitle", event.subtitle, same);
    putOptional(out, "body", event.body, same);
    putOptional(out, "isTimeSensitive", event.isTimeSensitive, same);
    putOptional(out, "received", event.received, [](const auto& fields) {
        json::Json list = json::Json::array();
        for (const auto& field : fields)
            list.push_back(toJson(field));
        return list;
    });
    out["receivedAt"] = json::dateValue(event.receivedAt);
    out["firedAt"] = json::dateValue(event.firedAt);
    out["outcome"] = std::string(rawValue(event.outcome));
    putOptional(out, "errorMessage", event.errorMessage, same);
    out["isTest"] = event.isTest;
    if (event.routingCutShort)
        out["routingCutShort"] = true;
    if (!event.escalations.empty()) {
        json::Json records = json::Json::array();
        for (const auto& record : event.escalations)
            records.push_back(toJson(record));
        out["escalations"] = std::move(records);
    }
    return out;
}

FireEvent fireEventFromJson(const json::Json& value) {
    json::requireObject(value, "event");
    FireEvent event;
    event.id = json::requireUuid(value, "id");
    event.channelID = json::optionalUuid(value, "channelID");
    event.channelName = json::optionalString(value, "channelName");
    event.alarmID = json::optionalUuid(value, "alarmID");
    if (const auto* ids = json::optionalArray(value, "followUpAlarmIDs")) {
        event.followUpAlarmIDs.emplace();
        for (const auto& id : *ids)
            event.followUpAlarmIDs->push_back(json::asUuid(id, "followUpAlarmIDs"));
    }
    event.app = json::optionalString(value, "app");
    event.sender = json::optionalString(value, "sender");
    event.title = json::optionalString(value, "title");
    event.subtitle = json::optionalString(value, "subtitle");
    event.body = json::optionalString(value, "body");
    event.isTimeSensitive = json::optionalBool(value, "isTimeSensitive");
    if (const auto* fields = json::optionalArray(value, "received")) {
        event.received.emplace();
        for (const auto& field : *fields)
            event.received->push_back(receivedFieldFromJson(field));
    }
    event.receivedAt = json::requireDate(value, "receivedAt");
    event.firedAt = json::requireDate(value, "firedAt");
    const std::string outcome = json::requireString(value, "outcome");
    auto decoded = fireOutcomeFromRaw(outcome);
    if (!decoded)
        throw json::DecodeError("\"outcome\": unknown outcome \"" + outcome + "\"");
    event.outcome = *decoded;
    event.errorMessage = json::optionalString(value, "errorMessage");
    event.isTest = json::requireBool(value, "isTest");
    event.routingCutShort = json::optionalBool(value, "routingCutShort").value_or(false);
    if (const auto* records = json::optionalArray(value, "escalations"))
        for (const auto& record : *records)
            event.escalations.push_back(escalationRecordFromJson(record));
    return event;
}

bool isForwardedNotification(const FireEvent& event) {
    return !event.isTest && event.app && !event.app->empty() &&
           event.outcome != FireOutcome::ignored && event.outcome != FireOutcome::silent;
}

} // namespace ringwell
