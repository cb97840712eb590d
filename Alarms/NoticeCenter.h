#pragma once

#include "Shared/Asio.h"

#include <string>

namespace ringwell {

// One local notice: delivered at once, with no sound, badge or actions. A notice
// with the identifier of one still shown replaces it.
struct NoticeRequest {
    std::string identifier;
    std::string title;
    std::string body;
    std::string threadIdentifier;
    bool operator==(const NoticeRequest&) const = default;
};

// Where local notices go: desktop notifications on the session bus
// (Platform/NotifierDBus), the log when there is no session bus, a recording
// fake in tests. Main thread only; `add` resumes there and throws
// std::runtime_error when the notification server refuses the notice.
class NoticeCenter {
public:
    virtual ~NoticeCenter() = default;
    virtual Awaitable<void> add(NoticeRequest request) = 0;
    // "allowed" when a notification server answers, "denied", "not requested"
    // or "unknown": the notifications permission of the diagnostics report.
    virtual std::string permissionStatus() const = 0;
};

} // namespace ringwell
