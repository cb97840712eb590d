#include "Alarms/AlarmAuthorization.h"

namespace ringwell {

AlarmAuthorization::AlarmAuthorization(AlarmService& service)
    : service_(service), state_(service.authorizationState()) {}

AlarmAuthorization::~AlarmAuthorization() {
    if (serviceToken_)
        service_.stopObservingAuthorization(*serviceToken_);
}

void AlarmAuthorization::observe() {
    update(service_.authorizationState());
    if (!serviceToken_) {
        serviceToken_ =
            service_.observeAuthorization([this](AlarmAuthorizationState state) { update(state); });
    }
}

void AlarmAuthorization::update(AlarmAuthorizationState state) {
    if (state == state_)
        return;
    state_ = state;
    observers_.notify(state_);
}

} // namespace ringwell
