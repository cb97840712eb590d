#pragma once

#include <chrono>
#include <map>
#include <string>

namespace ringwell {

// A token bucket per key (a device's name): each request takes one token;
// tokens come back at `perSecond` up to `burst`. A key starts with a full
// bucket. Pure: the caller passes the time. Main thread only.
class RateLimiter {
public:
    using Clock = std::chrono::steady_clock;

    RateLimiter(double perSecond, double burst) : perSecond_(perSecond), burst_(burst) {}

    // Takes a token for `key` at `now`; false when its bucket is empty.
    bool take(const std::string& key, Clock::time_point now);
    // Drops the key's bucket (a removed device).
    void forget(const std::string& key) { buckets_.erase(key); }

private:
    struct Bucket {
        double tokens;
        Clock::time_point updated;
    };
    double perSecond_;
    double burst_;
    std::map<std::string, Bucket> buckets_;
};

} // namespace ringwell
