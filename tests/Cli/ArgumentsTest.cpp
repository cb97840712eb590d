#include "Cli/Arguments.h"

#include <gtest/gtest.h>

namespace ringwell::cli {
namespace {

constexpr OptionSpec options[] = {{"rule", true}, {"json", false}};

Result<Arguments> parse(std::vector<std::string> args) {
    return parseArguments(args, options);
}

TEST(ArgumentsTest, ReadsValuesFlagsAndPositionals) {
    auto parsed = parse({"CHANNEL", "--rule", "{}", "--json", "--rule={\"a\":1}", "--", "--json"});
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed.value().value("rule"), "{\"a\":1}"); // the last one wins
    EXPECT_EQ(parsed.value().allValues("rule"), (std::vector<std::string>{"{}", "{\"a\":1}"}));
    EXPECT_TRUE(parsed.value().has("json"));
    EXPECT_EQ(parsed.value().positionals, (std::vector<std::string>{"CHANNEL", "--json"}));

    // A value may look like an option or be empty.
    auto odd = parse({"--rule", "--json", "--rule="});
    ASSERT_TRUE(odd);
    EXPECT_EQ(odd.value().value("rule"), "");
    EXPECT_FALSE(odd.value().has("json"));
}

TEST(ArgumentsTest, NamesWhatIsWrong) {
    EXPECT_EQ(parse({"--bogus"}).error().message, "unknown option --bogus");
    EXPECT_EQ(parse({"--rule"}).error().message, "option --rule needs a value");
    EXPECT_EQ(parse({"--json=yes"}).error().message, "option --json takes no value");
    // A lone dash is a positional (conventionally standard input).
    EXPECT_EQ(parse({"-"}).value().positionals, (std::vector<std::string>{"-"}));
}

} // namespace
} // namespace ringwell::cli
