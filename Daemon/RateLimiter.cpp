#include "Daemon/RateLimiter.h"

#include <algorithm>

namespace ringwell {

bool RateLimiter::take(const std::string& key, Clock::time_point now) {
    auto [entry, added] = buckets_.try_emplace(key, Bucket{burst_, now});
    Bucket& bucket = entry->second;
    if (!added && now > bucket.updated) {
        std::chrono::duration<double> elapsed = now - bucket.updated;
        bucket.tokens = std::min(burst_, bucket.tokens + elapsed.count() * perSecond_);
        bucket.updated = now;
    }
    if (bucket.tokens < 1.0)
        return false;
    bucket.tokens -= 1.0;
    return true;
}

} // namespace ringwell
