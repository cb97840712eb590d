#pragma once

#include "Alarms/NotificationSource.h"

#include <stdexcept>
#include <utility>

namespace ringwell::testing {

// A notification source driven by the test: `deliver` hands one notification
// to the listener, as a captured one would arrive. Delivering while stopped
// fails loudly, because the real source never calls a stopped listener.
class FakeNotificationSource final : public NotificationSource {
public:
    void start(Listener listener) override { listener_ = std::move(listener); }
    void stop() override { listener_ = nullptr; }
    CaptureStatus status() const override { return current; }

    bool running() const { return listener_ != nullptr; }
    void deliver(ShortcutInputFields fields, std::optional<PhoneBridge> bridge = std::nullopt) {
        if (!listener_)
            throw std::logic_error("the source is stopped");
        ++current.seen;
        listener_({std::move(fields), std::move(bridge)});
    }

    CaptureStatus current{true, "fake", "1", 0, ""};

private:
    Listener listener_;
};

} // namespace ringwell::testing
