#pragma once

#include "Core/Date.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ringwell {

// The apps, and the phone bridges, that captured notifications came from since
// the daemon started: what the setup guide lists so that a person can pick an
// app to ring for. Bounded, so that a desktop of many apps (or a stream of
// made-up names) cannot grow it without end: the least recently seen entry
// makes way for a new one. Pure; main thread only in the daemon.
class CaptureSightings {
public:
    struct App {
        std::string name;
        std::uint64_t count = 0;
        Date lastSeen;
    };
    struct Bridge {
        // "KDE Connect" or "GSConnect".
        std::string kind;
        // The phone's name; empty when the bridge did not say.
        std::string device;
        Date lastSeen;
    };

    static constexpr std::size_t maxApps = 100;
    static constexpr std::size_t maxBridges = 10;

    // One notification of `app` (names compared ignoring case; the latest
    // spelling is kept). A blank name is not listed.
    void sawApp(const std::string& app, Date when);
    // One notification mirrored by a bridge from a device.
    void sawBridge(const std::string& kind, const std::string& device, Date when);

    // Most recently seen first.
    const std::vector<App>& apps() const { return apps_; }
    const std::vector<Bridge>& bridges() const { return bridges_; }

private:
    std::vector<App> apps_;
    std::vector<Bridge> bridges_;
};

} // namespace ringwell
