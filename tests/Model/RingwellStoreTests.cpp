#include "Core/Json.h"
#include "Core/Utf8.h"
#include "Model/AtomicFile.h"
#include "Model/RingwellStore.h"
#include "ModelTestSupport.h"
#include "TestSupport/EnvironmentGuard.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <condition_variable>
#include <deque>
#include <mutex>

#include <sys/stat.h>

namespace ringwell {
namespace {

namespace fs = std::filesystem;
using testing::FakeClock;
using testing::makeEvent;
using testing::readFile;
using testing::TemporaryDirectory;
using testing::writeFile;

const std::string replacement = "\xEF\xBF\xBD"; // U+FFFD

class StoreTest : public ::testing::Test {
protected:
    fs::path directory() const { return root / "data" / "ringwell"; }
    fs::path file() const { return directory() / "ringwell.json"; }
    fs::path quarantine() const { return directory() / "ringwell.corrupt.json"; }

    std::unique_ptr<RingwellStore> open() {
        auto store = RingwellStore::open(
            file(), clock, [this](const std::string& message) { messages.push_back(message); });
        EXPECT_TRUE(store.ok()) << (store.ok() ? "" : store.error().message);
        return store.ok() ? std::move(store).value() : nullptr;
    }

    StoreSnapshot onDisk() {
        auto snapshot = decodeSnapshot(readFile(file()), clock.now());
        EXPECT_TRUE(snapshot.ok()) << (snapshot.ok() ? "" : snapshot.error().message);
        return snapshot.ok() ? snapshot.value() : StoreSnapshot{};
    }

    void writeStoreFile(const std::string& contents) {
        fs::create_directories(directory());
        writeFile(file(), contents);
    }

    // Names of the channels in list order.
    static std::vector<std::string> names(const RingwellStore& store) {
        std::vector<std::string> out;
        for (const auto& channel : store.channels())
            out.push_back(channel.name);
        return out;
    }

    TemporaryDirectory root;
    FakeClock clock;
    std::vector<std::string> messages;
};

// MARK: Start-up

TEST_F(StoreTest, FirstStartSeedsUrgentInAnOwnerOnlyDirectory) {
    auto store = open();
    ASSERT_TRUE(store);
    ASSERT_EQ(store->channels().size(), 1u);
    const Channel& urgent = store->channels()[0];
    EXPECT_EQ(urgent.name, "Urgent");
    EXPECT_EQ(urgent.rule, ChannelRule());

    EXPECT_EQ(store->saveCount(), 1u);
    EXPECT_EQ(onDisk().channels, store->channels());
    EXPECT_TRUE(messages.empty());

    struct stat info {};
    ASSERT_EQ(::stat(directory().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0700u);
}

TEST_F(StoreTest, ReopeningLoadsTheFileNeverSeedsAgainAndKeepsNoSetupWarning) {
    std::vector<Channel> channels;
    {
        auto store = open();
        store->addChannel(std::string("Work"), ChannelRule());
        store->log(makeEvent(FireOutcome::noMatch, "Mail", "Boss", clock.now()));
        store->setSetupWarning(std::string("Map the Sender field"));
        channels = store->channels();
    }
    clock.advance(3600);
    {
        auto store = open();
        EXPECT_EQ(store->channels(), channels);
        EXPECT_EQ(store->events().size(), 1u);
        // The setup warning lives in memory only: it is neither kept nor written.
        EXPECT_FALSE(store->setupWarning().has_value());
        store->setSetupWarning(std::string("Map the Sender field"));
        EXPECT_EQ(store->setupWarning(), "Map the Sender field");
        EXPECT_EQ(store->saveCount(), 0u);
        while (!store->channels().empty())
            store->deleteChannel(store->channels()[0].id);
    }
    // A store whose channels were all deleted is not seeded again.
    EXPECT_TRUE(open()->channels().empty());
}

// Each bad file replaces the previous quarantine; the next change writes a fresh file.
TEST_F(StoreTest, UndecodableFileIsQuarantinedAndNothingIsSeeded) {
    const std::string id = R"("id":"0B3C5D7E-1F20-4A31-8B42-5C6D7E8F9A0B")";
    const std::string bad[] = {
        R"({"channels":[{"id":)",
        "",
        "null",
        "[]",
        R"({"channels":[]})",
        R"({"events":[]})",
        R"({"channels":{},"events":[]})",
        R"({"channels":[],"events":[],"limit":1e999})",
        "{\"channels\":[{" + id + ",\"name\":\"\xFF\"}],\"events\":[]}",
    };
    for (const auto& contents : bad) {
        writeStoreFile(contents);
        messages.clear();
        {
            auto store = open();
            ASSERT_TRUE(store) << contents;
            EXPECT_TRUE(store->channels().empty()) << contents;
            EXPECT_TRUE(store->events().empty()) << contents;
            EXPECT_FALSE(fs::exists(file()));
            EXPECT_EQ(readFile(quarantine()), contents);
            ASSERT_EQ(messages.size(), 1u) << contents;
            EXPECT_NE(messages[0].find("ringwell.corrupt.json"), std::string::npos) << messages[0];

            store->addChannel(std::string("Fresh"), ChannelRule());
            EXPECT_EQ(onDisk().channels.size(), 1u);
            EXPECT_EQ(readFile(quarantine()), contents);
        }
        fs::remove(file());
    }
}

TEST_F(StoreTest, NullOptionalsReadAsAbsentAndABadRecordIsDroppedAlone) {
    const std::string channel = R"({"id":"0B3C5D7E-1F20-4A31-8B42-5C6D7E8F9A0B","name":"Kept",
        "usesAutomaticName":null,"tintHex":null,"isEnabled":null,"mode":null,"countdownSeconds":null,
        "sound":null,"reminderSound":null,"createdAt":null,
        "rule":{"apps":null,"senders":null,"keywords":null,"usesRegex":null,"calls":null,
                "cooldownSeconds":null,"activeHours":null,"frequency":null}})";
    const std::string event = R"({"id":"1B3C5D7E-1F20-4A31-8B42-5C6D7E8F9A0B","channelID":null,
        "channelName":null,"alarmID":null,"followUpAlarmIDs":null,"app":null,"received":null,
        "receivedAt":1,"firedAt":2,"outcome":"fired","errorMessage":null,"isTest":false})";
    const std::string id = R"("id":"2B3C5D7E-1F20-4A31-8B42-5C6D7E8F9A0B")";
    const std::string badChannels[] = {
        "{" + id + R"(,"name":"A","mode":"delayed"})",
        "{" + id + R"(,"name":"A","isEnabled":"yes"})",
        "{" + id + R"(,"name":null})",
    };
    const std::string badEvents[] = {
        "{" + id + R"(,"receivedAt":1,"firedAt":1,"outcome":"rang","isTest":false})",
        "{" + id + R"(,"receivedAt":1,"outcome":"fired","isTest":false})",
        "{" + id + R"(,"receivedAt":1,"firedAt":null,"outcome":"fired","isTest":false})",
    };
    std::string contents = "{\"channels\":[" + channel;
    for (const auto& bad : badChannels)
        contents += "," + bad;
    contents += "],\"events\":[" + event;
    for (const auto& bad : badEvents)
        contents += "," + bad;
    contents += "]}";
    writeStoreFile(contents);

    auto store = open();
    ASSERT_TRUE(store);
    EXPECT_FALSE(fs::exists(quarantine()));
    EXPECT_EQ(names(*store), std::vector<std::string>{"Kept"});
    EXPECT_TRUE(store->channels()[0].rule.apps.empty());
    ASSERT_EQ(store->events().size(), 1u);
    EXPECT_FALSE(store->events()[0].channelID);
    // One line per dropped record, naming it so that it can be recovered.
    ASSERT_EQ(messages.size(), 6u);
    EXPECT_NE(messages[0].find("delayed"), std::string::npos) << messages[0];
    EXPECT_NE(messages[3].find("rang"), std::string::npos) << messages[3];
}

TEST_F(StoreTest, UnreadableFileOrUncreatableDirectoryFailsToOpen) {
    // Starting empty would overwrite the user's file on the next change.
    fs::create_directories(file());
    auto unreadable = RingwellStore::open(file(), clock);
    ASSERT_FALSE(unreadable.ok());
    EXPECT_NE(unreadable.error().message.find("Cannot read"), std::string::npos)
        << unreadable.error().message;

    fs::remove_all(root.path() / "data");
    fs::create_directories(root.path() / "data");
    writeFile(directory(), "a file where the directory should be");
    auto uncreatable = RingwellStore::open(file(), clock);
    ASSERT_FALSE(uncreatable.ok());
    EXPECT_NE(uncreatable.error().message.find("Cannot create"), std::string::npos);
}

TEST_F(StoreTest, LeftoverTemporaryFilesAreRemovedOnOpen) {
    fs::create_directories(directory());
    const fs::path leftover = directory() / (AtomicFile::temporaryPrefix(file()) + "1A2B3C4D");
    writeFile(leftover, "half a wri");
    auto store = open();
    EXPECT_FALSE(fs::exists(leftover));
}

TEST_F(StoreTest, HandWrittenFileInTheDocumentedFormLoads) {
    writeStoreFile(R"({
      "channels": [
        {"id": "0b3c5d7e-1f20-4a31-8b42-5c6d7e8f9a0b", "name": "Family",
         "mode": "countdown", "countdownSeconds": 90, "sound": "chime", "reminderSound": "foghorn",
         "rule": {"apps": ["WhatsApp"], "senders": ["Mum", "Dad"], "calls": "missed",
                  "activeHours": {"weekdays": [1, 7], "startMinute": 480, "endMinute": 1320}},
         "createdAt": 760000000},
        {"id": "11111111-2222-4333-8444-555555555555", "name": "Everything", "isEnabled": false}
      ],
      "events": [
        {"id": "AAAAAAAA-BBBB-4CCC-8DDD-EEEEEEEEEEEE", "channelID": "0b3c5d7e-1f20-4a31-8b42-5c6d7e8f9a0b",
         "channelName": "Family", "alarmID": "99999999-8888-4777-8666-555555555555",
         "followUpAlarmIDs": [], "app": "WhatsApp", "sender": "Mum", "title": "Mum", "body": "Call me",
         "isTimeSensitive": true, "receivedAt": 760000100, "firedAt": 760000100.5,
         "outcome": "fired", "isTest": false},
        {"id": "BBBBBBBB-BBBB-4CCC-8DDD-EEEEEEEEEEEE", "receivedAt": 760000000,
         "firedAt": 760000000, "outcome": "noMatch", "isTest": false}
      ]
    })");
    auto store = open();
    ASSERT_EQ(store->channels().size(), 2u);
    const Channel& family = store->channels()[0];
    EXPECT_EQ(family.id.toString(), "0B3C5D7E-1F20-4A31-8B42-5C6D7E8F9A0B");
    EXPECT_EQ(family.modeBadge(), "Countdown 1m 30s");
    EXPECT_EQ(family.reminderSound, AlarmTone::system); // unknown tone names fall back
    EXPECT_EQ(family.rule.activeHours->startMinute, 480);
    EXPECT_EQ(store->channels()[1].createdAt, clock.now());
    ASSERT_EQ(store->events().size(), 2u);
    EXPECT_EQ(store->events()[0].channelID, family.id);
    EXPECT_EQ(store->saveCount(), 0u);
    EXPECT_TRUE(messages.empty());
}

// A directory where the file should be makes every rename fail, also for
// root, which a read-only directory would not stop.
TEST_F(StoreTest, FailedSaveIsKeptAsTheSaveErrorUntilTheNextSaveCatchesUp) {
    auto store = open();
    std::vector<std::optional<std::string>> heard;
    auto token = store->subscribe([&](StoreChange change) {
        if (change == StoreChange::saveError)
            heard.push_back(store->saveError());
    });
    fs::remove(file());
    fs::create_directory(file());

    Channel added = store->addChannel(std::string("Kept"), ChannelRule());
    store->log(makeEvent(FireOutcome::fired, "Mail", "Boss", clock.now()));
    EXPECT_EQ(store->channels().back(), added);
    EXPECT_EQ(store->saveCount(), 1u);
    ASSERT_TRUE(store->saveError().has_value());
    EXPECT_NE(store->saveError()->find(file().string()), std::string::npos) << *store->saveError();
    ASSERT_EQ(messages.size(), 2u);
    EXPECT_EQ(messages[0], "Saving the store failed: " + *store->saveError());
    EXPECT_EQ(heard.size(), 1u); // the same error again is no news

    fs::remove(file());
    store->log(makeEvent(FireOutcome::fired, "Signal", "Ann", clock.now()));
    EXPECT_FALSE(store->saveError().has_value());
    EXPECT_EQ(heard.size(), 2u);
    EXPECT_EQ(onDisk(), (StoreSnapshot{store->channels(), store->events()}));
    EXPECT_EQ(store->events().size(), 2u);
    store->unsubscribe(token);
}

// MARK: Batched saves

// Saves written on the writer thread: the test thread plays the daemon's
// loop, running what the store posts, in order, as it arrives.
class WriterThreadSaveTest : public StoreTest {
protected:
    std::unique_ptr<RingwellStore> openWithWriter() {
        auto store = open();
        store->batchSaves([this](std::function<void()> task) {
            {
                std::lock_guard lock(mutex);
                posted.push_back(std::move(task));
            }
            arrived.notify_one();
        });
        return store;
    }
    // Waits for the next posted task (a flush, or a finished write coming
    // back) and runs it on this thread.
    void runNextPosted() {
        std::function<void()> task;
        {
            std::unique_lock lock(mutex);
            ASSERT_TRUE(arrived.wait_for(lock, std::chrono::seconds(30),
                                         [this] { return !posted.empty(); }));
            task = std::move(posted.front());
            posted.pop_front();
        }
        task();
    }
    std::mutex mutex;
    std::condition_variable arrived;
    std::deque<std::function<void()>> posted;
};

// Changes made while a save is being written wait for the next save, which
// starts as soon as that one is done; nobody hears "saved" before the save
// holding their change is on disk.
TEST_F(WriterThreadSaveTest, ChangesDuringAWriteShareTheNextSave) {
    auto store = openWithWriter();
    const auto before = store->saveCount();
    std::vector<std::size_t> eventsOnDiskWhenHeard;
    auto waiter = [&] { eventsOnDiskWhenHeard.push_back(onDisk().events.size()); };

    store->log(makeEvent(FireOutcome::fired, "Mail", "First", clock.now()));
    store->whenSaved(waiter);
    runNextPosted(); // the flush: the first save goes to the writer thread
    for (int i = 0; i < 3; ++i) {
        store->log(
            makeEvent(FireOutcome::fired, "Mail", "Later " + std::to_string(i), clock.now()));
        store->whenSaved(waiter);
    }
    EXPECT_TRUE(eventsOnDiskWhenHeard.empty());

    runNextPosted(); // the first save is back; the three later changes go out together
    EXPECT_EQ(eventsOnDiskWhenHeard, (std::vector<std::size_t>{1}));
    EXPECT_EQ(store->saveCount(), before + 1);

    runNextPosted();
    EXPECT_EQ(eventsOnDiskWhenHeard, (std::vector<std::size_t>{1, 4, 4, 4}));
    EXPECT_EQ(store->saveCount(), before + 2);
    EXPECT_EQ(readFile(file()),
              json::encode(toJson(StoreSnapshot{store->channels(), store->events()})));
    int heardAtOnce = 0;
    store->whenSaved([&] { ++heardAtOnce; }); // nothing unsaved or being written
    EXPECT_EQ(heardAtOnce, 1);
}

// Closing waits for the save being written, then writes what came after it;
// the result that comes back for the closed store is dropped.
TEST_F(WriterThreadSaveTest, ClosingFinishesTheWriteAndSavesWhatCameAfter) {
    auto store = openWithWriter();
    store->log(makeEvent(FireOutcome::fired, "Mail", "Being written", clock.now()));
    runNextPosted();
    store->log(makeEvent(FireOutcome::fired, "Mail", "After", clock.now()));
    store.reset();
    EXPECT_EQ(onDisk().events.size(), 2u);
    runNextPosted();
    EXPECT_TRUE(messages.empty());
}

// MARK: Channels

// The rule takes the app and the sender (else the title); a call asks for its kind.
TEST_F(StoreTest, AddChannelLikeNotificationBuildsTheRule) {
    using Calls = ChannelRule::CallFilter;
    using List = std::vector<std::string>;
    const struct {
        NotificationInfo like;
        List apps, senders;
        Calls calls;
    } cases[] = {
        {{"WhatsApp", "Mum", "Family", "", "", {}, false, {}}, {"WhatsApp"}, {"Mum"}, Calls::any},
        {{"Mail", "", "Server down", "", "", {}, false, {}}, {"Mail"}, {"Server down"}, Calls::any},
        {{"Phone", "", "Bob", "", "Missed call", {}, false, {}}, {"Phone"}, {"Bob"}, Calls::missed},
        {{"phone", "Bob", "", "", "", {}, false, {}}, {"phone"}, {"Bob"}, Calls::incoming},
        {{}, {}, {}, Calls::any},
    };
    RingwellStore store(clock);
    for (const auto& c : cases) {
        Channel added = store.addChannel(c.like);
        EXPECT_EQ(added.rule.apps, c.apps) << c.like.app;
        EXPECT_EQ(added.rule.senders, c.senders) << c.like.app;
        EXPECT_EQ(added.rule.calls, c.calls) << c.like.app;
        EXPECT_TRUE(added.usesAutomaticName);
        EXPECT_EQ(added.name, added.rule.suggestedName());
    }
    EXPECT_EQ(store.channels().back().name, "All Notifications");
}

// An update writes only when it changes something; a channel with an
// automatic name takes the name of its new rule.
TEST_F(StoreTest, UpdateReplacesInPlaceRenamesAutomaticNamesAndWritesOnlyRealChanges) {
    auto store = open();
    ChannelRule rule;
    rule.senders = {"Mum"};
    Channel channel = store->addChannel(std::nullopt, rule);
    EXPECT_EQ(channel.name, "Mum");
    const auto saves = store->saveCount();
    store->update(store->channels()[0]);
    store->update(Channel::make(std::string("Stranger"), ChannelRule(), "#FF3B30", Date{}));
    Channel stale = channel; // a stale name alone is no change once the name is recomputed
    stale.name = "Something else";
    store->update(stale);
    EXPECT_EQ(store->saveCount(), saves);
    EXPECT_EQ(names(*store), (std::vector<std::string>{"Urgent", "Mum"}));

    Channel urgent = store->channels()[0];
    urgent.isEnabled = false;
    urgent.name = "Very urgent";
    store->update(urgent);
    EXPECT_EQ(store->channels()[0], urgent);
    channel.rule.senders = {"Dad", "Gran"};
    store->update(channel);
    EXPECT_EQ(names(*store), (std::vector<std::string>{"Very urgent", "Dad +1"}));
    EXPECT_EQ(onDisk().channels, store->channels());

    // With automatic naming off the given name stays.
    channel.usesAutomaticName = false;
    channel.name = "Parents";
    store->update(channel);
    EXPECT_EQ(store->channel(channel.id)->name, "Parents");
}

// Hand-edited files can hold an id twice; deleting removes every copy.
TEST_F(StoreTest, DeleteRemovesEveryChannelWithTheIdAndWritesOnlyThen) {
    const std::string id = R"("id":"0B3C5D7E-1F20-4A31-8B42-5C6D7E8F9A0B")";
    writeStoreFile("{\"channels\":[{" + id + ",\"name\":\"A\"},{\"id\":" +
                   R"("11111111-2222-4333-8444-555555555555","name":"B"},{)" + id +
                   ",\"name\":\"C\"}],\"events\":[]}");
    auto store = open();
    const Uuid duplicated = *Uuid::parse("0B3C5D7E-1F20-4A31-8B42-5C6D7E8F9A0B");
    EXPECT_EQ(store->channel(duplicated)->name, "A");
    store->deleteChannel(Uuid::random());
    EXPECT_EQ(store->saveCount(), 0u);
    store->deleteChannel(duplicated);
    EXPECT_EQ(names(*store), (std::vector<std::string>{"B"}));
    EXPECT_FALSE(store->channel(duplicated).has_value());
    EXPECT_EQ(onDisk().channels, store->channels());
}

class MoveTest : public StoreTest {
protected:
    using Names = std::vector<std::string>;

    void SetUp() override { store = open(); }

    // The names after moving in the list A, B, C, D, E; the file must agree.
    Names moved(const std::set<std::size_t>& from, std::size_t to) {
        while (!store->channels().empty())
            store->deleteChannel(store->channels()[0].id);
        for (const char* name : {"A", "B", "C", "D", "E"})
            store->addChannel(std::string(name), ChannelRule());
        store->moveChannels(from, to);
        Names disk;
        for (const auto& channel : onDisk().channels)
            disk.push_back(channel.name);
        EXPECT_EQ(disk, names(*store));
        return names(*store);
    }

    std::unique_ptr<RingwellStore> store;
};

TEST_F(MoveTest, DestinationCountsInTheListBeforeTheMove) {
    EXPECT_EQ(moved({0}, 3), (Names{"B", "C", "A", "D", "E"}));
    EXPECT_EQ(moved({3}, 1), (Names{"A", "D", "B", "C", "E"}));
    EXPECT_EQ(moved({1, 3}, 5), (Names{"A", "C", "E", "B", "D"}));
    EXPECT_EQ(moved({0, 2}, 2), (Names{"B", "A", "C", "D", "E"}));
    EXPECT_EQ(moved({2}, 3), (Names{"A", "B", "C", "D", "E"}));
    // Out-of-range positions are ignored and the destination clamped.
    EXPECT_EQ(moved({1, 9}, 99), (Names{"A", "C", "D", "E", "B"}));
}

// MARK: Events

// A hand-edited file may hold more than the 200 kept: it loads whole, and the
// next log trims it from the oldest end.
TEST_F(StoreTest, LogKeepsNewestFirstCapsAt200AndClears) {
    std::vector<FireEvent> events; // newest first, as the file holds them
    json::Json file = json::Json::object();
    file["channels"] = json::Json::array();
    file["events"] = json::Json::array();
    for (int i = 0; i < 205; ++i) {
        events.push_back(makeEvent(FireOutcome::noMatch, "Mail", "S" + std::to_string(i),
                                   clock.now().addingSeconds(-i)));
        file["events"].push_back(toJson(events.back()));
    }
    writeStoreFile(json::encode(file));
    auto store = open();
    EXPECT_EQ(store->events(), events);

    FireEvent newest = makeEvent(FireOutcome::fired, "Mail", "Newest", clock.now());
    store->log(newest);
    ASSERT_EQ(store->events().size(), 200u);
    EXPECT_EQ(store->events().front(), newest);
    EXPECT_EQ(store->events().back(), events[198]);
    EXPECT_EQ(onDisk().events, store->events());

    store->clearEvents();
    EXPECT_TRUE(store->events().empty());
    EXPECT_TRUE(onDisk().events.empty());
}

// MARK: Invalid UTF-8

TEST_F(StoreTest, InvalidUtf8IsStoredRepairedAndReloadsEqual) {
    std::vector<FireEvent> events;
    std::vector<Channel> channels;
    {
        auto store = open();
        FireEvent event =
            makeEvent(FireOutcome::noMatch, "Ma\xFFil", "B\xC3ob", clock.now(), "Title \xE2\x82");
        event.received = std::vector<ReceivedField>{{"Body", "\xF0\x9F\x98"}};
        store->log(event);
        ChannelRule rule;
        rule.senders = {"Zo\xE9"}; // Latin-1, not UTF-8
        store->addChannel(std::nullopt, rule);
        store->addChannel(std::string("Caf\xE9"), ChannelRule());
        store->setSetupWarning(std::string("bad \xC0"));

        const FireEvent& stored = store->events()[0];
        EXPECT_EQ(*stored.app, "Ma" + replacement + "il");
        for (const auto& text : {*stored.sender, *stored.title, stored.received->at(0).value})
            EXPECT_TRUE(text::isValidUtf8(text));
        EXPECT_EQ(store->channels()[1].name, "Zo" + replacement);
        EXPECT_EQ(store->channels()[1].rule.senders[0], "Zo" + replacement);
        EXPECT_EQ(store->channels()[2].name, "Caf" + replacement);
        EXPECT_EQ(*store->setupWarning(), "bad " + replacement);
        events = store->events();
        channels = store->channels();
        EXPECT_TRUE(messages.empty());
    }
    auto store = open();
    EXPECT_EQ(store->events(), events);
    EXPECT_EQ(store->channels(), channels);

    // Updating twice with the same broken text is one change.
    Channel urgent = store->channels()[0];
    urgent.name = "Ur\xFFgent";
    store->update(urgent);
    EXPECT_EQ(store->channels()[0].name, "Ur" + replacement + "gent");
    const auto saves = store->saveCount();
    store->update(urgent);
    EXPECT_EQ(store->saveCount(), saves);
}

TEST_F(StoreTest, DatesThatJsonCannotHoldBecomeNow) {
    auto store = open();
    FireEvent event = makeEvent(FireOutcome::fired, "Mail", "Bob", Date{std::nan("")});
    event.firedAt = Date{INFINITY};
    store->log(event);
    Channel urgent = store->channels()[0];
    urgent.createdAt = Date{-INFINITY};
    store->update(urgent);
    EXPECT_EQ(store->events()[0].receivedAt, clock.now());
    EXPECT_EQ(store->events()[0].firedAt, clock.now());
    EXPECT_EQ(store->channels()[0].createdAt, clock.now());
    EXPECT_EQ(onDisk().events, store->events());
}

// MARK: Setup warning and observers

TEST_F(StoreTest, ObserversHearEveryChange) {
    auto store = open();
    std::vector<StoreChange> heard;
    auto token = store->subscribe([&](StoreChange change) { heard.push_back(change); });

    Channel channel = store->addChannel(std::string("X"), ChannelRule());
    channel.isEnabled = false;
    store->update(channel);
    store->moveChannels({1}, 0);
    store->deleteChannel(channel.id);
    store->log(makeEvent(FireOutcome::fired, "Mail", "Bob", clock.now()));
    store->clearEvents();
    store->setSetupWarning(std::string("warning"));
    store->setSetupWarning(std::string("warning")); // the same value: nobody is told
    store->setSetupWarning(std::nullopt);
    store->setSetupWarning(std::nullopt);
    // No change, no notification.
    store->update(store->channels()[0]);
    store->update(Channel::make(std::string("Stranger"), ChannelRule(), "#FF3B30", Date{}));
    store->deleteChannel(Uuid::random());

    using C = StoreChange;
    EXPECT_EQ(heard,
              (std::vector<StoreChange>{C::channels, C::channels, C::channels, C::channels,
                                        C::events, C::events, C::setupWarning, C::setupWarning}));
    store->unsubscribe(token);
}

TEST_F(StoreTest, ObserversMayUnsubscribeAndChangeTheStoreWhileBeingTold) {
    RingwellStore store(clock);
    std::vector<std::string> calls;
    RingwellStore::ObserverToken first{}, second{}, third{};
    first = store.subscribe([&](StoreChange) {
        calls.push_back("first");
        store.unsubscribe(first);  // itself
        store.unsubscribe(second); // and one not yet told
    });
    second = store.subscribe([&](StoreChange) { calls.push_back("second"); });
    third = store.subscribe([&](StoreChange change) {
        calls.push_back("third");
        if (change == StoreChange::events)
            store.setSetupWarning(std::string("nested"));
    });
    store.log(makeEvent(FireOutcome::fired, "Mail", "Bob", clock.now()));
    EXPECT_EQ(calls, (std::vector<std::string>{"first", "third", "third"}));
    EXPECT_EQ(store.setupWarning(), "nested");
    store.unsubscribe(third);
    store.unsubscribe(third); // twice is harmless
}

// MARK: Derived lists

class DerivedListsTest : public StoreTest {
protected:
    void SetUp() override {
        store = std::make_unique<RingwellStore>(clock);
        // Logged oldest first; the log holds them newest first.
        add(FireOutcome::fired, "WhatsApp", "Mum");
        add(FireOutcome::noMatch, "Mail", "Boss");
        add(FireOutcome::ignored, "Ringwell", "");
        add(FireOutcome::cooledDown, "whatsapp", "mum");
        add(FireOutcome::noMatch, "Slack", "Ann", /*isTest=*/true);
        add(FireOutcome::noMatch, std::nullopt, "Nobody");
        add(FireOutcome::skipped, "WhatsApp", "Dad");
        add(FireOutcome::fired, "Telegram", std::nullopt);
    }
    void add(FireOutcome outcome, std::optional<std::string> app, std::optional<std::string> sender,
             bool isTest = false) {
        FireEvent event = makeEvent(outcome, std::move(app), std::move(sender), clock.now());
        event.isTest = isTest;
        store->log(event);
        clock.advance(60);
    }
    std::unique_ptr<RingwellStore> store;
};

TEST_F(DerivedListsTest, NotificationHistoryHoldsForwardedNotificationsNewestFirst) {
    std::vector<std::string> apps;
    for (const auto& notification : store->notificationHistory())
        apps.push_back(notification.app);
    EXPECT_EQ(apps,
              (std::vector<std::string>{"Telegram", "WhatsApp", "whatsapp", "Mail", "WhatsApp"}));
    const NotificationInfo newest = store->notificationHistory().front();
    EXPECT_EQ(newest.sender, "");
    EXPECT_EQ(newest.title, "Hello");
    EXPECT_EQ(newest.date, store->events().front().receivedAt);
    EXPECT_EQ(store->forwardedApps(), (std::set<std::string>{"mail", "telegram", "whatsapp"}));
}

TEST_F(DerivedListsTest, KnownAppsDropCaseDuplicatesAndSortForDisplay) {
    add(FireOutcome::noMatch, "messages", "Ann");
    add(FireOutcome::noMatch, "\u00C9cole", "Ann"); // École sorts with the Es
    add(FireOutcome::noMatch, "eBay", "Ann");
    EXPECT_EQ(store->knownApps(),
              (std::vector<std::string>{"eBay", "\u00C9cole", "Mail", "Messages", "Phone",
                                        "Ringwell", "Slack", "Telegram", "WhatsApp"}));
}

TEST_F(DerivedListsTest, KnownSendersForTheGivenApps) {
    EXPECT_EQ(store->knownSenders({" whatsapp "}), (std::vector<std::string>{"Dad", "mum"}));
    EXPECT_EQ(store->knownSenders({"WhatsApp", "Mail"}),
              (std::vector<std::string>{"Boss", "Dad", "mum"}));
    EXPECT_TRUE(store->knownSenders({"Slack"}).empty());    // test rings do not count
    EXPECT_TRUE(store->knownSenders({"Telegram"}).empty()); // no sender
    EXPECT_TRUE(store->knownSenders({}).empty());
    EXPECT_TRUE(store->knownSenders({"  "}).empty());
}

TEST_F(StoreTest, AppsToForwardIsAbsentWhenAnEnabledChannelAcceptsAnyApp) {
    RingwellStore store(clock); // "Urgent" has no app condition
    EXPECT_FALSE(store.appsToForward().has_value());

    Channel urgent = store.channels()[0];
    urgent.isEnabled = false;
    store.update(urgent);
    ASSERT_TRUE(store.appsToForward().has_value());
    EXPECT_TRUE(store.appsToForward()->empty());

    ChannelRule rule;
    rule.apps = {" WhatsApp ", "Signal", "", "  "};
    store.addChannel(std::nullopt, rule);
    rule.apps = {"whatsapp", "Mail"};
    store.addChannel(std::nullopt, rule);
    rule.apps = {"Disabled App"};
    Channel disabled = store.addChannel(std::nullopt, rule);
    disabled.isEnabled = false;
    store.update(disabled);
    EXPECT_EQ(store.appsToForward(), (std::vector<std::string>{"Mail", "Signal", "WhatsApp"}));

    store.addChannel(std::string("Any"), ChannelRule());
    EXPECT_FALSE(store.appsToForward().has_value());
}

// MARK: Default location

TEST(DefaultLocationTest, UsesXdgDataHomeElseHomeElseNoLocation) {
    TemporaryDirectory root;
    const fs::path xdg = root / "xdg";
    auto location = RingwellStore::defaultFileLocation(xdg.c_str(), "/nonexistent-home");
    ASSERT_TRUE(location.has_value());
    EXPECT_EQ(*location, xdg / "ringwell" / "ringwell.json");
    struct stat info {};
    ASSERT_EQ(::stat((xdg / "ringwell").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0700u);
    ASSERT_EQ(::stat(xdg.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0700u);

    const fs::path expected = root / "home" / ".local" / "share" / "ringwell" / "ringwell.json";
    for (const char* xdg : {static_cast<const char*>(nullptr), "", "relative/dir"})
        EXPECT_EQ(RingwellStore::defaultFileLocation(xdg, (root / "home").c_str()), expected);
    EXPECT_TRUE(fs::is_directory(expected.parent_path()));

    EXPECT_FALSE(RingwellStore::defaultFileLocation(nullptr, nullptr).has_value());
    EXPECT_FALSE(RingwellStore::defaultFileLocation("", "relative").has_value());
    writeFile(root / "blocker", "a file");
    EXPECT_FALSE(
        RingwellStore::defaultFileLocation((root / "blocker").c_str(), nullptr).has_value());
}

// Without a location the store is seeded and kept in memory, writing nothing.
TEST(DefaultLocationTest, OpenDefaultRunsInMemoryWithoutALocation) {
    testing::EnvironmentGuard home("HOME", std::nullopt), xdg("XDG_DATA_HOME", std::nullopt);
    FakeClock clock;
    auto opened = RingwellStore::openDefault(clock);
    ASSERT_TRUE(opened.ok());
    RingwellStore& store = *opened.value();
    EXPECT_FALSE(store.fileLocation().has_value());
    EXPECT_EQ(store.channels().size(), 1u);
    store.addChannel(std::string("Two"), ChannelRule());
    store.log(makeEvent(FireOutcome::fired, "Mail", "Bob", clock.now()));
    EXPECT_EQ(store.saveCount(), 0u);
}

} // namespace
} // namespace ringwell
