#include "Platform/DesktopOpener.h"

#include "Platform/AlarmNotice.h"

#include <spawn.h>
#include <sys/wait.h>

#include <cstring>
#include <thread>

extern char** environ;

namespace ringwell {
namespace {

constexpr const char* logCategory = "Notices";

} // namespace

DesktopOpener::DesktopOpener(NoticeCenter& notices, Logger& logger, std::string webAddress,
                             std::string opener)
    : notices_(notices), logger_(logger), webAddress_(std::move(webAddress)),
      opener_(std::move(opener)) {
    token_ = notices_.observeResponses([this](const NoticeResponse& response) {
        if (response.kind == NoticeResponse::Kind::action &&
            response.actionKey == AlarmNotice::openAction)
            open(addressFor(webAddress_, response.identifier));
    });
}

DesktopOpener::~DesktopOpener() {
    notices_.stopObservingResponses(token_);
}

std::string DesktopOpener::addressFor(const std::string& webAddress,
                                      const std::string& identifier) {
    if (webAddress.empty() || !AlarmNotice::alarmOf(identifier))
        return webAddress;
    return webAddress + "#" + identifier;
}

void DesktopOpener::open(const std::string& address) {
    if (address.empty()) {
        logger_.log(LogLevel::notice, logCategory,
                    "A notice was clicked, but the web app is off (--no-web)");
        return;
    }
    std::string program = opener_;
    std::string argument = address;
    char* argv[] = {program.data(), argument.data(), nullptr};
    pid_t child = 0;
    const int error = ::posix_spawnp(&child, program.c_str(), nullptr, nullptr, argv, environ);
    if (error != 0) {
        logger_.log(LogLevel::error, logCategory,
                    "Cannot run " + program + " to open the web app: " + std::strerror(error));
        return;
    }
    // Reaped on a thread of its own, which touches nothing else: the opener
    // may be gone by the time the browser's launcher ends.
    std::thread([child] { ::waitpid(child, nullptr, 0); }).detach();
}

} // namespace ringwell
