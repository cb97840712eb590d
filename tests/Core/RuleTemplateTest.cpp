#include "Core/RuleTemplate.h"
#include "Core/RuleMatcher.h"

#include "TestSupport/Helpers.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

// A template completed with its blank: calls-from rings for an incoming call
// from that sender only, never for a missed one.
TEST(RuleTemplateTest, CallsFromRingsForTheirIncomingCallOnly) {
    auto utc = testing::calendarIn("UTC");
    auto rule = RuleTemplate::find("calls-from")->rule;
    rule.senders = {"Mom"};
    NotificationInfo call;
    call.app = "Phone";
    call.title = "Mom";
    EXPECT_TRUE(RuleMatcher::matches(rule, call, {}, utc));
    call.body = "Missed call";
    EXPECT_FALSE(RuleMatcher::matches(rule, call, {}, utc));
    call.body.clear();
    call.title = "Dad";
    EXPECT_FALSE(RuleMatcher::matches(rule, call, {}, utc));
}

} // namespace
} // namespace ringwell
