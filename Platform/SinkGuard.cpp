#include "Platform/SinkGuard.h"

#include "Core/Json.h"
#include "Platform/JsonFile.h"

#include <cmath>

namespace ringwell {
namespace {

std::string percent(double volume) {
    return std::to_string(std::lround(volume * 100)) + "%";
}

std::string describe(SinkLevel level) {
    return (level.muted ? "muted at " : "") + percent(level.volume);
}

} // namespace

SinkGuard::SinkGuard(PulseConnection& pulse, std::filesystem::path file,
                     std::function<void(const std::string&)> log)
    : pulse_(pulse), file_(std::move(file)), log_(std::move(log)) {}

bool SinkGuard::save() {
    auto written = JsonFile::write(file_, toJson(*saved_));
    if (!written)
        log_("Saving the sink's level failed: " + written.error().message);
    return written.ok();
}

bool SinkGuard::apply(const PulseSink& sink, SinkLevel level) {
    saved_->previous = saved_->applied;
    saved_->applied = level;
    // Without a record of what it was, a sink is better left alone.
    if (!save()) {
        fade_.clear();
        return false;
    }
    return pulse_.setSinkLevel(sink, level);
}

void SinkGuard::begin(std::uint32_t index, const BreakthroughSettings& settings) {
    if (saved_) {
        raiseFurther(settings);
        return;
    }
    auto sink = pulse_.sinkByIndex(index);
    if (!sink)
        return;
    auto target = SinkBreakthrough::target(sink->level, settings, sink->headphones);
    if (!target)
        return;
    auto steps = SinkBreakthrough::fadeSteps(sink->level, *target);
    saved_ = SavedSink{sink->name, sink->level, sink->level, std::nullopt};
    fade_.assign(steps.begin(), steps.end());
    log_("Raising " + sink->name + " from " + describe(sink->level) + " to " + describe(*target) +
         " while the alarm rings");
    step();
}

void SinkGuard::raiseFurther(const BreakthroughSettings& settings) {
    auto sink = pulse_.sinkByName(saved_->sink);
    if (!sink || !SinkBreakthrough::untouched(sink->level, *saved_))
        return;
    auto target = SinkBreakthrough::target(sink->level, settings, sink->headphones);
    if (!target)
        return;
    auto steps = SinkBreakthrough::fadeSteps(sink->level, *target);
    fade_.assign(steps.begin(), steps.end());
    log_("Raising " + sink->name + " further to " + describe(*target) + " while the alarm rings");
    step();
}

std::optional<SinkGuard::Clock::time_point> SinkGuard::nextStep() const {
    if (fade_.empty())
        return std::nullopt;
    return nextStep_;
}

void SinkGuard::step() {
    if (!saved_ || fade_.empty())
        return;
    auto sink = pulse_.sinkByName(saved_->sink);
    if (!sink || !SinkBreakthrough::untouched(sink->level, *saved_)) {
        // The person (or the server) moved the sink: theirs stands.
        fade_.clear();
        return;
    }
    apply(*sink, fade_.front());
    fade_.pop_front();
    nextStep_ = Clock::now() + std::chrono::milliseconds(SinkBreakthrough::fadeStepMilliseconds);
}

void SinkGuard::finish(const SavedSink& saved) {
    auto sink = pulse_.sinkByName(saved.sink);
    if (!sink)
        return; // gone, or the server is: the file waits for the next connection
    if (auto level = SinkBreakthrough::restore(sink->level, saved)) {
        if (!pulse_.setSinkLevel(*sink, *level))
            return;
        log_("Put " + saved.sink + " back to " + describe(*level));
    } else {
        log_("Left " + saved.sink + " as the person set it");
    }
    std::error_code ignored;
    std::filesystem::remove(file_, ignored);
}

void SinkGuard::end() {
    fade_.clear();
    if (!saved_)
        return;
    finish(*saved_);
    saved_.reset();
}

void SinkGuard::restoreLeftover() {
    if (saved_)
        return;
    auto saved = JsonFile::loadOrQuarantine(file_, savedSinkFromJson, log_);
    if (!saved)
        return;
    log_("The sink " + saved->sink + " was left raised by an alarm; putting it back");
    finish(*saved);
}

} // namespace ringwell
