#include "Daemon/RouteSupport.h"
#include "TestSupport/Fakes/FakeClock.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

// Every command and route that takes CHANNEL resolves it here. A new store
// holds one channel, "Urgent".
class ChannelResolutionTest : public ::testing::Test {
protected:
    const Channel& urgent() const { return store.channels().front(); }

    testing::FakeClock clock;
    RingwellStore store{clock};
};

TEST_F(ChannelResolutionTest, ANameSeveralChannelsShareIsRefusedWithTheirIds) {
    Channel first = urgent();
    Channel second = store.addChannel(std::string("Urgent"), ChannelRule{});
    store.addChannel(std::string("Urgent calls"), ChannelRule{});

    for (const std::string text : {"Urgent", "urgent", "Urg"}) {
        auto resolved = routes::resolveChannel(store, text);
        ASSERT_FALSE(resolved) << text;
        EXPECT_EQ(resolved.error().kind, Error::Kind::invalidInput);
        const std::string& message = resolved.error().message;
        EXPECT_NE(message.find("matches several channels"), std::string::npos) << message;
        EXPECT_NE(message.find(first.id.toString()), std::string::npos) << message;
        EXPECT_NE(message.find(second.id.toString()), std::string::npos) << message;
    }

    auto byId = routes::resolveChannel(store, second.id.toString());
    ASSERT_TRUE(byId);
    EXPECT_EQ(byId.value().id, second.id);
}

TEST_F(ChannelResolutionTest, AWholeNameOnlyOneChannelHasPicksItAmongLongerOnes) {
    store.addChannel(std::string("Urgent calls"), ChannelRule{});
    auto resolved = routes::resolveChannel(store, "URGENT");
    ASSERT_TRUE(resolved);
    EXPECT_EQ(resolved.value().id, urgent().id);
    EXPECT_EQ(routes::resolveChannel(store, "calls").value().name, "Urgent calls");
    EXPECT_EQ(routes::resolveChannel(store, "Home").error().kind, Error::Kind::notFound);
}

} // namespace
} // namespace ringwell
