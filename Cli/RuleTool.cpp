#include "Cli/RuleTool.h"

#include "Cli/Arguments.h"
#include "Cli/CommandSupport.h"
#include "Core/Calendar.h"
#include "Core/Iso8601.h"
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

int runRuleTool(std::span<const std::string> args, CommandContext& context) {
    if (args.empty())
        return usageError(context, "rule", "missing command");
    auto rest = args.subspan(1);
    if (args[0] == ruleExplainTool)
        return runExplain(rest, context);
    if (args[0] == ruleDescribeTool)
        return runDescribe(rest, context);
    if (args[0] == templatesTool)
        return runTemplates(rest, context);
    return usageError(context, args[0], "not a rule tool");
}

} // namespace ringwell::cli
