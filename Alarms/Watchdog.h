#pragma once

#include "Alarms/AppContext.h"
#include "Core/Result.h"
#include "Core/WatchExpectation.h"
#include "Model/FireEvent.h"
#include "Shared/Asio.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ringwell {

// Watches the forwarding of chosen apps: when a watched app sends nothing for
// longer than its expectation allows, Ringwell posts the notice "No
// notifications from APP since TIME — is forwarding still working?" and
// records a `silent` event, once per silence; the next notification from the
// app ends the silence. The watches, when each app was last heard from and
// which silences were told are kept in the settings, so a restart forgets
// none of them. A watch on "device:NAME" is heard from by every notification
// the LAN device NAME sends; a watch may name a channel that rings when its
// silence is told, instead of the notice.
//
// The desktop's capture is watched without asking: when it stops working
// after it worked (the bus went away, the monitor was refused), the same
// notice is posted once, and it is cleared when capture works again.
//
// It hears every forwarded notification through the store's log. Main thread
// only; `ctx` must outlive it. The daemon calls `check` once a minute.
class Watchdog {
public:
    explicit Watchdog(AppContext& ctx);
    ~Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

    // One watch as the list shows it.
    struct Status {
        WatchExpectation watch;
        std::optional<Date> lastHeard;
        std::optional<Date> dueAt; // when the current silence misses the expectation
        bool isSilent = false;     // the silence was told and has not ended
    };
    std::vector<Status> list() const;

    // Adds the watch, or replaces the app's watch, starting its clock now.
    // Invalid input when `problem` finds one.
    Result<WatchExpectation> add(WatchExpectation watch);
    // Whether the app had a watch.
    bool remove(std::string_view app);

    // A notification from `app` arrived at `at`: its silence, if any, ends.
    // Apps without a watch are not remembered.
    void heard(std::string_view app, Date at);

    // Watches the desktop's capture: `stopped` tells whether it is on but not
    // working, and is asked at every `check`.
    void watchCapture(std::function<bool()> stopped);
    // Since when capture has been silent, once that silence was told.
    std::optional<Date> captureSilentSince() const;

    // Tells every silence that is due and not yet told: a notice (one whose
    // posting fails is logged) and a `silent` event, which it returns.
    Awaitable<std::vector<FireEvent>> check();

private:
    Date silenceStart(const WatchExpectation& watch) const;
    void save();
    // Records the `silent` event and posts the notice, or rings `ring`.
    Awaitable<FireEvent> tell(std::string app, Date start, std::optional<Uuid> ring);
    Awaitable<void> notify(std::string app, std::string text);

    AppContext& ctx_;
    std::vector<WatchExpectation> watches_;
    std::map<std::string, Date> lastHeard_; // by app, lower case
    std::map<std::string, Date> told_;      // the silence start told, by app
    RingwellStore::ObserverToken storeToken_;
    std::function<bool()> captureStopped_;
    std::optional<Date> captureWorked_; // the last check that found it working
    bool captureTold_ = false;
};

} // namespace ringwell
