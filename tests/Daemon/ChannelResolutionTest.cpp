#include "Daemon/RouteSupport.h"
#include "TestSupport/Fakes/FakeClock.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

// Every command and route that takes CHANNEL or EVENT resolves it here. A new
// store holds one channel, "Urgent", and no events.
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

TEST_F(ChannelResolutionTest, DeletingAndMovingTakeOnlyAWholeName) {
    Channel calls = store.addChannel(std::string("Urgent calls"), ChannelRule{});
    EXPECT_EQ(routes::resolveChannelByWholeName(store, "urgent calls").value().id, calls.id);
    EXPECT_EQ(routes::resolveChannelByWholeName(store, calls.id.toString()).value().id, calls.id);

    // "calls" would pick "Urgent calls" for ringing; for deleting it is refused
    // and names what contains it.
    auto part = routes::resolveChannelByWholeName(store, "calls");
    ASSERT_FALSE(part);
    EXPECT_EQ(part.error().kind, Error::Kind::notFound);
    EXPECT_NE(part.error().message.find("Urgent calls"), std::string::npos) << part.error().message;

    store.addChannel(std::string("urgent CALLS"), ChannelRule{});
    auto shared = routes::resolveChannelByWholeName(store, "Urgent calls");
    ASSERT_FALSE(shared);
    EXPECT_EQ(shared.error().kind, Error::Kind::invalidInput);
}

TEST_F(ChannelResolutionTest, EventsAreNamedByTheStartOfTheirIdOrAsTheLatest) {
    EXPECT_EQ(routes::resolveEvent(store, "latest").error().kind, Error::Kind::notFound);
    for (const char* id :
         {"ABCD1234-0000-4000-8000-000000000001", "ABCD5678-0000-4000-8000-000000000002"}) {
        FireEvent event;
        event.id = *Uuid::parse(id);
        store.log(event);
    }
    // Newest first: the second logged is at position 0.
    EXPECT_EQ(routes::resolveEvent(store, "latest").value(), 0u);
    EXPECT_EQ(routes::resolveEvent(store, "abcd1").value(), 1u);
    EXPECT_EQ(routes::resolveEvent(store, "ABCD5678-0000-4000-8000-000000000002").value(), 0u);

    const std::pair<const char*, Error::Kind> refused[] = {
        {"abcd", Error::Kind::invalidInput}, // both IDs start so
        {"abc", Error::Kind::invalidInput},  // too short to name one
        {"last", Error::Kind::invalidInput},
        {"ABCD9", Error::Kind::notFound},
        {"ABCD1234-0000-4000-8000-000000000009", Error::Kind::notFound},
    };
    for (const auto& [text, kind] : refused)
        EXPECT_EQ(routes::resolveEvent(store, text).error().kind, kind) << text;
}

} // namespace
} // namespace ringwell
