// {"rule": <channel rule>, "notification": <notification>, "history": [...]}:
// the rule decodes or fails with a DecodeError, and a decoded rule evaluates.
#include "Core/Calendar.h"
#include "Core/ChannelRule.h"
#include "Core/Json.h"
#include "Core/NotificationInfo.h"
#include "Core/RuleMatcher.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

using namespace ringwell;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Calendar calendar = *Calendar::inTimeZone("Europe/Berlin");
    auto parsed = json::parse(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!parsed || !parsed.value().is_object())
        return 0;
    const json::Json& input = parsed.value();
    try {
        ChannelRule rule = ruleFromJson(input.value("rule", json::Json::object()));
        NotificationInfo notification =
            notificationFromJson(input.value("notification", json::Json::object()));
        std::vector<NotificationInfo> history;
        for (const auto& item : input.value("history", json::Json::array()))
            history.push_back(notificationFromJson(item));
        auto evaluation = RuleMatcher::evaluate(rule, notification, history, calendar);
        (void)json::encode(toJson(evaluation));
        (void)json::encode(toJson(rule));
    } catch (const json::DecodeError&) {
    }
    return 0;
}
