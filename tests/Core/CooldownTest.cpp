#include "Core/Cooldown.h"

#include "TestSupport/Helpers.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

using testing::at;

class CooldownTest : public ::testing::Test {
protected:
    bool activeAfter(std::int64_t seconds, const char* from, double secondsSinceFiring,
                     const char* firedFor = "alice") {
        return Cooldown::isActive(seconds, from, now,
                                  {{firedFor, now.addingSeconds(-secondsSinceFiring)}});
    }

    Date now = at("2025-06-02T10:00:00Z");
};

TEST_F(CooldownTest, ActiveOnlyInsideThePeriodForTheWholeSenderIgnoringCase) {
    EXPECT_TRUE(activeAfter(60, "Alice", 0));
    EXPECT_TRUE(activeAfter(60, "Alice", 59));
    EXPECT_FALSE(activeAfter(60, "Alice", 60));
    EXPECT_FALSE(activeAfter(60, "Alice", -0.5)); // a firing in the future
    EXPECT_FALSE(activeAfter(0, "Alice", 0));
    EXPECT_FALSE(activeAfter(-60, "Alice", 1));
    EXPECT_TRUE(activeAfter(60, "Élodie", 30, "éLODIE"));
    EXPECT_FALSE(activeAfter(60, "Ali", 30, "Alice"));
}

TEST_F(CooldownTest, AnyRecentFiringOfTheSenderCounts) {
    std::vector<Cooldown::Firing> firings = {
        {"Bob", now.addingSeconds(-5)},
        {"Alice", now.addingSeconds(-500)},
        {"alice", now.addingSeconds(-20)},
    };
    EXPECT_TRUE(Cooldown::isActive(60, "Alice", now, firings));
    EXPECT_FALSE(Cooldown::isActive(10, "Alice", now, firings));
    EXPECT_FALSE(Cooldown::isActive(60, "Carol", now, firings));
}

} // namespace
} // namespace ringwell
