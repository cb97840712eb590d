#pragma once

#include "Core/ObserverList.h"
#include "Shared/Asio.h"

#include <optional>
#include <string>
#include <vector>

namespace ringwell {

// A button of a notice. The key "default" is a click on the notice itself.
struct NoticeAction {
    std::string key;
    std::string label;
    bool operator==(const NoticeAction&) const = default;
};

// What a notice is for. An alarm's notice is urgent: it stays until the alarm
// is dealt with and asks to be let through do-not-disturb.
enum class NoticeKind { information, alarm };

// One local notice: delivered at once, with no sound or badge of its own. A
// notice with the identifier of one still shown replaces it.
struct NoticeRequest {
    std::string identifier;
    std::string title;
    std::string body;
    std::string threadIdentifier;
    std::vector<NoticeAction> actions = {};
    NoticeKind kind = NoticeKind::information;
    bool operator==(const NoticeRequest&) const = default;
};

// What the person (or the desktop) did with a shown notice.
struct NoticeResponse {
    enum class Kind {
        action,         // a button or the notice itself was clicked: `actionKey`
        dismissed,      // the person closed it
        closedBySystem, // the desktop took it away (expired, replaced, tidied up)
    };
    std::string identifier;
    Kind kind = Kind::action;
    std::string actionKey;
    bool operator==(const NoticeResponse&) const = default;
};

// The notification server on show, as far as it tells: its name and whether
// it is holding notices back (do-not-disturb) when it says so.
struct NoticeServer {
    std::string name;
    std::string vendor;
    std::string version;
    std::optional<bool> doNotDisturb;
    bool operator==(const NoticeServer&) const = default;
};

// Where local notices go: desktop notifications on the session bus
// (Platform/NotifierDBus), the log when there is no session bus, a recording
// fake in tests. Main thread only; `add` resumes there and throws
// std::runtime_error when the notification server refuses the notice.
// Responses are told to the observers on the main thread, for notices still
// shown only (never for one withdrawn).
class NoticeCenter {
public:
    using ResponseObserver = ObserverList<NoticeResponse>::Observer;

    virtual ~NoticeCenter() = default;
    virtual Awaitable<void> add(NoticeRequest request) = 0;
    // Takes the notice with this identifier off the screen, if it is shown.
    // Never fails: a notice that cannot be withdrawn is only logged.
    virtual Awaitable<void> withdraw(std::string identifier) = 0;
    // "allowed" when a notification server answers, "unreachable" when none
    // does (no session bus, or nobody serving notifications), "denied", "not
    // requested" or "unknown": the notifications permission of the
    // diagnostics report.
    virtual std::string permissionStatus() const = 0;
    // The notification server, when one answers.
    virtual std::optional<NoticeServer> server() const { return std::nullopt; }

    [[nodiscard]] std::uint64_t observeResponses(ResponseObserver observer) {
        return responses_.subscribe(std::move(observer));
    }
    void stopObservingResponses(std::uint64_t token) { responses_.unsubscribe(token); }

protected:
    void respond(const NoticeResponse& response) { responses_.notify(response); }

private:
    ObserverList<NoticeResponse> responses_;
};

} // namespace ringwell
