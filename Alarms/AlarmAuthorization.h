#pragma once

#include "Core/ObserverList.h"
#include "Shared/AlarmService.h"

#include <cstdint>
#include <optional>

namespace ringwell {

// The alarm permission as the screens show it, kept in step with the alarm
// service. It starts from the service's state when created; `observe` then
// follows the service's changes for as long as this object lives.
//
// Main thread only, like the service. Observers hear of a change only when the
// state really differs.
class AlarmAuthorization {
public:
    using Observer = ObserverList<AlarmAuthorizationState>::Observer;
    using Token = ObserverList<AlarmAuthorizationState>::Token;

    // `service` must outlive this object.
    explicit AlarmAuthorization(AlarmService& service);
    ~AlarmAuthorization();
    AlarmAuthorization(const AlarmAuthorization&) = delete;
    AlarmAuthorization& operator=(const AlarmAuthorization&) = delete;

    AlarmAuthorizationState state() const { return state_; }

    // Reads the service's current state, then follows every change it
    // reports. Calling it again only re-reads the state.
    void observe();

    [[nodiscard]] Token subscribe(Observer observer) { return observers_.subscribe(observer); }
    void unsubscribe(Token token) { observers_.unsubscribe(token); }

private:
    void update(AlarmAuthorizationState state);

    AlarmService& service_;
    AlarmAuthorizationState state_;
    std::optional<std::uint64_t> serviceToken_;
    ObserverList<AlarmAuthorizationState> observers_;
};

} // namespace ringwell
