#include "Platform/JournalLogger.h"

#include <systemd/sd-journal.h>

#include <cerrno>
#include <system_error>
#include <vector>

#include <sys/uio.h>
#include <unistd.h>

namespace ringwell {

JournalLogger::JournalLogger(const std::filesystem::path& socket, int fallbackFd)
    : fallbackFd_(fallbackFd) {
    std::error_code error;
    useJournal_ = std::filesystem::exists(socket, error);
}

std::string_view JournalLogger::levelName(LogLevel level) {
    switch (level) {
    case LogLevel::debug:
        return "debug";
    case LogLevel::info:
        return "info";
    case LogLevel::notice:
        return "notice";
    case LogLevel::error:
        return "error";
    }
    return "info";
}

int JournalLogger::priority(LogLevel level) {
    switch (level) {
    case LogLevel::debug:
        return 7;
    case LogLevel::info:
        return 6;
    case LogLevel::notice:
        return 5;
    case LogLevel::error:
        return 3;
    }
    return 6;
}

std::string JournalLogger::formatLine(LogLevel level, std::string_view category,
                                      std::string_view message) {
    std::string line = "ringwell[";
    line.append(category);
    line += "] ";
    line.append(levelName(level));
    line += ": ";
    for (char c : message) {
        if (c == '\n')
            line += "\\n";
        else
            line += c;
    }
    line += '\n';
    return line;
}

void JournalLogger::log(LogLevel level, std::string_view category, std::string_view message) {
    if (useJournal_ && sendToJournal(level, category, message))
        return;
    writeFallback(formatLine(level, category, message));
}

bool JournalLogger::sendToJournal(LogLevel level, std::string_view category,
                                  std::string_view message) {
    // sd_journal_sendv takes whole "FIELD=value" items, so a message with
    // line breaks or '%' goes through untouched.
    const std::vector<std::string> fields = {
        "MESSAGE=" + std::string(message),
        "PRIORITY=" + std::to_string(priority(level)),
        "SYSLOG_IDENTIFIER=ringwell",
        "RINGWELL_SUBSYSTEM=" + std::string(logSubsystem),
        "RINGWELL_CATEGORY=" + std::string(category),
    };
    std::vector<iovec> items;
    items.reserve(fields.size());
    for (const auto& field : fields)
        items.push_back(iovec{const_cast<char*>(field.data()), field.size()});
    return sd_journal_sendv(items.data(), static_cast<int>(items.size())) >= 0;
}

void JournalLogger::writeFallback(const std::string& line) {
    std::lock_guard lock(mutex_);
    std::size_t written = 0;
    while (written < line.size()) {
        const ssize_t count = ::write(fallbackFd_, line.data() + written, line.size() - written);
        if (count < 0) {
            if (errno == EINTR)
                continue;
            return; // nowhere left to report a failing log
        }
        written += static_cast<std::size_t>(count);
    }
}

} // namespace ringwell
