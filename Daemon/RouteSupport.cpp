#include "Daemon/RouteSupport.h"

#include "Core/TextFolding.h"
#include "Core/TraceMoment.h"
#include "Intents/ChannelEntity.h"

#include <boost/beast/core/string.hpp>

#include <algorithm>
#include <cctype>
#include <iterator>

namespace ringwell::routes {

Result<json::Json> bodyObject(const ApiRequest& request) {
    if (request.body.empty())
        return json::Json::object();
    auto parsed = json::parse(request.body);
    if (!parsed)
        return Error{parsed.error().message, Error::Kind::invalidInput};
    if (!parsed.value().is_object())
        return Error{"the request body must be a JSON object", Error::Kind::invalidInput};
    return parsed;
}

Result<Uuid> uuidArgument(const std::string& text, std::string_view what) {
    auto id = Uuid::parse(text);
    if (!id)
        return Error{"\"" + text + "\" is not " + std::string(what), Error::Kind::invalidInput};
    return *id;
}

Error noChannelWithId(const Uuid& id) {
    return Error{"No channel has the ID " + id.toString() + ".", Error::Kind::notFound};
}

namespace {

Result<Channel> onlyOne(const RingwellStore& store, const std::vector<ChannelEntity>& matches,
                        const std::string& text) {
    if (matches.size() > 1) {
        std::string listed;
        for (const auto& entity : matches)
            listed +=
                (listed.empty() ? "" : ", ") + entity.name + " (" + entity.id.toString() + ")";
        return Error{"\"" + text + "\" matches several channels: " + listed +
                         ". Give the channel's ID, or a name only one channel has.",
                     Error::Kind::invalidInput};
    }
    return *store.channel(matches.front().id);
}

std::vector<ChannelEntity> wholeNames(std::vector<ChannelEntity> matches, const std::string& text) {
    std::vector<ChannelEntity> exact;
    std::copy_if(
        matches.begin(), matches.end(), std::back_inserter(exact),
        [&](const ChannelEntity& entity) { return text::equalsIgnoringCase(entity.name, text); });
    return exact;
}

} // namespace

Result<Channel> resolveChannel(const RingwellStore& store, const std::string& text) {
    if (auto id = Uuid::parse(text)) {
        if (auto channel = store.channel(*id))
            return *channel;
        return Error{"No channel has the ID " + text + ".", Error::Kind::notFound};
    }
    auto matches = ChannelQuery::entities(store, text);
    if (matches.empty())
        return Error{"No channel matches \"" + text + "\".", Error::Kind::notFound};
    // A whole name picks its channel among those that merely contain it, but
    // only when no other channel has that name too: picking the first of two
    // would ring one the person did not mean.
    auto exact = wholeNames(matches, text);
    return onlyOne(store, exact.empty() ? matches : exact, text);
}

Result<Channel> resolveChannelByWholeName(const RingwellStore& store, const std::string& text) {
    if (Uuid::parse(text))
        return resolveChannel(store, text);
    auto matches = ChannelQuery::entities(store, text);
    auto exact = wholeNames(matches, text);
    if (!exact.empty())
        return onlyOne(store, exact, text);
    std::string message = "No channel is named \"" + text + "\".";
    if (!matches.empty()) {
        std::string names;
        for (const auto& entity : matches)
            names += (names.empty() ? "" : ", ") + entity.name;
        message += " Give a whole name or an ID; these contain it: " + names + ".";
    }
    return Error{message, Error::Kind::notFound};
}

Result<std::size_t> resolveIdStart(std::span<const Uuid> ids, const std::string& text,
                                   std::string_view what) {
    constexpr std::size_t wholeIdLength = 36; // 8-4-4-4-12
    const bool canStartAnId = text.size() >= minimumIdStart && text.size() <= wholeIdLength &&
                              std::all_of(text.begin(), text.end(), [](char c) {
                                  return std::isxdigit(static_cast<unsigned char>(c)) || c == '-';
                              });
    const std::string thing(what);
    if (!canStartAnId)
        return Error{"\"" + text + "\" is not an " + thing +
                         " ID: give the ID or at least its first " +
                         std::to_string(minimumIdStart) + " characters.",
                     Error::Kind::invalidInput};
    std::optional<std::size_t> found;
    for (std::size_t position = 0; position < ids.size(); ++position) {
        if (!boost::beast::iequals(ids[position].toString().substr(0, text.size()), text))
            continue;
        if (found)
            return Error{"Several " + thing + "s have an ID starting with " + text +
                             ". Give more of it.",
                         Error::Kind::invalidInput};
        found = position;
    }
    if (!found)
        return Error{"No " + thing + " has " +
                         (text.size() == wholeIdLength ? "the ID " : "an ID starting with ") +
                         text + ".",
                     Error::Kind::notFound};
    return *found;
}

Result<std::size_t> resolveEvent(const RingwellStore& store, const std::string& text) {
    const auto& events = store.events();
    if (text == "latest") {
        if (events.empty())
            return Error{"The history is empty.", Error::Kind::notFound};
        return std::size_t{0};
    }
    std::vector<Uuid> ids;
    ids.reserve(events.size());
    for (const auto& event : events)
        ids.push_back(event.id);
    return resolveIdStart(ids, text, "event");
}

Result<Uuid> resolveAlarm(const AlarmService& service, const std::string& text) {
    std::vector<Uuid> ids;
    for (const auto& alarm : service.alarms())
        ids.push_back(alarm.id);
    auto position = resolveIdStart(ids, text, "alarm");
    if (!position)
        return position.error();
    return ids[position.value()];
}

Error errorOf(const RingwellAlarmError& error) {
    switch (error.kind()) {
    case RingwellAlarmError::Kind::channelNotFound:
        return Error{error.what(), Error::Kind::notFound};
    case RingwellAlarmError::Kind::notAuthorized:
        return Error{error.what(), Error::Kind::notAllowed};
    case RingwellAlarmError::Kind::tooManyAlarms:
        return Error{error.what(), Error::Kind::conflict};
    case RingwellAlarmError::Kind::schedulingFailed:
        break;
    }
    return Error{error.what(), Error::Kind::failed};
}

Error errorOf(const AlarmServiceError& error) {
    // The service refuses an operation on an alarm that is in the wrong state
    // as a conflict, like the limit of alarms.
    return Error{error.what(), error.kind() == AlarmServiceError::Kind::notFound
                                   ? Error::Kind::notFound
                                   : Error::Kind::conflict};
}

Result<Calendar> calendarAt(const std::optional<std::string>& at, const Calendar& calendar) {
    if (!at)
        return calendar;
    auto moment = TraceMoment::parse(*at, calendar);
    if (!moment)
        return Error{"\"at\": \"" + *at +
                         "\" is not a day and time such as \"sun 03:00\" or an ISO 8601 "
                         "date-time such as 2025-01-02T03:04:05Z",
                     Error::Kind::invalidInput};
    return calendar.pinnedTo(*moment);
}

} // namespace ringwell::routes
