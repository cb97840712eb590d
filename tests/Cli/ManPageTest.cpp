#include "Cli/ManPage.h"

#include <gtest/gtest.h>

namespace ringwell::cli {
namespace {

int noop(std::span<const std::string>, CommandContext&) {
    return 0;
}

// Help texts are shown as they are: nothing in them may read as a roff
// request or escape.
TEST(ManPageTest, HelpTextsAreEscapedAndEveryCommandHasItsSection) {
    EXPECT_EQ(roffEscaped(".hidden\n'quoted\na\\b --json"),
              "\\&.hidden\n\\&'quoted\na\\eb \\-\\-json");

    const Command first{"alarm stop", "Stop an alarm", "Usage: ringwell alarm stop ID\n.x\n", noop};
    const Command second{"stop-all", "Stop every alarm", "Usage: ringwell stop-all\n", noop};
    const Command* const commands[] = {&first, &second};
    const std::string page = manPage(commands, "1.2.3");

    EXPECT_EQ(page.rfind(".TH RINGWELL 1 \"\" \"ringwell 1.2.3\"", 0), 0u);
    EXPECT_NE(page.find(".SS \"alarm stop\"\nStop an alarm.\n.PP\n.nf\n"
                        "Usage: ringwell alarm stop ID\n\\&.x\n.fi\n"),
              std::string::npos);
    EXPECT_NE(page.find(".SS \"stop\\-all\"\n"), std::string::npos);
}

} // namespace
} // namespace ringwell::cli
