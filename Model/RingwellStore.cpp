#include "Model/RingwellStore.h"

#include "Core/AppName.h"
#include "Core/Json.h"
#include "Core/NameList.h"
#include "Core/TextFolding.h"
#include "Core/Utf8.h"
#include "Model/AtomicFile.h"
#include "Model/XdgPaths.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ringwell {
namespace fs = std::filesystem;
namespace {

// MARK: Files

fs::path directoryOf(const fs::path& file) {
    fs::path directory = file.parent_path();
    return directory.empty() ? fs::path(".") : directory;
}

// MARK: Text repair

void repair(std::string& text) {
    if (!text::isValidUtf8(text))
        text = text::repairedUtf8(text);
}

void repair(std::optional<std::string>& text) {
    if (text)
        repair(*text);
}

void repair(std::vector<std::string>& texts) {
    for (auto& text : texts)
        repair(text);
}

void repair(ChannelRule& rule) {
    repair(rule.apps);
    repair(rule.senders);
    repair(rule.keywords);
}

void repair(Channel& channel) {
    repair(channel.name);
    repair(channel.tintHex);
    repair(channel.rule);
    for (auto& step : channel.escalation) {
        repair(step.url);
        repair(step.body);
        for (auto& [name, value] : step.headers) {
            repair(name);
            repair(value);
        }
    }
}

void repair(FireEvent& event) {
    repair(event.channelName);
    repair(event.app);
    repair(event.sender);
    repair(event.title);
    repair(event.subtitle);
    repair(event.body);
    repair(event.errorMessage);
    if (event.received) {
        for (auto& field : *event.received) {
            repair(field.name);
            repair(field.value);
        }
    }
}

// JSON has no NaN or infinity (the encoder writes null, which no longer
// decodes as a date), so such a date would make the whole file unreadable.
void repair(Date& date, Date now) {
    if (!std::isfinite(date.secondsSinceReferenceDate))
        date = now;
}

} // namespace

// MARK: Snapshot

json::Json toJson(const StoreSnapshot& snapshot) {
    json::Json channels = json::Json::array();
    for (const auto& channel : snapshot.channels)
        channels.push_back(toJson(channel));
    json::Json events = json::Json::array();
    for (const auto& event : snapshot.events)
        events.push_back(toJson(event));
    json::Json out = json::Json::object();
    out["channels"] = std::move(channels);
    out["events"] = std::move(events);
    return out;
}

namespace {

// Decodes each element of `array` with `decode`, leaving out (and telling
// `dropped` about) the ones that throw DecodeError.
template <typename Record, typename Decoder>
std::vector<Record> decodeEach(const json::Json& array, std::string_view what, Decoder decode,
                               const ErrorLog& dropped) {
    std::vector<Record> records;
    for (const auto& element : array) {
        try {
            records.push_back(decode(element));
        } catch (const std::exception& error) { // DecodeError or nlohmann's own
            if (dropped)
                dropped("A " + std::string(what) + " could not be read (" + error.what() +
                        ") and was left out: " + json::encode(element));
        }
    }
    return records;
}

} // namespace

StoreSnapshot snapshotFromJson(const json::Json& value, Date now, const ErrorLog& dropped) {
    json::requireObject(value, "store");
    const auto& channels = json::requireArray(value, "channels");
    const auto& events = json::requireArray(value, "events");
    StoreSnapshot snapshot;
    snapshot.channels = decodeEach<Channel>(
        channels, "channel",
        [now](const json::Json& channel) { return channelFromJson(channel, now); }, dropped);
    snapshot.events = decodeEach<FireEvent>(events, "event", fireEventFromJson, dropped);
    return snapshot;
}

Result<StoreSnapshot> decodeSnapshot(std::string_view text, Date now, const ErrorLog& dropped) {
    return json::decode(text, [now, &dropped](const json::Json& value) {
        return snapshotFromJson(value, now, dropped);
    });
}

// MARK: Opening

std::optional<fs::path> RingwellStore::defaultFileLocation() {
    return defaultFileLocation(std::getenv("XDG_DATA_HOME"), std::getenv("HOME"));
}

std::optional<fs::path> RingwellStore::defaultFileLocation(const char* xdgDataHome,
                                                           const char* home) {
    auto base = XdgPaths::resolve(xdgDataHome, home, ".local/share");
    if (!base)
        return std::nullopt;
    const fs::path directory = *base / "ringwell";
    if (!AtomicFile::createPrivateDirectories(directory))
        return std::nullopt;
    return directory / fileName;
}

Result<std::unique_ptr<RingwellStore>> RingwellStore::open(const fs::path& file, const Clock& clock,
                                                           ErrorLog log) {
    const fs::path directory = directoryOf(file);
    auto made = AtomicFile::createPrivateDirectories(directory);
    if (!made)
        return made.error();
    auto lock = DirectoryLock::acquire(directory);
    if (!lock)
        return lock.error();
    // Holding the lock, no other writer can be running: any temporary file
    // left is the remains of a write that a crash interrupted.
    AtomicFile::removeLeftovers(file);

    std::unique_ptr<RingwellStore> store(
        new RingwellStore(clock, file, std::move(lock).value(), std::move(log)));
    auto loaded = store->load();
    if (!loaded)
        return loaded.error();
    if (loaded.value() == Loaded::nothing)
        store->seed();
    return store;
}

Result<std::unique_ptr<RingwellStore>> RingwellStore::openDefault(const Clock& clock,
                                                                  ErrorLog log) {
    if (auto file = defaultFileLocation())
        return open(*file, clock, std::move(log));
    return std::make_unique<RingwellStore>(clock);
}

RingwellStore::RingwellStore(const Clock& clock) : clock_(clock) {
    seed();
}

RingwellStore::RingwellStore(const Clock& clock, std::optional<fs::path> file,
                             std::optional<DirectoryLock> lock, ErrorLog log)
    : clock_(clock), file_(std::move(file)), lock_(std::move(lock)), log_(std::move(log)) {}

// Pending changes still reach the file, after the save being written (if any)
// is done; the waiters are dropped unheard, as whoever awaited them is being
// torn down too.
RingwellStore::~RingwellStore() {
    observers_.clear();
    writer_.reset();
    if (unsaved_)
        write();
}

Result<RingwellStore::Loaded> RingwellStore::load() {
    if (!file_)
        return Loaded::nothing;
    auto contents = AtomicFile::read(*file_);
    if (!contents)
        return contents.error();
    if (!contents.value())
        return Loaded::nothing;

    auto snapshot =
        decodeSnapshot(*contents.value(), clock_.now(), [this](const std::string& message) {
            report("The store file " + file_->string() + ": " + message);
        });
    if (snapshot) {
        channels_ = std::move(snapshot.value().channels);
        events_ = std::move(snapshot.value().events);
        encodedEvents_.clear();
        for (const auto& event : events_)
            encodedEvents_.push_back(json::encode(toJson(event)));
        return Loaded::loaded;
    }

    // Moved aside, not deleted: the user (or support) may still recover it. The
    // store starts empty and, as the file was there, seeds nothing.
    report("The store file " + AtomicFile::quarantine(*file_, snapshot.error().message));
    return Loaded::loaded;
}

void RingwellStore::seed() {
    channels_.push_back(Channel::make(std::string(seedChannelName), ChannelRule(),
                                      ChannelPalette::tintForNewChannel(0), clock_.now()));
    save();
}

// MARK: Saving and observing

void RingwellStore::save() {
    if (!file_)
        return;
    if (!scheduleFlush_) {
        write();
        return;
    }
    unsaved_ = true;
    // The flush already scheduled takes this change too; so does the save that
    // follows the one being written.
    if (flushScheduled_ || writing_)
        return;
    flushScheduled_ = true;
    std::weak_ptr<RingwellStore*> self = self_;
    scheduleFlush_([self] {
        if (auto store = self.lock())
            (*store)->flush();
    });
}

void RingwellStore::batchSaves(FlushScheduler schedule) {
    scheduleFlush_ = std::move(schedule);
    if (file_ && !writer_)
        writer_ = std::make_unique<FileWriterThread>();
}

void RingwellStore::whenSaved(std::function<void()> done) {
    if (unsaved_)
        saveWaiters_.push_back(std::move(done));
    else if (writing_)
        writingWaiters_.push_back(std::move(done));
    else
        done();
}

void RingwellStore::flush() {
    flushScheduled_ = false;
    if (writing_)
        return; // the end of that save starts the next one
    if (unsaved_) {
        startSave();
        return;
    }
    auto waiters = std::move(saveWaiters_);
    saveWaiters_.clear();
    for (auto& done : waiters)
        done();
}

// Takes every unsaved change into one save. On the writer thread only the
// file's bytes travel; the result comes back through the flush scheduler,
// which the daemon makes a post to its loop.
void RingwellStore::startSave() {
    unsaved_ = false;
    auto waiters = std::move(saveWaiters_);
    saveWaiters_.clear();
    if (!writer_) {
        finishSave(writeNow(), std::move(waiters));
        return;
    }
    std::string text;
    try {
        text = snapshotText();
    } catch (const std::exception& exception) {
        finishSave(std::string(exception.what()), std::move(waiters));
        return;
    }
    writing_ = true;
    writingWaiters_ = std::move(waiters);
    std::weak_ptr<RingwellStore*> self = self_;
    writer_->replace(*file_, std::move(text),
                     [self, schedule = scheduleFlush_](std::optional<std::string> error) {
                         schedule([self, error = std::move(error)]() mutable {
                             if (auto store = self.lock())
                                 (*store)->saveWritten(std::move(error));
                         });
                     });
}

// Back on the store's thread. This save's waiters hear first; then the
// changes made during the write (and any a waiter made) go to disk at once in
// the next save.
void RingwellStore::saveWritten(std::optional<std::string> error) {
    writing_ = false;
    auto waiters = std::move(writingWaiters_);
    writingWaiters_.clear();
    finishSave(std::move(error), std::move(waiters));
    if (unsaved_ && !writing_)
        startSave();
}

// A waiter may change the store again; its change waits for the next save.
void RingwellStore::finishSave(std::optional<std::string> error,
                               std::vector<std::function<void()>> waiters) {
    recordSaveResult(std::move(error));
    for (auto& done : waiters)
        done();
}

void RingwellStore::write() {
    unsaved_ = false;
    recordSaveResult(writeNow());
}

std::optional<std::string> RingwellStore::writeNow() const {
    try {
        return replaceFile(*file_, snapshotText());
    } catch (const std::exception& exception) {
        return std::string(exception.what());
    }
}

void RingwellStore::recordSaveResult(std::optional<std::string> error) {
    if (error)
        report("Saving the store failed: " + *error);
    else
        ++saveCount_;
    if (error == saveError_)
        return;
    saveError_ = std::move(error);
    notify(StoreChange::saveError);
}

// The same text as json::encode(toJson(snapshot)), built from the events'
// cached texts: events never change once logged, so a save encodes only the
// channels, and the cost of a save stays that of writing the bytes.
std::string RingwellStore::snapshotText() const {
    json::Json channels = json::Json::array();
    for (const auto& channel : channels_)
        channels.push_back(toJson(channel));
    const std::string channelsText = json::encode(channels);
    std::size_t size = channelsText.size() + 32;
    for (const auto& event : encodedEvents_)
        size += event.size() + 1;
    std::string text;
    text.reserve(size);
    text += "{\"channels\":";
    text += channelsText;
    text += ",\"events\":[";
    for (std::size_t i = 0; i < encodedEvents_.size(); ++i) {
        if (i > 0)
            text += ',';
        text += encodedEvents_[i];
    }
    text += "]}";
    return text;
}

void RingwellStore::report(const std::string& message) const {
    if (log_)
        log_(message);
}

RingwellStore::ObserverToken RingwellStore::subscribe(Observer observer) {
    return ObserverToken{observers_.subscribe(std::move(observer))};
}

void RingwellStore::unsubscribe(ObserverToken token) {
    observers_.unsubscribe(token.value);
}

void RingwellStore::notify(StoreChange change) {
    observers_.notify(change);
}

// MARK: Changes

void RingwellStore::setSetupWarning(std::optional<std::string> warning) {
    repair(warning);
    if (warning == setupWarning_)
        return;
    setupWarning_ = std::move(warning);
    notify(StoreChange::setupWarning);
}

std::optional<Channel> RingwellStore::channel(const Uuid& id) const {
    auto found = std::find_if(channels_.begin(), channels_.end(),
                              [&](const Channel& channel) { return channel.id == id; });
    if (found == channels_.end())
        return std::nullopt;
    return *found;
}

Channel RingwellStore::addChannel(const std::optional<std::string>& name, const ChannelRule& rule) {
    std::optional<std::string> repairedName = name;
    repair(repairedName);
    ChannelRule repairedRule = rule;
    repair(repairedRule);
    Channel channel =
        Channel::make(repairedName, std::move(repairedRule),
                      ChannelPalette::tintForNewChannel(channels_.size()), clock_.now());
    channels_.push_back(channel);
    save();
    notify(StoreChange::channels);
    return channel;
}

Channel RingwellStore::addChannel(const NotificationInfo& like) {
    ChannelRule rule;
    if (!like.app.empty())
        rule.apps = {like.app};
    if (!like.sender.empty())
        rule.senders = {like.sender};
    else if (!like.title.empty())
        rule.senders = {like.title};
    if (auto kind = like.callKind()) {
        rule.calls = *kind == CallKind::incoming ? ChannelRule::CallFilter::incoming
                                                 : ChannelRule::CallFilter::missed;
    }
    return addChannel(std::nullopt, rule);
}

void RingwellStore::update(Channel channel) {
    repair(channel);
    repair(channel.createdAt, clock_.now());
    if (channel.usesAutomaticName) {
        std::string suggested = channel.rule.suggestedName();
        if (channel.name != suggested)
            channel.name = std::move(suggested);
    }
    auto found = std::find_if(channels_.begin(), channels_.end(),
                              [&](const Channel& stored) { return stored.id == channel.id; });
    if (found == channels_.end() || *found == channel)
        return;
    *found = std::move(channel);
    save();
    notify(StoreChange::channels);
}

void RingwellStore::deleteChannel(const Uuid& id) {
    const auto removed =
        std::erase_if(channels_, [&](const Channel& channel) { return channel.id == id; });
    if (removed == 0)
        return;
    save();
    notify(StoreChange::channels);
}

void RingwellStore::moveChannels(const std::set<std::size_t>& positions, std::size_t destination) {
    std::vector<Channel> moved;
    std::vector<Channel> kept;
    std::size_t insertAt = 0; // kept channels that stood before the destination
    for (std::size_t i = 0; i < channels_.size(); ++i) {
        if (positions.count(i)) {
            moved.push_back(std::move(channels_[i]));
        } else {
            if (i < destination)
                ++insertAt;
            kept.push_back(std::move(channels_[i]));
        }
    }
    kept.insert(kept.begin() + static_cast<std::ptrdiff_t>(insertAt),
                std::make_move_iterator(moved.begin()), std::make_move_iterator(moved.end()));
    channels_ = std::move(kept);
    save();
    notify(StoreChange::channels);
}

void RingwellStore::log(FireEvent event) {
    repair(event);
    repair(event.receivedAt, clock_.now());
    repair(event.firedAt, clock_.now());
    encodedEvents_.insert(encodedEvents_.begin(), json::encode(toJson(event)));
    events_.insert(events_.begin(), std::move(event));
    if (events_.size() > eventLimit) {
        events_.resize(eventLimit);
        encodedEvents_.resize(eventLimit);
    }
    save();
    notify(StoreChange::events);
}

void RingwellStore::recordEscalation(const Uuid& eventID, EscalationRecord record) {
    repair(record.detail);
    for (std::size_t i = 0; i < events_.size(); ++i) {
        if (events_[i].id != eventID)
            continue;
        events_[i].escalations.push_back(std::move(record));
        encodedEvents_[i] = json::encode(toJson(events_[i]));
        save();
        notify(StoreChange::events);
        return;
    }
}

void RingwellStore::clearEvents() {
    events_.clear();
    encodedEvents_.clear();
    save();
    notify(StoreChange::events);
}

// MARK: Derived lists

std::vector<NotificationInfo> RingwellStore::notificationHistory() const {
    std::vector<NotificationInfo> history;
    for (const auto& event : events_) {
        if (isForwardedNotification(event))
            history.push_back(event.notification());
    }
    return history;
}

std::set<std::string> RingwellStore::forwardedApps() const {
    std::set<std::string> apps;
    for (const auto& event : events_) {
        if (isForwardedNotification(event))
            apps.insert(text::lowercased(*event.app));
    }
    return apps;
}

std::vector<std::string> RingwellStore::knownApps() const {
    std::vector<std::string> apps = {"Messages", std::string(PhoneApp::name)};
    for (const auto& event : events_) {
        if (event.app)
            addName(apps, *event.app);
    }
    sortForDisplay(apps);
    return apps;
}

std::vector<std::string> RingwellStore::knownSenders(const std::vector<std::string>& apps) const {
    std::vector<std::string> wanted;
    for (const auto& app : apps)
        addName(wanted, app);
    std::vector<std::string> senders;
    for (const auto& event : events_) {
        if (!isForwardedNotification(event) || !event.sender)
            continue;
        const bool forWantedApp = std::any_of(wanted.begin(), wanted.end(), [&](const auto& app) {
            return isSameApp(app, *event.app);
        });
        if (forWantedApp)
            addName(senders, *event.sender);
    }
    sortForDisplay(senders);
    return senders;
}

std::optional<std::vector<std::string>> RingwellStore::appsToForward() const {
    std::vector<std::string> apps;
    for (const auto& channel : channels_) {
        if (!channel.isEnabled)
            continue;
        if (channel.rule.apps.empty())
            return std::nullopt;
        for (const auto& app : channel.rule.apps)
            addName(apps, app);
    }
    sortForDisplay(apps);
    return apps;
}

} // namespace ringwell
