#include "Core/CaptureSightings.h"

#include "Core/AppName.h"

#include <algorithm>

namespace ringwell {
namespace {

// Moves the entry `matches` finds to the front (or puts `fresh` there) and
// drops the least recent one past `limit`; the entry at the front.
template <typename Entry, typename Matches>
Entry& bringToFront(std::vector<Entry>& entries, Matches matches, Entry fresh, std::size_t limit) {
    auto found = std::find_if(entries.begin(), entries.end(), matches);
    if (found == entries.end()) {
        entries.insert(entries.begin(), std::move(fresh));
        if (entries.size() > limit)
            entries.pop_back();
    } else {
        std::rotate(entries.begin(), found, found + 1);
    }
    return entries.front();
}

} // namespace

void CaptureSightings::sawApp(const std::string& app, Date when) {
    const std::string name = cleanAppName(app);
    if (name.empty())
        return;
    App& entry = bringToFront(
        apps_, [&](const App& seen) { return isSameApp(seen.name, name); }, App{name, 0, when},
        maxApps);
    entry.name = name;
    ++entry.count;
    entry.lastSeen = when;
}

void CaptureSightings::sawBridge(const std::string& kind, const std::string& device, Date when) {
    Bridge& entry = bringToFront(
        bridges_, [&](const Bridge& seen) { return seen.kind == kind && seen.device == device; },
        Bridge{kind, device, when}, maxBridges);
    entry.lastSeen = when;
}

} // namespace ringwell
