#pragma once

#include "Core/ChannelRule.h"
#include "Core/JsonFwd.h"
#include "Core/NotificationInfo.h"
#include "Core/ObserverList.h"
#include "Core/Result.h"
#include "Core/Uuid.h"
#include "Model/Channel.h"
#include "Model/Clock.h"
#include "Model/DirectoryLock.h"
#include "Model/ErrorLog.h"
#include "Model/FileWriterThread.h"
#include "Model/FireEvent.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ringwell {

// What the store file holds: the channels in priority order and the activity
// log, newest first.
struct StoreSnapshot {
    std::vector<Channel> channels;
    std::vector<FireEvent> events;
    bool operator==(const StoreSnapshot&) const = default;
};

// {"channels": [...], "events": [...]}, compact, keys in that order.
json::Json toJson(const StoreSnapshot& snapshot);
// Both keys are required (json::DecodeError otherwise). A channel or event
// that does not decode is left out and told to `dropped` with its JSON text, so
// one bad record costs that record, not the file. `now` is the creation date of
// channels that name none.
StoreSnapshot snapshotFromJson(const json::Json& value, Date now, const ErrorLog& dropped = {});
Result<StoreSnapshot> decodeSnapshot(std::string_view text, Date now, const ErrorLog& dropped = {});

// Which part of the store changed; `saveError` when a save failed or the
// first save after failures succeeded.
enum class StoreChange { channels, events, setupWarning, saveError };

// The single source of truth for the user's channels (ordered: the first
// matching channel rings), the activity log (newest first, at most 200 events)
// and the setup warning (memory only).
//
// Every mutating operation writes the whole snapshot at once, crash-safely
// (AtomicFile), and then tells the observers; with `batchSaves` the write is
// instead left to one flush shared by every change made before it runs, and
// done on a writer thread while the store's thread goes on: changes
// made while a save is being written wait for the next save, which starts as
// soon as that one is done (group commit).
// Writes whose result would equal the stored state are skipped where noted.
// Save errors never escape: the in-memory state stays as changed, the error
// goes to the ErrorLog and stays readable as `saveError` until a later save,
// which rewrites everything in memory, succeeds.
//
// Text that arrives with invalid UTF-8 is repaired (U+FFFD) as it enters the
// store, so that memory, observers and file agree and a save never fails on
// text; likewise a date that is not a finite number (JSON cannot hold it)
// becomes the current time. The file written always decodes.
//
// A store with a file holds an exclusive lock on the file's directory
// (DirectoryLock) for its whole life: one process owns the file at a time.
//
// Threading: not thread-safe. The store lives on the daemon's main thread and
// every call, including the observers' callbacks, happens there. With writes
// on the writer thread, only a copy of the file's bytes goes to that thread,
// and the result comes back through the flush scheduler. Observers are
// called synchronously after the change (and its save); they may read the
// store, subscribe, unsubscribe (themselves or others) and even mutate it.
class RingwellStore {
public:
    static constexpr std::size_t eventLimit = 200;
    static constexpr const char* fileName = "ringwell.json";
    static constexpr const char* seedChannelName = "Urgent";

    using Observer = std::function<void(StoreChange change)>;
    struct ObserverToken {
        std::uint64_t value = 0;
        bool operator==(const ObserverToken&) const = default;
    };

    // The default file: "$XDG_DATA_HOME/ringwell/ringwell.json", or
    // "$HOME/.local/share/ringwell/ringwell.json" when XDG_DATA_HOME is unset,
    // empty or not absolute. Missing directories are created with mode 0700.
    // None when neither variable gives an absolute path or a directory cannot
    // be created; the store then runs in memory only.
    static std::optional<std::filesystem::path> defaultFileLocation();
    // The same with the two variables' values passed in (null when unset).
    static std::optional<std::filesystem::path> defaultFileLocation(const char* xdgDataHome,
                                                                    const char* home);

    // Opens the store kept in `file`: creates its directory (0700) if missing,
    // takes the directory lock, deletes temporary files left by a crashed
    // write, then loads the file, quarantines it as "<name>.corrupt.json" when
    // it does not decode (starting empty), or seeds the "Urgent" channel and
    // writes the file when it does not exist.
    //
    // Fails when another process holds the lock ("Another Ringwell process is
    // using <dir>"), when the directory cannot be created or locked, or when
    // the file exists but cannot be read (for example a permission error):
    // starting empty and overwriting it on the next change would lose it.
    //
    // `clock` must outlive the store. `log` receives the errors the store does
    // not let escape (failed saves, quarantines); it may be empty.
    static Result<std::unique_ptr<RingwellStore>> open(const std::filesystem::path& file,
                                                       const Clock& clock, ErrorLog log = {});
    // `open` at the default location, or an in-memory store when there is none.
    static Result<std::unique_ptr<RingwellStore>> openDefault(const Clock& clock,
                                                              ErrorLog log = {});

    // A store without a file, for tests and previews: it seeds "Urgent" as on a
    // first start and never reads or writes anything. `clock` must outlive it.
    explicit RingwellStore(const Clock& clock);

    RingwellStore(const RingwellStore&) = delete;
    RingwellStore& operator=(const RingwellStore&) = delete;
    ~RingwellStore();

    // Where the snapshot is kept; none for an in-memory store.
    const std::optional<std::filesystem::path>& fileLocation() const { return file_; }

    // MARK: State

    const std::vector<Channel>& channels() const { return channels_; }
    const std::vector<FireEvent>& events() const { return events_; }
    const std::optional<std::string>& setupWarning() const { return setupWarning_; }

    // Memory only; setting the value it already has notifies nobody.
    void setSetupWarning(std::optional<std::string> warning);

    // The channel with this id (the first one, should there be several).
    std::optional<Channel> channel(const Uuid& id) const;

    // MARK: Changes (each saves at its end)

    // Appends a new channel (lowest priority): the given name, or the rule's
    // suggested name with automatic naming on; the palette colour for the
    // number of channels before it; every other field at its default.
    Channel addChannel(const std::optional<std::string>& name, const ChannelRule& rule);
    // "Create Channel from This": a channel with automatic naming whose rule
    // names the notification's app (when not empty), its sender or else its
    // title (when not empty), and its kind of call for the phone app.
    Channel addChannel(const NotificationInfo& like);
    // Replaces the stored channel with the same id, in place. A channel with
    // automatic naming first takes its rule's suggested name. Does nothing (no
    // save, no notification) for an unknown id or when the stored channel
    // already equals the result.
    void update(Channel channel);
    // Removes every channel with this id; saves and notifies only if one was removed.
    void deleteChannel(const Uuid& id);
    // Moves the channels at `positions` to `destination`, a position in the
    // list before the move (the moved channels land before the channel that
    // was at `destination`, or at the end; their order is kept). Positions
    // outside the list are ignored and the destination is clamped to the end.
    // Always saves and notifies.
    void moveChannels(const std::set<std::size_t>& positions, std::size_t destination);
    // Records an event at the front of the log, dropping the oldest beyond 200.
    void log(FireEvent event);
    // Adds what an escalation step did to the event with this id; nothing
    // when the event has left the log.
    void recordEscalation(const Uuid& eventID, EscalationRecord record);
    // Empties the log. Always saves and notifies.
    void clearEvents();

    // MARK: Derived lists, computed from the current state on each call

    // The notifications of the events that are not tests, have an app and are
    // not `ignored`, newest first: the history for frequency rules and previews.
    std::vector<NotificationInfo> notificationHistory() const;
    // The lower-cased app names of those same events.
    std::set<std::string> forwardedApps() const;
    // "Messages", "Phone" and every app in the log (tests and ignored events
    // included), duplicates ignoring case dropped, sorted for display.
    std::vector<std::string> knownApps() const;
    // The distinct senders (ignoring case) of the log's non-test, non-ignored
    // events whose app is one of `apps` (compared trimmed and ignoring case),
    // sorted for display.
    std::vector<std::string> knownSenders(const std::vector<std::string>& apps) const;
    // The apps the automation must forward: none (meaning every app) when an
    // enabled channel accepts any app; otherwise the trimmed, non-empty app
    // names of the enabled channels' rules, duplicates ignoring case dropped,
    // sorted for display (empty when no channel is enabled).
    std::optional<std::vector<std::string>> appsToForward() const;

    // MARK: Observers

    [[nodiscard]] ObserverToken subscribe(Observer observer);
    void unsubscribe(ObserverToken token);

    // MARK: Saving

    // Completed writes of the file since the store was opened; for tests and
    // diagnostics.
    std::uint64_t saveCount() const { return saveCount_; }

    // Why the last save failed (a message naming the path and the system
    // error); none once a save succeeds. Observers hear `saveError` when it
    // appears, changes or clears.
    const std::optional<std::string>& saveError() const { return saveError_; }

    // Runs `flush` later on the store's thread (the daemon posts it to its
    // io_context).
    using FlushScheduler = std::function<void(std::function<void()> flush)>;
    // From now on a change does not write at once: it marks the state unsaved
    // and asks `schedule` for one flush, which every change made before it
    // runs shares. Observers are then told before the write. The flush hands
    // the file's bytes to the store's writer thread (FileWriterThread), which
    // calls `schedule` to bring the result back, so `schedule` must be safe to
    // call from any thread (asio::post is).
    void batchSaves(FlushScheduler schedule);
    // Calls `done` once every change made so far is in a save that has
    // completed, whether it succeeded or not (see `saveError`); at once when
    // nothing is unsaved or being written.
    void whenSaved(std::function<void()> done);
    // Starts a save of pending changes now (on the writer thread, it completes
    // later), or when none are pending and no save is being written, calls the
    // `whenSaved` callbacks. The destructor waits for a save being written and
    // writes pending changes itself.
    void flush();

private:
    RingwellStore(const Clock& clock, std::optional<std::filesystem::path> file,
                  std::optional<DirectoryLock> lock, ErrorLog log);

    enum class Loaded { nothing, loaded };
    Result<Loaded> load();
    void seed();
    void save();
    void write();
    std::optional<std::string> writeNow() const;
    void startSave();
    void saveWritten(std::optional<std::string> error);
    void finishSave(std::optional<std::string> error, std::vector<std::function<void()>> waiters);
    void recordSaveResult(std::optional<std::string> error);
    std::string snapshotText() const;
    void notify(StoreChange change);
    void report(const std::string& message) const;

    const Clock& clock_;
    std::optional<std::filesystem::path> file_;
    std::optional<DirectoryLock> lock_;
    ErrorLog log_;

    std::vector<Channel> channels_;
    std::vector<FireEvent> events_;
    std::vector<std::string> encodedEvents_; // the JSON text of each event, in step with events_
    std::optional<std::string> setupWarning_;

    ObserverList<StoreChange> observers_;
    std::uint64_t saveCount_ = 0;
    std::optional<std::string> saveError_;

    FlushScheduler scheduleFlush_;
    std::unique_ptr<FileWriterThread> writer_;          // once saves are batched
    bool unsaved_ = false;                              // changes that no save has taken yet
    bool flushScheduled_ = false;                       // a flush is posted and has not run yet
    bool writing_ = false;                              // a save is on the writer thread
    std::vector<std::function<void()>> saveWaiters_;    // for the next save
    std::vector<std::function<void()>> writingWaiters_; // for the save being written
    // Lets a scheduled flush that runs after the store is gone do nothing.
    std::shared_ptr<RingwellStore*> self_ = std::make_shared<RingwellStore*>(this);
};

} // namespace ringwell
