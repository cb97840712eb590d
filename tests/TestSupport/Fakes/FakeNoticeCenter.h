#pragma once

#include "Alarms/NoticeCenter.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

namespace ringwell::testing {

// A notice centre that keeps what is on show: a notice with the identifier of
// one still shown replaces it, as on a desktop. `failNext` makes the next
// post throw, as a notification server that refuses it.
class FakeNoticeCenter final : public NoticeCenter {
public:
    std::vector<NoticeRequest> posted; // every accepted notice, in order
    std::vector<NoticeRequest> shown;  // what is on show now
    bool failNext = false;
    std::string permission = "allowed";

    Awaitable<void> add(NoticeRequest request) override {
        if (failNext) {
            failNext = false;
            throw std::runtime_error("the notification server refused the notice");
        }
        posted.push_back(request);
        auto same = std::find_if(shown.begin(), shown.end(), [&](const NoticeRequest& notice) {
            return notice.identifier == request.identifier;
        });
        if (same != shown.end())
            *same = std::move(request);
        else
            shown.push_back(std::move(request));
        co_return;
    }

    Awaitable<void> withdraw(std::string identifier) override {
        withdrawn.push_back(identifier);
        std::erase_if(shown,
                      [&](const NoticeRequest& notice) { return notice.identifier == identifier; });
        co_return;
    }

    std::string permissionStatus() const override { return permission; }

    // As the person answering a notice on the desktop.
    void answer(const NoticeResponse& response) { respond(response); }

    std::vector<std::string> withdrawn;
};

} // namespace ringwell::testing
