#include "Cli/RuleCommands.h"

#include "Cli/Arguments.h"
#include "Cli/CommandSupport.h"
#include "Core/Calendar.h"
#include "Core/Json.h"
#include "Core/RuleMatcher.h"
#include "Core/RuleTemplate.h"

#include <chrono>
#include <iostream>

namespace ringwell::cli {
namespace {

Date currentDate() {
    using namespace std::chrono;
    auto now = duration_cast<duration<double>>(system_clock::now().time_since_epoch());
    return Date::fromUnixSeconds(now.count());
}

// A rule given inline as JSON, or as @FILE.
Result<ChannelRule> loadRule(const std::string& argument) {
    std::string text = argument;
    if (!argument.empty() && argument.front() == '@') {
        auto contents = readFile(argument.substr(1));
        if (!contents)
            return contents.error();
        text = contents.value();
    }
    auto rule = json::decode(text, ruleFromJson);
    if (!rule)
        return Error{"--rule: " + rule.error().message};
    return rule;
}

Result<std::vector<NotificationInfo>> loadHistory(const std::string& path) {
    auto contents = readFile(path);
    if (!contents)
        return Error{"--history: " + contents.error().message};
    auto history = json::decode(contents.value(), [](const json::Json& value) {
        if (!value.is_array())
            throw json::DecodeError("expected a JSON array of notifications");
        std::vector<NotificationInfo> notifications;
        for (size_t i = 0; i < value.size(); ++i) {
            try {
                notifications.push_back(notificationFromJson(value[i]));
            } catch (const json::DecodeError& error) {
                throw json::DecodeError("entry " + std::to_string(i) + ": " + error.what());
            }
        }
        return notifications;
    });
    if (!history)
        return Error{"--history " + path + ": " + history.error().message};
    return history;
}

constexpr OptionSpec explainOptions[] = {
    {"rule", true},     {"app", true},  {"sender", true},         {"title", true},
    {"subtitle", true}, {"body", true}, {"time-sensitive", true}, {"date", true},
    {"history", true},  {"json", false}};

int runExplain(std::span<const std::string> args, CommandContext& context) {
    constexpr std::string_view name = "rule explain";
    auto parsed = parseArguments(args, explainOptions);
    if (!parsed)
        return usageError(context, name, parsed.error().message);
    const Arguments& arguments = parsed.value();
    if (!arguments.positionals.empty())
        return usageError(context, name, "unexpected argument " + arguments.positionals.front());
    auto ruleArgument = arguments.value("rule");
    if (!ruleArgument)
        return usageError(context, name, "--rule JSON is required");
    auto rule = loadRule(*ruleArgument);
    if (!rule)
        return usageError(context, name, rule.error().message);

    auto date = arguments.value("date");
    if (date && !parseIso8601(*date))
        return usageError(context, name,
                          "--date: \"" + *date +
                              "\" is not an ISO 8601 date-time such as 2025-01-02T03:04:05Z");
    std::vector<NotificationInfo> history;
    if (auto path = arguments.value("history")) {
        auto loaded = loadHistory(*path);
        if (!loaded)
            return usageError(context, name, loaded.error().message);
        history = std::move(loaded).value();
    }

    auto notification = NotificationInfo::fromShortcutInput(
        arguments.value("app"), arguments.value("sender"), arguments.value("title"),
        arguments.value("subtitle"), arguments.value("body"), date,
        arguments.value("time-sensitive"), currentDate());
    auto evaluation =
        RuleMatcher::evaluate(rule.value(), notification, history, Calendar::userDefault());

    if (arguments.has("json")) {
        context.out << json::encodePretty(toJson(evaluation)) << '\n';
    } else {
        if (evaluation.checks.empty())
            context.out << "The rule sets no conditions, so it matches every notification.\n";
        for (const auto& check : evaluation.checks) {
            context.out << (check.passed ? "passed  " : "failed  ") << rawValue(check.condition)
                        << ": " << check.detail << '\n';
        }
        context.out << "Verdict: " << (evaluation.matches() ? "matches" : "does not match") << '\n';
    }
    return evaluation.matches() ? exitSuccess : exitFailure;
}

constexpr OptionSpec describeOptions[] = {{"rule", true}, {"json", false}};

int runDescribe(std::span<const std::string> args, CommandContext& context) {
    constexpr std::string_view name = "rule describe";
    auto parsed = parseArguments(args, describeOptions);
    if (!parsed)
        return usageError(context, name, parsed.error().message);
    if (!parsed.value().positionals.empty())
        return usageError(context, name,
                          "unexpected argument " + parsed.value().positionals.front());
    auto ruleArgument = parsed.value().value("rule");
    if (!ruleArgument)
        return usageError(context, name, "--rule JSON is required");
    auto loaded = loadRule(*ruleArgument);
    if (!loaded)
        return usageError(context, name, loaded.error().message);
    const ChannelRule& rule = loaded.value();

    if (parsed.value().has("json")) {
        json::Json available = json::Json::array();
        for (auto condition : RuleConditions::available(rule)) {
            available.push_back(json::Json{{"id", RuleConditions::id(condition)},
                                           {"title", RuleConditions::title(condition)},
                                           {"symbolName", RuleConditions::symbolName(condition)},
                                           {"isList", RuleConditions::isList(condition)},
                                           {"isSet", RuleConditions::isSet(condition, rule)}});
        }
        json::Json out{{"summary", rule.summary()},
                       {"suggestedName", rule.suggestedName()},
                       {"invalidPatterns", rule.invalidPatterns()},
                       {"available", std::move(available)}};
        context.out << json::encodePretty(out) << '\n';
        return exitSuccess;
    }

    context.out << "Summary: " << rule.summary() << '\n';
    context.out << "Suggested name: " << rule.suggestedName() << '\n';
    auto invalid = rule.invalidPatterns();
    context.out << "Invalid patterns: ";
    if (invalid.empty())
        context.out << "none";
    for (size_t i = 0; i < invalid.size(); ++i)
        context.out << (i ? ", " : "") << '"' << invalid[i] << '"';
    context.out << "\nAvailable conditions:";
    for (auto condition : RuleConditions::available(rule)) {
        context.out << "\n  " << RuleConditions::id(condition) << " (\""
                    << RuleConditions::title(condition) << "\")"
                    << (RuleConditions::isSet(condition, rule) ? ", set" : "");
    }
    context.out << '\n';
    return exitSuccess;
}

constexpr OptionSpec templatesOptions[] = {{"json", false}};

int runTemplates(std::span<const std::string> args, CommandContext& context) {
    auto parsed = parseArguments(args, templatesOptions);
    if (!parsed)
        return usageError(context, "templates", parsed.error().message);
    if (!parsed.value().positionals.empty())
        return usageError(context, "templates",
                          "unexpected argument " + parsed.value().positionals.front());
    if (parsed.value().has("json")) {
        json::Json out = json::Json::array();
        for (const auto& entry : RuleTemplate::all())
            out.push_back(toJson(entry));
        context.out << json::encodePretty(out) << '\n';
        return exitSuccess;
    }
    for (const auto& entry : RuleTemplate::all()) {
        context.out << entry.id << ": " << entry.title << '\n'
                    << "  " << entry.subtitle << '\n'
                    << "  symbol: " << entry.systemImage << '\n'
                    << "  rule: " << json::encode(toJson(entry.rule)) << '\n'
                    << "  blank: " << (entry.blank ? rawValue(*entry.blank) : "none") << "\n\n";
    }
    return exitSuccess;
}

} // namespace

const Command ruleExplainCommand{"rule explain",
                                 "Check a rule against one notification, condition by condition",
                                 R"(Usage: ringwell rule explain --rule JSON [options]

Evaluates a channel rule against one notification and explains every
condition. Nothing is sent to the daemon.

Options:
  --rule JSON             the rule in its JSON form, or @FILE to read it from a file
  --app TEXT              the notification's app
  --sender TEXT           its sender
  --title TEXT            its title
  --subtitle TEXT         its subtitle
  --body TEXT             its body
  --time-sensitive TEXT   "yes", "true" or "1" for a time-sensitive notification
  --date ISO8601          when it arrived, e.g. 2025-01-02T03:04:05Z (default: now)
  --history FILE          earlier notifications, a JSON array of notifications
                          ({"app","sender","title","subtitle","body","date",
                          "isTimeSensitive"}), for the repeated condition
  --json                  print {"matches": ..., "checks": [...]}

Active hours are judged in the local time zone (TZ is honoured).
Exit status: 0 the rule matches, 1 it does not, 2 bad input.
)",
                                 runExplain};

const Command ruleDescribeCommand{"rule describe",
                                  "Show a rule's summary, automatic name and problems",
                                  R"(Usage: ringwell rule describe --rule JSON [--json]

Prints the rule's one-line summary, the name a channel with this rule takes
when its name is left blank, the patterns that are not valid regular
expressions, and the conditions that can be added to it.

Options:
  --rule JSON   the rule in its JSON form, or @FILE to read it from a file
  --json        print the same as a JSON object

Exit status: 0 success, 2 bad input.
)",
                                  runDescribe};

const Command templatesCommand{"templates", "List the ready-made rules for new channels",
                               R"(Usage: ringwell templates [--json]

Lists the eight ready-made rules in menu order, each with its id, title,
subtitle, symbol, rule and the condition still to fill in.

Options:
  --json   print the templates as a JSON array

Exit status: 0 success, 2 bad arguments.
)",
                               runTemplates};

} // namespace ringwell::cli
