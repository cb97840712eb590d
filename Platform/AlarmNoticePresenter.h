#pragma once

#include "Alarms/Logger.h"
#include "Alarms/NoticeCenter.h"
#include "Core/Calendar.h"
#include "Shared/AlarmService.h"
#include "Shared/Asio.h"

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace ringwell {

// Keeps the desktop notices of the alarms in step with the alarms, and answers
// what the person does with them.
//
// `show` is told every change of the alarms held; the notices then follow, one
// call at a time: a notice is posted for each alarm that has one (see
// AlarmNotice::isShown), replaced when what it says changes, and withdrawn
// when its alarm stops, is cancelled or snoozes.
//
// Responses: a button runs the alarm's own button (Shared/AlarmButtons), as the
// web app's do; the person closing the notice counts as Stop; a notice the
// desktop took away while its alarm still has one is posted again (a few
// times at most, so a server that drops every notice cannot make a loop).
// A click on the notice itself ("default") is left to whoever opens the web
// app.
//
// Main thread only. The notice centre, service and logger must outlive it;
// work still under way when it is destroyed ends without touching it.
class AlarmNoticePresenter {
public:
    static constexpr int mostRepostsPerNotice = 3;
    using CalendarSource = std::function<Calendar()>;

    AlarmNoticePresenter(asio::io_context& context, NoticeCenter& notices, AlarmService& service,
                         Logger& logger, CalendarSource calendar);
    ~AlarmNoticePresenter();
    AlarmNoticePresenter(const AlarmNoticePresenter&) = delete;
    AlarmNoticePresenter& operator=(const AlarmNoticePresenter&) = delete;

    // The alarms held now.
    void show(const std::vector<Alarm>& alarms);

private:
    void answer(const NoticeResponse& response);
    void publish();
    Awaitable<void> publishAll(NoticeCenter& notices, std::weak_ptr<int> alive);
    void log(LogLevel level, const std::string& message);

    asio::io_context& context_;
    NoticeCenter& notices_;
    AlarmService& service_;
    Logger& logger_;
    CalendarSource calendar_;
    std::uint64_t responseToken_ = 0;

    // By notice identifier: what should be on show, and what was last posted.
    std::map<std::string, NoticeRequest> wanted_;
    std::map<std::string, NoticeRequest> shown_;
    std::map<std::string, int> reposts_;
    std::set<Uuid> hasRung_;
    bool publishing_ = false;
    std::shared_ptr<int> alive_ = std::make_shared<int>(0);
};

} // namespace ringwell
