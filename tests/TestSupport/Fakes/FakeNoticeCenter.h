#pragma once

#include "Alarms/NoticeCenter.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace ringwell::testing {

// A notice centre that records what it is given. `failNext` makes the next
// post throw and `refuseAll` every post, as a notification server that
// refuses them.
class FakeNoticeCenter final : public NoticeCenter {
public:
    std::vector<NoticeRequest> posted; // every accepted notice, in order
    std::vector<std::string> withdrawn;
    bool failNext = false;
    bool refuseAll = false;
    std::string permission = "allowed";

    Awaitable<void> add(NoticeRequest request) override {
        if (failNext || refuseAll) {
            failNext = false;
            throw std::runtime_error("the notification server refused the notice");
        }
        posted.push_back(std::move(request));
        co_return;
    }

    Awaitable<void> withdraw(std::string identifier) override {
        withdrawn.push_back(std::move(identifier));
        co_return;
    }

    std::string permissionStatus() const override { return permission; }

    // As the person answering a notice on the desktop.
    void answer(const NoticeResponse& response) { respond(response); }
};

} // namespace ringwell::testing
