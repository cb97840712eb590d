#pragma once

#include "Model/Clock.h"

namespace ringwell::testing {

// A clock that stands still until the test moves it.
class FakeClock final : public Clock {
public:
    explicit FakeClock(Date start = Date{760000000}) : now_(start) {}
    Date now() const override { return now_; }
    void advance(double seconds) { now_ = now_.addingSeconds(seconds); }
    void set(Date date) { now_ = date; }

private:
    Date now_;
};

} // namespace ringwell::testing
