#include "Core/Escalation.h"

#include "Core/Iso8601.h"
#include "Core/Json.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace ringwell {
namespace {

constexpr std::array<std::pair<EscalationAction, std::string_view>, 3> actionNames{{
    {EscalationAction::louder, "louder"},
    {EscalationAction::webhook, "webhook"},
    {EscalationAction::notice, "notice"},
}};

EscalationAction actionFromJson(const json::Json& object) {
    std::string raw = json::requireString(object, "action");
    auto action = escalationActionFromRaw(raw);
    if (!action)
        throw json::DecodeError("\"action\": unknown action \"" + raw +
                                "\" (louder, webhook or notice)");
    return *action;
}

void replaceAll(std::string& text, std::string_view from, std::string_view to) {
    for (std::size_t at = text.find(from); at != std::string::npos;
         at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

std::string substitute(std::string text, const EscalationBody::Values& values) {
    // {{time}} first is harmless: no replacement text is re-scanned.
    replaceAll(text, "{{title}}", values.title);
    replaceAll(text, "{{channel}}", values.channel);
    replaceAll(text, "{{time}}", formatIso8601(values.time));
    replaceAll(text, "{{stopLink}}", values.stopLink);
    return text;
}

void substituteStrings(json::Json& value, const EscalationBody::Values& values) {
    if (value.is_string())
        value = substitute(value.get<std::string>(), values);
    else if (value.is_structured())
        for (auto& element : value)
            substituteStrings(element, values);
}

// RFC 9110 token characters: what a header name may consist of.
bool isTokenCharacter(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) ||
           std::string_view("!#$%&'*+-.^_`|~").find(c) != std::string_view::npos;
}

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

} // namespace

std::string_view rawValue(EscalationAction action) {
    for (const auto& [candidate, name] : actionNames)
        if (candidate == action)
            return name;
    return "notice";
}

std::optional<EscalationAction> escalationActionFromRaw(std::string_view raw) {
    for (const auto& [action, name] : actionNames)
        if (name == raw)
            return action;
    return std::nullopt;
}

json::Json toJson(const EscalationStep& step) {
    json::Json out{{"afterSeconds", step.afterSeconds}, {"action", rawValue(step.action)}};
    if (step.action != EscalationAction::webhook)
        return out;
    out["url"] = step.url;
    json::Json headers = json::Json::object();
    for (const auto& [name, value] : step.headers)
        headers[name] = value;
    out["headers"] = std::move(headers);
    if (step.body)
        out["body"] = *step.body;
    return out;
}

json::Json toJson(const std::vector<EscalationStep>& steps) {
    json::Json out = json::Json::array();
    for (const auto& step : steps)
        out.push_back(toJson(step));
    return out;
}

std::vector<EscalationStep> escalationFromJson(const json::Json* value) {
    std::vector<EscalationStep> steps;
    if (!value || value->is_null())
        return steps;
    if (!value->is_array())
        throw json::DecodeError("\"escalation\" must be a list of steps");
    for (const auto& element : *value) {
        json::requireObject(element, "escalation step");
        EscalationStep step;
        step.afterSeconds = json::requireInt(element, "afterSeconds");
        step.action = actionFromJson(element);
        step.url = json::optionalString(element, "url").value_or("");
        if (const auto* headers = json::member(element, "headers")) {
            if (!headers->is_object())
                throw json::DecodeError("\"headers\" must be an object of strings");
            for (const auto& [name, text] : headers->items()) {
                if (!text.is_string())
                    throw json::DecodeError("header \"" + name + "\" must be a string");
                step.headers.emplace_back(name, text.get<std::string>());
            }
        }
        step.body = json::optionalString(element, "body");
        steps.push_back(std::move(step));
    }
    return steps;
}

json::Json toJson(const EscalationRecord& record) {
    return json::Json{{"step", record.step},
                      {"action", rawValue(record.action)},
                      {"at", json::dateValue(record.at)},
                      {"ok", record.ok},
                      {"detail", record.detail}};
}

EscalationRecord escalationRecordFromJson(const json::Json& value) {
    json::requireObject(value, "escalation record");
    return EscalationRecord{json::requireInt(value, "step"), actionFromJson(value),
                            json::requireDate(value, "at"), json::requireBool(value, "ok"),
                            json::optionalString(value, "detail").value_or("")};
}

std::optional<WebhookUrl> parseWebhookUrl(std::string_view text) {
    WebhookUrl url;
    std::string_view rest;
    if (text.starts_with("http://")) {
        rest = text.substr(7);
    } else if (text.starts_with("https://")) {
        url.https = true;
        rest = text.substr(8);
    } else {
        return std::nullopt;
    }
    const std::size_t pathStart = rest.find_first_of("/?#");
    std::string_view authority = rest.substr(0, pathStart);
    std::string_view target = pathStart == std::string_view::npos ? "" : rest.substr(pathStart);
    if (auto fragment = target.find('#'); fragment != std::string_view::npos)
        target = target.substr(0, fragment);
    if (authority.find('@') != std::string_view::npos)
        return std::nullopt; // credentials belong in a header, where they are kept secret
    std::string_view port;
    if (authority.starts_with("[")) {
        const auto close = authority.find(']');
        if (close == std::string_view::npos)
            return std::nullopt;
        url.host = std::string(authority.substr(1, close - 1));
        std::string_view after = authority.substr(close + 1);
        if (!after.empty() && !after.starts_with(":"))
            return std::nullopt;
        port = after.empty() ? "" : after.substr(1);
    } else {
        const auto colon = authority.find(':');
        url.host = std::string(authority.substr(0, colon));
        port = colon == std::string_view::npos ? "" : authority.substr(colon + 1);
    }
    if (url.host.empty() || std::any_of(url.host.begin(), url.host.end(), [](unsigned char c) {
            return c <= ' ' || c == '/' || c == '\\';
        }))
        return std::nullopt;
    if (!port.empty()) {
        if (port.size() > 5 ||
            !std::all_of(port.begin(), port.end(), [](unsigned char c) { return std::isdigit(c); }))
            return std::nullopt;
        const int number = std::stoi(std::string(port));
        if (number < 1 || number > 65535)
            return std::nullopt;
    }
    url.port = port.empty() ? (url.https ? "443" : "80") : std::string(port);
    url.target = target.empty() ? "/" : (target.starts_with("?") ? "/" : "") + std::string(target);
    if (std::any_of(url.target.begin(), url.target.end(),
                    [](unsigned char c) { return c <= ' ' || c == 0x7f; }))
        return std::nullopt;
    return url;
}

namespace EscalationLimits {
namespace {

// What is wrong with one header of a webhook step; `seen` holds the step's
// earlier header names, lowered.
void addHeaderProblems(const std::string& name, const std::string& header, const std::string& value,
                       std::vector<std::string>& seen, std::vector<std::string>& found) {
    if (header.empty() || !std::all_of(header.begin(), header.end(), isTokenCharacter))
        found.push_back(name + "\"" + header + "\" is not a header name.");
    else if (std::find(seen.begin(), seen.end(), lowered(header)) != seen.end())
        found.push_back(name + "the header \"" + header + "\" is given twice.");
    else if (lowered(header) == "host" || lowered(header) == "content-length")
        found.push_back(name + "the header \"" + header + "\" is set by Ringwell.");
    seen.push_back(lowered(header));
    if (value.find_first_of("\r\n") != std::string::npos)
        found.push_back(name + "the value of \"" + header + "\" must be on one line.");
}

} // namespace

std::vector<std::string> problems(const std::vector<EscalationStep>& steps) {
    std::vector<std::string> found;
    if (steps.size() > maxSteps)
        found.push_back("An escalation can have at most " + std::to_string(maxSteps) +
                        " steps; this one has " + std::to_string(steps.size()) + ".");
    for (std::size_t index = 0; index < steps.size(); ++index) {
        const EscalationStep& step = steps[index];
        const std::string name = "Step " + std::to_string(index + 1) + ": ";
        if (step.afterSeconds < 0 || step.afterSeconds > maxAfterSeconds)
            found.push_back(name + "\"afterSeconds\" must be from 0 to " +
                            std::to_string(maxAfterSeconds) + " (one day).");
        else if (index > 0 && step.afterSeconds < steps[index - 1].afterSeconds)
            found.push_back(name + "it comes after step " + std::to_string(index) +
                            ", so it cannot be due earlier (" + std::to_string(step.afterSeconds) +
                            " s < " + std::to_string(steps[index - 1].afterSeconds) + " s).");
        if (step.action != EscalationAction::webhook) {
            if (!step.url.empty() || !step.headers.empty() || step.body)
                found.push_back(name + "only a webhook step takes a URL, headers or a body.");
            continue;
        }
        if (step.url.empty())
            found.push_back(name + "a webhook step needs a \"url\".");
        else if (!parseWebhookUrl(step.url))
            found.push_back(name + "the URL must start with http:// or https:// and name a host "
                                   "(no user name or password in it: use a header).");
        if (step.headers.size() > maxHeaders)
            found.push_back(name + "at most " + std::to_string(maxHeaders) + " headers.");
        std::vector<std::string> seen;
        for (const auto& [header, value] : step.headers)
            addHeaderProblems(name, header, value, seen, found);
        if (step.body && step.body->size() > maxBodyBytes)
            found.push_back(name + "the body is longer than " + std::to_string(maxBodyBytes) +
                            " bytes.");
    }
    return found;
}

} // namespace EscalationLimits

namespace EscalationBody {

Rendered render(std::string_view bodyTemplate, const Values& values) {
    auto parsed = json::Json::parse(bodyTemplate, nullptr, false);
    if (!parsed.is_discarded() && parsed.is_structured()) {
        substituteStrings(parsed, values);
        return {"application/json", json::encode(parsed)};
    }
    return {"text/plain; charset=utf-8", substitute(std::string(bodyTemplate), values)};
}

std::string renderHeader(std::string_view valueTemplate, const Values& values) {
    std::string text = substitute(std::string(valueTemplate), values);
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '\r' || c == '\n'; }, ' ');
    return text;
}

} // namespace EscalationBody

namespace EscalationSecrets {

std::vector<EscalationStep> masked(std::vector<EscalationStep> steps) {
    for (auto& step : steps)
        for (auto& header : step.headers)
            header.second = std::string(mask);
    return steps;
}

std::optional<std::string> restore(std::vector<EscalationStep>& steps,
                                   const std::vector<EscalationStep>& stored) {
    auto storedValue = [](const EscalationStep& step,
                          const std::string& name) -> const std::string* {
        for (const auto& [header, value] : step.headers)
            if (lowered(header) == lowered(name))
                return &value;
        return nullptr;
    };
    for (std::size_t index = 0; index < steps.size(); ++index) {
        for (auto& [name, value] : steps[index].headers) {
            if (value != mask)
                continue;
            const std::string* found = nullptr;
            for (const auto& candidate : stored)
                if (!found && candidate.url == steps[index].url)
                    found = storedValue(candidate, name);
            if (!found && index < stored.size())
                found = storedValue(stored[index], name);
            if (!found)
                return name;
            value = *found;
        }
    }
    return std::nullopt;
}

} // namespace EscalationSecrets

namespace EscalationSchedule {

std::size_t dueCount(const std::vector<EscalationStep>& steps, Date start, std::size_t next,
                     Date now) {
    std::size_t count = 0;
    while (next + count < steps.size() &&
           start.addingSeconds(static_cast<double>(steps[next + count].afterSeconds)) <= now)
        ++count;
    return count;
}

std::optional<Date> nextDue(const std::vector<EscalationStep>& steps, Date start,
                            std::size_t next) {
    if (next >= steps.size())
        return std::nullopt;
    return start.addingSeconds(static_cast<double>(steps[next].afterSeconds));
}

} // namespace EscalationSchedule

} // namespace ringwell
