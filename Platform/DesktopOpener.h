#pragma once

#include "Alarms/Logger.h"
#include "Alarms/NoticeCenter.h"

#include <string>

namespace ringwell {

// Opens Ringwell's web app in the person's browser when a notice is clicked
// ("default"): on the alarm for an alarm's notice, at its start for any
// other (the failure notice's "Open Ringwell").
//
// The browser is started with `xdg-open` (the program named by `opener`),
// which is not waited for on the main thread: a thread of its own only reaps
// it. A program that cannot be started is logged. Without the web app (`ringwell serve --no-web`) a
// click is only logged. Main thread only; the notice centre and logger must outlive it.
class DesktopOpener {
public:
    DesktopOpener(NoticeCenter& notices, Logger& logger, std::string webAddress,
                  std::string opener = "xdg-open");
    ~DesktopOpener();
    DesktopOpener(const DesktopOpener&) = delete;
    DesktopOpener& operator=(const DesktopOpener&) = delete;

    // The address a click on the notice `identifier` opens: the web app's
    // address, with "#alarm-<ID>" for an alarm's notice.
    static std::string addressFor(const std::string& webAddress, const std::string& identifier);

private:
    void open(const std::string& address);

    NoticeCenter& notices_;
    Logger& logger_;
    std::string webAddress_;
    std::string opener_;
    std::uint64_t token_ = 0;
};

} // namespace ringwell
