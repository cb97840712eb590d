#pragma once

#include "Core/Date.h"
#include "Core/JsonFwd.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ringwell {

// What one step of an escalation does while an alarm keeps ringing unanswered.
enum class EscalationAction {
    louder,  // raises the alarm volume a step and switches to the reminder tone
    webhook, // POSTs the rendered body to a URL
    notice,  // posts a desktop notice
};
std::string_view rawValue(EscalationAction action);
std::optional<EscalationAction> escalationActionFromRaw(std::string_view raw);

// One step of a channel's escalation, due `afterSeconds` after the alarm
// started ringing. Only a webhook step uses `url`, `headers` and `body`.
// Header values are secrets (tokens, keys): they are kept with the channel and
// shown nowhere else (see EscalationSecrets).
struct EscalationStep {
    std::int64_t afterSeconds = 0;
    EscalationAction action = EscalationAction::notice;
    std::string url;
    std::vector<std::pair<std::string, std::string>> headers; // in the order given
    std::optional<std::string> body; // a template; absent: EscalationBody::defaultTemplate
    bool operator==(const EscalationStep&) const = default;
};

// What one step did, kept on the alarm's fire event: the step's number
// (1-based, in the channel's list), its action, when it ran, whether it worked
// and a line for people ("HTTP 200", "volume +15%"). Never a header value.
struct EscalationRecord {
    std::int64_t step = 0;
    EscalationAction action = EscalationAction::notice;
    Date at;
    bool ok = false;
    std::string detail;
    bool operator==(const EscalationRecord&) const = default;
};

// JSON forms. A step: {"afterSeconds", "action", and for a webhook "url",
// "headers" (an object of strings) and "body" when set}. Decoding throws
// json::DecodeError for a missing or mistyped key or an unknown action; an
// absent or null list decodes as no steps.
json::Json toJson(const EscalationStep& step);
json::Json toJson(const std::vector<EscalationStep>& steps);
std::vector<EscalationStep> escalationFromJson(const json::Json* value);
json::Json toJson(const EscalationRecord& record);
EscalationRecord escalationRecordFromJson(const json::Json& value);

// The parts of a webhook step's URL: http or https, a host, an optional port
// and the target ("/api/webhook/abc?x=1", "/" when the URL has none).
struct WebhookUrl {
    bool https = false;
    std::string host;
    std::string port; // "80" / "443" when the URL names none
    std::string target;
    bool operator==(const WebhookUrl&) const = default;
};
// None when the text is not an http(s) URL with a host.
std::optional<WebhookUrl> parseWebhookUrl(std::string_view text);

// The bounds and checks of an escalation, applied when a channel is saved.
namespace EscalationLimits {
inline constexpr std::size_t maxSteps = 10;
inline constexpr std::int64_t maxAfterSeconds = 86400;
inline constexpr std::size_t maxHeaders = 20;
inline constexpr std::size_t maxBodyBytes = 8192;
// The volume a "louder" step adds, in percent of full volume (capped at 100%).
inline constexpr int louderStepPercent = 15;

// One message per problem, naming the step ("Step 2: ..."); empty when fine.
std::vector<std::string> problems(const std::vector<EscalationStep>& steps);
} // namespace EscalationLimits

// The body a webhook step sends. Placeholders {{title}} (the alarm's title),
// {{channel}} (the channel's name), {{time}} (when the alarm started ringing,
// ISO 8601 UTC) and {{stopLink}} (the web app's address of the alarms screen)
// are replaced. A template that is JSON gets the values inside its strings,
// escaped as JSON needs, and is sent as application/json; any other template
// is sent as text/plain with the values as they are.
namespace EscalationBody {
inline constexpr std::string_view defaultTemplate =
    R"({"title":"{{title}}","channel":"{{channel}}","time":"{{time}}","stopLink":"{{stopLink}}"})";

struct Values {
    std::string title;
    std::string channel;
    Date time;
    std::string stopLink;
};
struct Rendered {
    std::string contentType;
    std::string text;
    bool operator==(const Rendered&) const = default;
};
Rendered render(std::string_view bodyTemplate, const Values& values);
// Placeholders in a header value ("Title: {{channel}}"), line breaks removed.
std::string renderHeader(std::string_view valueTemplate, const Values& values);
} // namespace EscalationBody

// Header values leave the daemon only as `mask`: in the API's channel JSON,
// never in logs, events or diagnostics. A channel sent back with a value
// still masked keeps the stored value (`restore`).
namespace EscalationSecrets {
inline constexpr std::string_view mask = "••••";
std::vector<EscalationStep> masked(std::vector<EscalationStep> steps);
// Replaces each masked header value by the stored one of the same header name
// in the stored step with the same URL, else the stored step at the same
// position. Gives the name of the first header whose value cannot be found.
std::optional<std::string> restore(std::vector<EscalationStep>& steps,
                                   const std::vector<EscalationStep>& stored);
} // namespace EscalationSecrets

// When the steps are due: step i at start + afterSeconds(i). Pure.
namespace EscalationSchedule {
// The dates of the steps from `next` on that are due at `now`, as a count.
std::size_t dueCount(const std::vector<EscalationStep>& steps, Date start, std::size_t next,
                     Date now);
// When step `next` is due; none past the last step.
std::optional<Date> nextDue(const std::vector<EscalationStep>& steps, Date start, std::size_t next);
} // namespace EscalationSchedule

} // namespace ringwell
