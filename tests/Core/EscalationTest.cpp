#include "Core/Escalation.h"
#include "Core/Json.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

std::vector<EscalationStep> decode(const char* text) {
    auto parsed = json::parse(text);
    EXPECT_TRUE(parsed.ok());
    return escalationFromJson(&parsed.value());
}

EscalationStep webhook(std::int64_t after, std::string url) {
    EscalationStep step;
    step.afterSeconds = after;
    step.action = EscalationAction::webhook;
    step.url = std::move(url);
    return step;
}

TEST(EscalationTest, JsonKeepsHeaderOrderAndAbsentOrNullMeanNoSteps) {
    auto steps = decode(R"([{"afterSeconds":0,"action":"louder"},
        {"afterSeconds":60,"action":"webhook","url":"https://ntfy.example.org/t",
         "headers":{"Title":"{{channel}}","Authorization":"Bearer x"},"body":"{{title}}"}])");
    ASSERT_EQ(steps.size(), 2u);
    EXPECT_EQ(steps[1].headers[0].first, "Title"); // the order given is kept
    EXPECT_TRUE(escalationFromJson(nullptr).empty());
    json::Json null;
    EXPECT_TRUE(escalationFromJson(&null).empty());
    EXPECT_THROW(decode(R"([{"afterSeconds":1,"action":"shout"}])"), json::DecodeError);
    EXPECT_THROW(decode(R"([{"afterSeconds":1,"action":"webhook","headers":{"A":1}}])"),
                 json::DecodeError);
}

TEST(EscalationTest, LimitsNameEveryProblemByStep) {
    EXPECT_TRUE(
        EscalationLimits::problems({webhook(0, "http://homeassistant.local:8123/api/webhook/x"),
                                    webhook(0, "https://[::1]/")})
            .empty());
    EscalationStep louderWithUrl = webhook(30, "http://x");
    louderWithUrl.action = EscalationAction::louder;
    EscalationStep badHeaders = webhook(10, "ftp://host/");
    badHeaders.headers = {{"Bad Name", "v"}, {"X", "a\r\nInjected: 1"}, {"x", "again"}};
    auto problems = EscalationLimits::problems(
        {louderWithUrl, badHeaders, webhook(86401, "http://user:pw@host/")});
    ASSERT_EQ(problems.size(), 8u) << ::testing::PrintToString(problems);
    EXPECT_EQ(problems[0], "Step 1: only a webhook step takes a URL, headers or a body.");
    EXPECT_EQ(problems[1],
              "Step 2: it comes after step 1, so it cannot be due earlier (10 s < 30 s).");
    EXPECT_NE(problems[2].find("http:// or https://"), std::string::npos);
    EXPECT_NE(problems[3].find("\"Bad Name\" is not a header name"), std::string::npos);
    EXPECT_NE(problems[4].find("must be on one line"), std::string::npos);
    EXPECT_NE(problems[5].find("given twice"), std::string::npos);
    EXPECT_NE(problems[6].find("from 0 to 86400"), std::string::npos);
    EXPECT_NE(problems[7].find("no user name or password"), std::string::npos);
    EXPECT_EQ(
        EscalationLimits::problems(std::vector<EscalationStep>(11, webhook(0, "http://h"))).front(),
        "An escalation can have at most 10 steps; this one has 11.");
}

TEST(EscalationTest, UrlsSplitIntoHostPortAndTarget) {
    EXPECT_EQ(parseWebhookUrl("https://ntfy.example.org/partner?x=1#f"),
              (WebhookUrl{true, "ntfy.example.org", "443", "/partner?x=1"}));
    EXPECT_EQ(parseWebhookUrl("http://[::1]:8123"), (WebhookUrl{false, "::1", "8123", "/"}));
    EXPECT_FALSE(parseWebhookUrl("http://host:99999/"));
    EXPECT_FALSE(parseWebhookUrl("http:///path"));
    EXPECT_FALSE(parseWebhookUrl("http://host/a b"));
}

TEST(EscalationTest, BodiesEscapeValuesInJsonAndKeepThemInText) {
    EscalationBody::Values values{"Say \"hi\"\n", "Prod", Date::fromUnixSeconds(1767225600),
                                  "http://127.0.0.1:7383/history/E"};
    auto json = EscalationBody::render(EscalationBody::defaultTemplate, values);
    EXPECT_EQ(json.contentType, "application/json");
    EXPECT_EQ(json.text,
              R"({"title":"Say \"hi\"\n","channel":"Prod","time":"2026-01-01T00:00:00Z",)"
              R"("stopLink":"http://127.0.0.1:7383/history/E"})");
    auto text = EscalationBody::render("{{channel}} rings: {{title}} {{unknown}}", values);
    EXPECT_EQ(text.contentType, "text/plain; charset=utf-8");
    EXPECT_EQ(text.text, "Prod rings: Say \"hi\"\n {{unknown}}");
    EXPECT_EQ(EscalationBody::renderHeader("{{title}}!", values), "Say \"hi\" !");
}

TEST(EscalationTest, MaskedHeadersComeBackFromTheStoredSteps) {
    EscalationStep stored = webhook(0, "https://a/");
    stored.headers = {{"Authorization", "Bearer secret"}};
    EscalationStep other = webhook(5, "https://b/");
    other.headers = {{"Token", "t2"}};
    auto sent = EscalationSecrets::masked({other, stored}); // reordered in the editor
    EXPECT_EQ(sent[1].headers[0].second, "••••");
    EXPECT_EQ(EscalationSecrets::restore(sent, {stored, other}), std::nullopt);
    EXPECT_EQ(sent[0].headers[0].second, "t2");
    EXPECT_EQ(sent[1].headers[0].second, "Bearer secret");

    auto unknown = EscalationSecrets::masked({stored});
    unknown[0].headers[0].first = "X-New";
    EXPECT_EQ(EscalationSecrets::restore(unknown, {other}), "X-New");
}

TEST(EscalationTest, StepsFallDueFromTheStartOfRinging) {
    std::vector<EscalationStep> steps{webhook(0, ""), webhook(60, ""), webhook(60, ""),
                                      webhook(300, "")};
    Date start{1000};
    EXPECT_EQ(EscalationSchedule::dueCount(steps, start, 0, Date{1000}), 1u);
    EXPECT_EQ(EscalationSchedule::dueCount(steps, start, 1, Date{1059}), 0u);
    EXPECT_EQ(EscalationSchedule::dueCount(steps, start, 1, Date{1060}), 2u);
    EXPECT_EQ(EscalationSchedule::nextDue(steps, start, 3), Date{1300});
    EXPECT_EQ(EscalationSchedule::nextDue(steps, start, 4), std::nullopt);
}

} // namespace
} // namespace ringwell
