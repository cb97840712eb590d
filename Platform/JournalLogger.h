#pragma once

#include "Alarms/Logger.h"

#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>

namespace ringwell {

// The daemon's log. When the journal's socket exists, each line is one
// journal entry with MESSAGE, PRIORITY, SYSLOG_IDENTIFIER=ringwell and the
// fields RINGWELL_SUBSYSTEM (logSubsystem) and RINGWELL_CATEGORY. Otherwise,
// or when the journal refuses an entry, the line goes to a file descriptor
// (standard error) as "ringwell[<category>] <level>: <message>".
//
// Thread-safe: every line is written whole, with one call.
class JournalLogger final : public Logger {
public:
    static constexpr const char* journalSocket = "/run/systemd/journal/socket";

    // `socket` decides whether the journal is used; `fallbackFd` receives the
    // lines otherwise (it stays open and owned by the caller).
    explicit JournalLogger(const std::filesystem::path& socket = journalSocket, int fallbackFd = 2);

    void log(LogLevel level, std::string_view category, std::string_view message) override;
    bool usesJournal() const { return useJournal_; }

    // "ringwell[SendToRingwell] notice: message\n"; line breaks inside the
    // message are kept as "\n" text so that one entry stays one line.
    static std::string formatLine(LogLevel level, std::string_view category,
                                  std::string_view message);
    // "debug", "info", "notice", "error".
    static std::string_view levelName(LogLevel level);
    // The syslog priority: 7, 6, 5, 3.
    static int priority(LogLevel level);

private:
    bool sendToJournal(LogLevel level, std::string_view category, std::string_view message);
    void writeFallback(const std::string& line);

    bool useJournal_ = false;
    int fallbackFd_ = 2;
    std::mutex mutex_;
};

} // namespace ringwell
