#include "Daemon/LanGate.h"
#include "Core/Json.h"
#include "Daemon/DeviceBook.h"
#include "Daemon/DeviceToken.h"
#include "Daemon/RateLimiter.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

using namespace std::chrono_literals;

TEST(DeviceBookTest, NamesAreUniqueIgnoringCaseAndRemovalRevokes) {
    DeviceBook book;
    ASSERT_TRUE(book.add("Pixel", DeviceToken::hash("secret"), Date{1}));
    EXPECT_EQ(book.add("pixel", DeviceToken::hash("other"), Date{2}).error().kind,
              Error::Kind::conflict);
    for (const std::string& bad :
         {std::string("  "), std::string("a/b"), std::string("t\tb"), std::string(65, 'x')})
        EXPECT_EQ(book.add(bad, "h", Date{}).error().kind, Error::Kind::invalidInput) << bad;

    ASSERT_NE(book.withTokenHash(DeviceToken::hash("secret")), nullptr);
    EXPECT_EQ(book.withTokenHash(DeviceToken::hash("secret"))->name, "Pixel");
    EXPECT_EQ(book.withTokenHash(DeviceToken::hash("secreT")), nullptr);

    // The file form keeps only the hash, and reads back the same.
    auto round = deviceBookFromJson(toJson(book));
    EXPECT_EQ(round.devices(), book.devices());
    EXPECT_EQ(toJson(book).dump().find("\"secret\""), std::string::npos);

    ASSERT_TRUE(book.remove("PIXEL"));
    EXPECT_EQ(book.withTokenHash(DeviceToken::hash("secret")), nullptr);
    EXPECT_EQ(book.remove("Pixel").error().kind, Error::Kind::notFound);
}

TEST(DeviceTokenTest, TokensAreFreshAndHashedWithSha256) {
    EXPECT_NE(DeviceToken::generate(), DeviceToken::generate());
    EXPECT_EQ(DeviceToken::generate().size(), 64u);
    EXPECT_EQ(DeviceToken::hash("abc"),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_TRUE(DeviceToken::sameSecret("abc", "abc"));
    EXPECT_FALSE(DeviceToken::sameSecret("abc", "abd"));
    EXPECT_FALSE(DeviceToken::sameSecret("abc", "abcd"));
}

TEST(RateLimiterTest, BurstThenRefillAtTheRatePerKey) {
    RateLimiter limiter(10, 50);
    const RateLimiter::Clock::time_point start{};
    for (int i = 0; i < 50; ++i)
        ASSERT_TRUE(limiter.take("a", start)) << i;
    EXPECT_FALSE(limiter.take("a", start));
    EXPECT_TRUE(limiter.take("b", start)); // another device has its own bucket
    EXPECT_FALSE(limiter.take("a", start + 99ms));
    EXPECT_TRUE(limiter.take("a", start + 100ms));
    EXPECT_FALSE(limiter.take("a", start + 100ms));
    // A long pause refills up to the burst, not beyond.
    for (int i = 0; i < 50; ++i)
        ASSERT_TRUE(limiter.take("a", start + 1h)) << i;
    EXPECT_FALSE(limiter.take("a", start + 1h));
    limiter.forget("a");
    EXPECT_TRUE(limiter.take("a", start + 1h));
}

class LanGateTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(book.add("Pixel", DeviceToken::hash("tok"), Date{})); }
    ApiRequest request(std::string method, std::string path, std::string authorization) {
        ApiRequest r;
        r.method = std::move(method);
        r.path = std::move(path);
        r.peer = "192.168.1.9:4000";
        if (!authorization.empty())
            r.headers["authorization"] = std::move(authorization);
        return r;
    }
    unsigned status(const ApiRequest& r) {
        auto verdict = LanGate::admit(r, book, limiter, now);
        if (auto* refusal = std::get_if<LanGate::Refusal>(&verdict))
            return refusal->response.status;
        return 200;
    }
    DeviceBook book;
    RateLimiter limiter{LanGate::sendsPerSecond, LanGate::burst};
    RateLimiter::Clock::time_point now{};
};

TEST_F(LanGateTest, OnlyTheSendRouteWithADeviceTokenPasses) {
    auto verdict = LanGate::admit(request("POST", "/v1/send", "bearer  tok "), book, limiter, now);
    ASSERT_TRUE(std::holds_alternative<const LanDevice*>(verdict));
    EXPECT_EQ(std::get<const LanDevice*>(verdict)->name, "Pixel");

    EXPECT_EQ(status(request("GET", "/v1/status", "Bearer tok")), 404u);
    EXPECT_EQ(status(request("GET", "/", "Bearer tok")), 404u);
    EXPECT_EQ(status(request("GET", "/v1/send", "Bearer tok")), 405u);
    EXPECT_EQ(status(request("POST", "/v1/send", "")), 401u);
    EXPECT_EQ(status(request("POST", "/v1/send", "Basic tok")), 401u);
    EXPECT_EQ(status(request("POST", "/v1/send", "Bearer wrong")), 401u);

    auto refused = LanGate::admit(request("POST", "/v1/send", "Bearer wrong"), book, limiter, now);
    EXPECT_NE(std::get<LanGate::Refusal>(refused).logLine.find("192.168.1.9:4000"),
              std::string::npos);
}

TEST_F(LanGateTest, AFloodIsRefusedWith429NamingTheDevice) {
    for (int i = 0; i < 50; ++i)
        ASSERT_EQ(status(request("POST", "/v1/send", "Bearer tok")), 200u) << i;
    auto verdict = LanGate::admit(request("POST", "/v1/send", "Bearer tok"), book, limiter, now);
    const auto& refusal = std::get<LanGate::Refusal>(verdict);
    EXPECT_EQ(refusal.response.status, 429u);
    EXPECT_NE(refusal.logLine.find("\"Pixel\""), std::string::npos);
}

} // namespace
} // namespace ringwell
