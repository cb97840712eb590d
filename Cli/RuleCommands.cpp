#include "Cli/RuleCommands.h"

#include "Cli/RuleTool.h"
#include "Cli/SiblingProgram.h"

namespace ringwell::cli {
namespace {

// Rules are checked by ringwell-rules, which links ICU's regular expressions
// and calendar; `ringwell` itself stays free of ICU so that sends start fast.
int runTool(std::string_view command, std::string_view tool, std::span<const std::string> args,
            CommandContext& context) {
    const std::string leading[] = {std::string(tool)};
    return execSibling(context, command, "ringwell-rules", leading, args);
}

int runRuleExplain(std::span<const std::string> args, CommandContext& context) {
    return runTool("rule explain", ruleExplainTool, args, context);
}

int runRuleDescribe(std::span<const std::string> args, CommandContext& context) {
    return runTool("rule describe", ruleDescribeTool, args, context);
}

int runRuleTemplates(std::span<const std::string> args, CommandContext& context) {
    return runTool("templates", templatesTool, args, context);
}

} // namespace

const Command ruleExplainCommand{"rule explain",
                                 "Check a rule against one notification, condition by condition",
                                 R"(Usage: ringwell rule explain --rule JSON [options]

Evaluates a channel rule against one notification and explains every
condition. Nothing is sent to the daemon.

Options:
  --rule JSON             the rule in its JSON form, or @FILE to read it from
                          a file
  --app TEXT              the notification's app
  --sender TEXT           its sender
  --title TEXT            its title
  --subtitle TEXT         its subtitle
  --body TEXT             its body
  --time-sensitive TEXT   "yes", "true" or "1" when time-sensitive
  --date ISO8601          when it arrived, e.g. 2025-01-02T03:04:05Z
                          (default: now)
  --history FILE          earlier notifications, a JSON array of notifications
                          ({"app","sender","title","subtitle","body","date",
                          "isTimeSensitive"}), for the repeated condition
  --json                  print {"matches": ..., "checks": [...]}

Active hours are judged in the local time zone (TZ is honoured).
Exit status: 0 the rule matches, 1 it does not, 2 bad input.
)",
                                 runRuleExplain};

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
                                  runRuleDescribe};

const Command templatesCommand{"templates", "List the ready-made rules for new channels",
                               R"(Usage: ringwell templates [--json]

Lists the eight ready-made rules in menu order, each with its id, title,
subtitle, symbol, rule and the condition still to fill in.

Options:
  --json   print the templates as a JSON array

Exit status: 0 success, 2 bad arguments.
)",
                               runRuleTemplates};

} // namespace ringwell::cli
