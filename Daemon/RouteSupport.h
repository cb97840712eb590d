#pragma once

#include "Alarms/RingwellAlarmError.h"
#include "Core/Calendar.h"
#include "Core/Json.h"
#include "Core/Result.h"
#include "Core/Uuid.h"
#include "Daemon/ApiRoute.h"
#include "Model/RingwellStore.h"
#include "Shared/AlarmService.h"

#include <span>
#include <string>
#include <string_view>

// What several route handlers share: reading the request and turning the
// exceptions of decoders and the alarm service into Errors, at the one place
// they meet a request (docs/errors.md).
namespace ringwell::routes {

// The request body as a JSON object; an empty body is an empty object.
Result<json::Json> bodyObject(const ApiRequest& request);

// `text` as an ID; invalid input naming `what` ("a channel ID") otherwise.
Result<Uuid> uuidArgument(const std::string& text, std::string_view what);

// A channel named by its id, or by a name that identifies one channel: the
// only one containing the text, or the only one whose whole name it is. Not
// found when none does; invalid input listing the candidates' names and IDs
// when several do (the command line's usage error), never the first of them.
Result<Channel> resolveChannel(const RingwellStore& store, const std::string& text);

// For deleting and moving: an ID or a whole name, never a part of one, which
// could name a channel the person did not mean. Not found (naming the
// channels that contain the text) or ambiguous as above.
Result<Channel> resolveChannelByWholeName(const RingwellStore& store, const std::string& text);

Error noChannelWithId(const Uuid& id);

// The fewest of an ID's first characters that name an event or an alarm
// (`ringwell events` and `ringwell alarms` show 8).
constexpr std::size_t minimumIdStart = 4;

// The position in `ids` of the one `text` names: the whole ID, or its start
// when only one ID starts so (any case). Not found when none does; invalid
// input for text that cannot start an ID, or a start several IDs share. `what`
// ("event", "alarm") names the things in messages.
Result<std::size_t> resolveIdStart(std::span<const Uuid> ids, const std::string& text,
                                   std::string_view what);

// The position in the store's events (newest first) of the event named as
// above, or by "latest", the newest.
Result<std::size_t> resolveEvent(const RingwellStore& store, const std::string& text);

// The ID of the alarm of the service named as above.
Result<Uuid> resolveAlarm(const AlarmService& service, const std::string& text);

// `calendar` as it is when `at` is absent; else pinned to the weekday and
// time `at` names ("sun 03:00", or an ISO 8601 date-time read in the
// calendar's zone), for a trace or a preview "as if at" that moment.
Result<Calendar> calendarAt(const std::optional<std::string>& at, const Calendar& calendar);

// The value a decoder that throws json::DecodeError gives, or what it threw as
// invalid input, after `context` ("\"rule\": ").
template <typename Decode>
auto decoded(Decode decode, std::string_view context = "") -> Result<decltype(decode())> {
    try {
        return decode();
    } catch (const json::DecodeError& error) {
        return Error{std::string(context) + error.what(), Error::Kind::invalidInput};
    } catch (const nlohmann::json::exception& error) {
        return Error{std::string(context) + error.what(), Error::Kind::invalidInput};
    }
}

Error errorOf(const RingwellAlarmError& error);
Error errorOf(const AlarmServiceError& error);

// Runs an operation of the alarm service, which throws when it refuses.
template <typename Operation> ApiResult alarmCall(Operation operation) {
    try {
        return operation();
    } catch (const RingwellAlarmError& error) {
        return errorOf(error);
    } catch (const AlarmServiceError& error) {
        return errorOf(error);
    }
}

} // namespace ringwell::routes
