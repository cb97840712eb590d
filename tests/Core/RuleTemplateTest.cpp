#include "Core/RuleTemplate.h"
#include "Core/RuleMatcher.h"

#include "TestSupport/Helpers.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

using testing::at;

// The templates ring for what their names promise: night from late evening
// until seven, repeated from the third alert within ten minutes, calls-from
// for an incoming call from the sender only.
TEST(RuleTemplateTest, TemplatesRingForWhatTheirNamesSay) {
    auto berlin = testing::calendarIn("Europe/Berlin");
    auto rings = [&](const ChannelRule& rule, const NotificationInfo& info,
                     const std::vector<NotificationInfo>& history = {}) {
        return RuleMatcher::matches(rule, info, history, berlin);
    };

    const auto& night = RuleTemplate::find("night")->rule;
    NotificationInfo late;
    late.date = at("2025-01-07T23:30:00+01:00");
    EXPECT_TRUE(rings(night, late));
    late.date = at("2025-01-07T07:00:00+01:00");
    EXPECT_FALSE(rings(night, late));

    const auto& repeated = RuleTemplate::find("repeated")->rule;
    std::vector<NotificationInfo> history;
    std::vector<bool> verdicts;
    for (int i = 0; i < 3; ++i) {
        NotificationInfo alert{"Grafana", "",          "alert " + std::to_string(i),
                               "",        "",          Date{1000.0 + 200 * i},
                               false,     std::nullopt};
        verdicts.push_back(rings(repeated, alert, history));
        history.insert(history.begin(), alert);
    }
    EXPECT_EQ(verdicts, (std::vector<bool>{false, false, true}));

    auto callsFrom = RuleTemplate::find("calls-from")->rule;
    callsFrom.senders = {"Mom"};
    NotificationInfo call;
    call.app = "Phone";
    call.title = "Mom";
    EXPECT_TRUE(rings(callsFrom, call));
    call.body = "Missed call";
    EXPECT_FALSE(rings(callsFrom, call));
    call.body.clear();
    call.title = "Dad";
    EXPECT_FALSE(rings(callsFrom, call));
}

} // namespace
} // namespace ringwell
