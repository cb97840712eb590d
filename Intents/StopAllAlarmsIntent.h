#pragma once

#include "Alarms/AppContext.h"

#include <string_view>

namespace ringwell {

// "Stop All Ringwell Alarms": cancels every alarm the service holds; the
// activity log is left alone. It never fails.
struct StopAllAlarmsIntent {
    static constexpr std::string_view title = "Stop All Ringwell Alarms";

    void perform(AppContext& ctx) const { ctx.scheduler.stopAll(); }
};

} // namespace ringwell
