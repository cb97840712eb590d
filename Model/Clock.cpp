#include "Model/Clock.h"

#include <chrono>

namespace ringwell {

Date SystemClock::now() const {
    using namespace std::chrono;
    const auto sinceEpoch = system_clock::now().time_since_epoch();
    return Date::fromUnixSeconds(duration<double>(sinceEpoch).count());
}

} // namespace ringwell
