#pragma once

#include "Core/Date.h"

namespace ringwell {

// Where the model layer (and the layers above it) read the current time, so
// that tests can pin and advance it. The real implementation is SystemClock
// below; tests use a fake clock with an `advance` control.
//
// Implementations are read from the daemon's main thread; SystemClock may be
// read from any thread.
class Clock {
public:
    virtual ~Clock() = default;
    virtual Date now() const = 0;
};

// The system's wall clock (CLOCK_REALTIME).
class SystemClock final : public Clock {
public:
    Date now() const override;
};

} // namespace ringwell
