#pragma once

#include "Alarms/AlarmAuthorization.h"
#include "Alarms/AlarmScheduler.h"
#include "Alarms/Logger.h"
#include "Alarms/NoticeCenter.h"
#include "Alarms/RoutingBudget.h"
#include "Alarms/SetupTestController.h"
#include "Alarms/UserDefaults.h"
#include "Core/Calendar.h"
#include "Model/Clock.h"
#include "Model/RingwellStore.h"
#include "Shared/AlarmService.h"

#include <functional>

namespace ringwell {

// The long-lived objects the app's logic works with. The daemon builds one
// from the real implementations on its main thread and keeps it, and every
// object it names, alive for as long as anything runs on the io_context;
// tests build one from fakes. Nothing in the app's logic reaches these
// objects any other way.
struct AppContext {
    RingwellStore& store;
    AlarmService& alarmService;
    AlarmScheduler& scheduler;
    AlarmAuthorization& authorization;
    SetupTestController& setupTest;
    NoticeCenter& notices;
    UserDefaults& defaults;
    Logger& logger;
    const Clock& clock;
    // The person's calendar, asked for each notification. The daemon's is in
    // ICU's default zone (TZ, else the system's), which ICU reads once per
    // process: a change of the system's time zone takes effect at the next
    // start of the daemon.
    std::function<Calendar()> calendar = [] { return Calendar::userDefault(); };
    // The clock of the matching budgets (routingBudget): this thread's CPU
    // time in the daemon; tests give one that runs out on cue.
    MatchBudget::MonotonicSource matchingClock = threadCpuTime;
};

} // namespace ringwell
