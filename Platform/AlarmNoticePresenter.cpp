#include "Platform/AlarmNoticePresenter.h"

#include "Platform/AlarmNotice.h"
#include "Shared/AlarmButtons.h"

#include <exception>

namespace ringwell {
namespace {

constexpr const char* logCategory = "Notices";

} // namespace

AlarmNoticePresenter::AlarmNoticePresenter(asio::io_context& context, NoticeCenter& notices,
                                           AlarmService& service, Logger& logger,
                                           CalendarSource calendar)
    : context_(context), notices_(notices), service_(service), logger_(logger),
      calendar_(std::move(calendar)) {
    responseToken_ =
        notices_.observeResponses([this](const NoticeResponse& response) { answer(response); });
}

AlarmNoticePresenter::~AlarmNoticePresenter() {
    alive_.reset();
    notices_.stopObservingResponses(responseToken_);
}

void AlarmNoticePresenter::log(LogLevel level, const std::string& message) {
    logger_.log(level, logCategory, message);
}

void AlarmNoticePresenter::show(const std::vector<Alarm>& alarms) {
    std::set<Uuid> held;
    for (const auto& alarm : alarms) {
        held.insert(alarm.id);
        if (alarm.state == AlarmState::alerting)
            hasRung_.insert(alarm.id);
    }
    std::erase_if(hasRung_, [&](const Uuid& id) { return !held.count(id); });

    std::map<std::string, NoticeRequest> wanted;
    std::optional<Calendar> calendar; // looked up once, and only when needed
    for (const auto& alarm : alarms) {
        if (AlarmNotice::isShown(alarm, alarms, hasRung_)) {
            if (!calendar)
                calendar = calendar_();
            auto notice = AlarmNotice::make(alarm, *calendar);
            auto identifier = notice.identifier;
            wanted.emplace(std::move(identifier), std::move(notice));
        }
    }
    // A notice that says something new may be taken away (and posted again)
    // as often as before.
    std::erase_if(reposts_, [&](const auto& entry) {
        auto now = wanted.find(entry.first);
        auto before = wanted_.find(entry.first);
        return now == wanted.end() || before == wanted_.end() || now->second != before->second;
    });
    wanted_ = std::move(wanted);
    publish();
}

void AlarmNoticePresenter::answer(const NoticeResponse& response) {
    auto alarm = AlarmNotice::alarmOf(response.identifier);
    if (!alarm || !wanted_.count(response.identifier))
        return;
    std::optional<AlarmButtonKey> button;
    switch (response.kind) {
    case NoticeResponse::Kind::action:
        button = alarmButtonFromRaw(response.actionKey);
        break;
    case NoticeResponse::Kind::dismissed:
        shown_.erase(response.identifier);
        button = AlarmButtonKey::stop;
        break;
    case NoticeResponse::Kind::closedBySystem:
        shown_.erase(response.identifier);
        if (++reposts_[response.identifier] > mostRepostsPerNotice) {
            // Kept as shown, so that it is not posted again until it changes.
            shown_[response.identifier] = wanted_[response.identifier];
            if (reposts_[response.identifier] == mostRepostsPerNotice + 1)
                log(LogLevel::error, "The desktop keeps taking away the notice of alarm " +
                                         alarm->toString() + ": it is not posted again");
        }
        publish();
        return;
    }
    if (!button)
        return;
    try {
        press(service_, *alarm, *button);
    } catch (const AlarmServiceError& error) {
        log(LogLevel::error, "The notice's " + std::string(rawValue(*button)) +
                                 " button could not act on alarm " + alarm->toString() + ": " +
                                 error.what());
    }
}

void AlarmNoticePresenter::publish() {
    if (publishing_)
        return;
    publishing_ = true;
    asio::co_spawn(context_, publishAll(notices_, alive_),
                   reportEscaped(
                       [this, alive = std::weak_ptr<int>(alive_)](const std::string& message) {
                           if (!alive.expired()) {
                               publishing_ = false;
                               log(LogLevel::error, message);
                           }
                       },
                       "Showing the alarm notices"));
}

// One notice call at a time until what is on show is what is wanted; the maps
// may change at every suspension.
// The notice centre comes as an argument: the coroutine may start after the
// presenter is gone.
Awaitable<void> AlarmNoticePresenter::publishAll(NoticeCenter& notices, std::weak_ptr<int> alive) {
    while (!alive.expired()) {
        std::optional<std::string> withdrawal;
        std::optional<NoticeRequest> post;
        for (const auto& [identifier, notice] : shown_) {
            if (!wanted_.count(identifier)) {
                withdrawal = identifier;
                break;
            }
        }
        if (!withdrawal) {
            for (const auto& [identifier, notice] : wanted_) {
                auto current = shown_.find(identifier);
                if (current == shown_.end() || current->second != notice) {
                    post = notice;
                    break;
                }
            }
        }
        if (withdrawal) {
            shown_.erase(*withdrawal);
            co_await notices.withdraw(*withdrawal);
        } else if (post) {
            shown_[post->identifier] = *post;
            try {
                co_await notices.add(*post);
            } catch (const std::exception& error) {
                // Kept as shown: a refused notice is not retried until it changes.
                if (!alive.expired())
                    log(LogLevel::error,
                        std::string("The alarm notice could not be shown: ") + error.what());
            }
        } else {
            break;
        }
    }
    if (!alive.expired())
        publishing_ = false;
}

} // namespace ringwell
