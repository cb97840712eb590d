#pragma once

#include "Model/FireEvent.h"
#include "TestSupport/Fakes/FakeClock.h"
#include "TestSupport/TemporaryDirectory.h"

#include <filesystem>
#include <string>

#include <sys/stat.h>

namespace ringwell::testing {

inline ino_t inodeOf(const std::filesystem::path& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0)
        return 0;
    return info.st_ino;
}

// A forwarded notification's event with the given outcome.
inline FireEvent makeEvent(FireOutcome outcome, std::optional<std::string> app,
                           std::optional<std::string> sender, Date at,
                           std::optional<std::string> title = std::string("Hello")) {
    FireEvent event;
    event.id = Uuid::random();
    event.app = std::move(app);
    event.sender = std::move(sender);
    event.title = std::move(title);
    event.receivedAt = at;
    event.firedAt = at;
    event.outcome = outcome;
    return event;
}

} // namespace ringwell::testing
