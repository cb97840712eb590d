// `ringwell-daemon`, started by `ringwell serve`: wires the real
// implementations together on one io_context and serves the local API until
// SIGINT or SIGTERM.

#include "Alarms/AlarmAuthorization.h"
#include "Alarms/AlarmScheduler.h"
#include "Alarms/AppContext.h"
#include "Alarms/SetupTestController.h"
#include "Daemon/Api.h"
#include "Daemon/HttpServer.h"
#include "Daemon/RuntimePaths.h"
#include "Model/AlarmTone.h"
#include "Model/DirectoryLock.h"
#include "Model/RingwellStore.h"
#include "Platform/AudioPulse.h"
#include "Platform/BundledSounds.h"
#include "Platform/JournalLogger.h"
#include "Platform/LocalAlarmService.h"
#include "Platform/NotifierDBus.h"
#include "Platform/SettingsFile.h"
#include "Platform/SystemInfo.h"
#include "Shared/Asio.h"

#include <boost/asio/signal_set.hpp>

#include <csignal>
#include <cstring>
#include <iostream>
#include <memory>

namespace ringwell {
namespace {

constexpr const char* usage = R"(Usage: ringwell serve

Runs Ringwell in the foreground: it receives forwarded notifications, rings
alarms and serves the local API on $XDG_RUNTIME_DIR/ringwell/ringwell.sock.
One daemon runs per user. Ctrl-C or SIGTERM stops it cleanly.
)";

int fail(const std::string& message) {
    std::cerr << "ringwell serve: " << message << '\n';
    return 1;
}

ErrorLog categoryLog(Logger& logger, std::string_view category) {
    return [&logger, category](const std::string& message) {
        logger.log(LogLevel::error, category, message);
    };
}

int run() {
    asio::io_context io;
    JournalLogger logger;

    auto runtime = makePrivateDirectory(runtimeDirectory());
    if (!runtime)
        return fail(runtime.error().message);
    // One daemon per user: the runtime directory's lock guards the socket.
    auto instance = DirectoryLock::acquire(runtime.value());
    if (!instance)
        return fail(instance.error().message + " (is `ringwell serve` already running?)");

    SystemClock clock;
    auto store = RingwellStore::openDefault(clock, categoryLog(logger, "Store"));
    if (!store)
        return fail(store.error().message);
    auto files = LocalAlarmService::defaultFiles();
    auto settingsPath = SettingsFile::defaultPath();
    if (!files || !settingsPath)
        return fail("neither XDG_DATA_HOME/XDG_CONFIG_HOME nor HOME names a directory to keep "
                    "Ringwell's files in");

    // Start-up order: the notice presenter first, then the tones, then serving.
    NotifierDBus notices(io, logger);
    AlarmTones::install(BundledSounds::directory(), files->sounds,
                        categoryLog(logger, "AlarmTone"));

    SettingsFile defaults(*settingsPath, logger);
    AudioPulse audio(io);
    LocalAlarmService alarmService(io, clock, audio, notices, logger, *files);
    AlarmScheduler scheduler(alarmService, *store.value(), clock);
    AlarmAuthorization authorization(alarmService);
    authorization.observe();
    SetupTestController setupTest(defaults, clock);
    AppContext ctx{*store.value(), alarmService, scheduler, authorization, setupTest,
                   notices,        defaults,     logger,    clock};
    Api api(ctx, {SystemInfo::osVersion(), SystemInfo::deviceModel()});

    std::unique_ptr<HttpServer> server;
    try {
        server = std::make_unique<HttpServer>(io, socketPath(), [&api](ApiRequest request) {
            return api.handle(std::move(request));
        });
    } catch (const std::exception& error) {
        return fail(error.what());
    }

    asio::signal_set signals(io, SIGINT, SIGTERM);
    signals.async_wait([&](const boost::system::error_code&, int signal) {
        logger.log(LogLevel::notice, "Daemon",
                   std::string("Stopping on ") + (signal == SIGINT ? "SIGINT" : "SIGTERM"));
        server->close();
        io.stop();
    });

    logger.log(LogLevel::notice, "Daemon",
               "Ringwell is running; local API on " + server->socketPath().string());
    std::cout << "Ringwell is running.\nLocal API: " << server->socketPath().string()
              << "\nStop it with Ctrl-C." << std::endl;
    io.run();
    return 0;
}

} // namespace
} // namespace ringwell

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--help") == 0 || std::strcmp(argv[i], "-h") == 0) {
            std::cout << ringwell::usage;
            return 0;
        }
        std::cerr << "ringwell serve: unknown argument " << argv[i]
                  << "\nRun 'ringwell serve --help' for usage.\n";
        return 2;
    }
    // A client that goes away mid-answer must not kill the daemon.
    std::signal(SIGPIPE, SIG_IGN);
    return ringwell::run();
}
