#pragma once

#include "Core/Uuid.h"
#include "Shared/AlarmService.h"

#include <vector>

namespace ringwell {

// Makes a ringing alarm harder to miss: Platform/LocalAlarmService in the
// daemon, a recording fake in tests. Main thread.
class AlarmAmplifier {
public:
    virtual ~AlarmAmplifier() = default;
    // Raises the volume the alarm `id` (or the alarm of its chain that rings
    // now) is heard at by `percent`, up to full volume, and plays `sound`
    // from now on when it names one.
    virtual void louder(const std::vector<Uuid>& alarms, int percent, AlarmSound sound) = 0;
};

} // namespace ringwell
