// `ringwell-daemon`, started by `ringwell serve`: wires the real
// implementations together on one io_context and serves the local API and the
// web app until SIGINT or SIGTERM.

#include "Alarms/AlarmAuthorization.h"
#include "Alarms/AlarmScheduler.h"
#include "Alarms/AppContext.h"
#include "Alarms/CaptureRelay.h"
#include "Alarms/SetupTestController.h"
#include "Daemon/Api.h"
#include "Daemon/ChangeFeed.h"
#include "Daemon/HttpServer.h"
#include "Daemon/RuntimePaths.h"
#include "Daemon/SaveBarrier.h"
#include "Daemon/StaticFiles.h"
#include "Daemon/WebGate.h"
#include "Daemon/WebToken.h"
#include "Model/AlarmTone.h"
#include "Model/DirectoryLock.h"
#include "Model/RingwellStore.h"
#include "Model/XdgPaths.h"
#include "Platform/AudioPulse.h"
#include "Platform/BundledSounds.h"
#include "Platform/JournalLogger.h"
#include "Platform/LocalAlarmService.h"
#include "Platform/NotificationCapture.h"
#include "Platform/NotifierDBus.h"
#include "Platform/SettingsFile.h"
#include "Platform/SystemInfo.h"
#include "Platform/SystemTimeZone.h"
#include "Shared/Asio.h"

#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>

#include <charconv>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <optional>

namespace ringwell {
namespace {

constexpr const char* usage = R"(Usage: ringwell serve [--port N | --no-web]

Runs Ringwell in the foreground: it captures the desktop's notifications
(and takes forwarded ones), rings
alarms, serves the local API on $XDG_RUNTIME_DIR/ringwell/ringwell.sock and
the web app on http://127.0.0.1:PORT/ (open it with `ringwell open`).
One daemon runs per user. Ctrl-C or SIGTERM stops it cleanly.

Options:
  --port N    the web app's port on 127.0.0.1 (default 7383, or $RINGWELL_WEB_PORT;
              0 picks a free port)
  --no-web    serve the local API only
)";

constexpr std::uint16_t defaultWebPort = 7383;

struct Options {
    std::optional<std::uint16_t> webPort = defaultWebPort;
};

int fail(const std::string& message) {
    std::cerr << "ringwell serve: " << message << '\n';
    return 1;
}

std::optional<std::uint16_t> parsePort(std::string_view text) {
    unsigned value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value > 65535)
        return std::nullopt;
    return static_cast<std::uint16_t>(value);
}

ErrorLog categoryLog(Logger& logger, std::string_view category) {
    return [&logger, category](const std::string& message) {
        logger.log(LogLevel::error, category, message);
    };
}

std::filesystem::path webDirectory() {
    if (const char* configured = std::getenv("RINGWELL_WEB_DIR"))
        return configured;
    return RINGWELL_WEB_DIR;
}

int run(const Options& options) {
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
    batchSavesPerLoopTurn(*store.value(), io);
    auto files = LocalAlarmService::defaultFiles();
    auto settingsPath = SettingsFile::defaultPath();
    auto configHome = XdgPaths::configHome();
    if (!files || !settingsPath || !configHome)
        return fail("neither XDG_DATA_HOME/XDG_CONFIG_HOME nor HOME names a directory to keep "
                    "Ringwell's files in");

    // Start-up order: the notice presenter first, then the tones, then serving.
    NotifierDBus notices(io, logger);
    AlarmTones::install(BundledSounds::directory(), files->sounds,
                        categoryLog(logger, "AlarmTone"));

    SettingsFile defaults(*settingsPath, logger);
    // The time of the last Send changes with every Send and only informs: it
    // is written behind, at most once a second, so that a Send's answer waits
    // for the store's flush alone. Ending cleanly writes what is left.
    asio::steady_timer settingsWrite(io);
    defaults.writeBehind({std::string(DefaultsKey::lastSendToRingwell)},
                         [&settingsWrite](std::function<void()> write) {
                             settingsWrite.expires_after(std::chrono::seconds(1));
                             settingsWrite.async_wait(
                                 [write = std::move(write)](const boost::system::error_code& ec) {
                                     if (!ec)
                                         write();
                                 });
                         });
    AudioPulse audio(io);
    LocalAlarmService alarmService(io, clock, audio, notices, logger, *files);
    AlarmScheduler scheduler(alarmService, *store.value(), clock);
    AlarmAuthorization authorization(alarmService);
    authorization.observe();
    SetupTestController setupTest(defaults, clock);
    AppContext ctx{*store.value(), alarmService, scheduler, authorization, setupTest,
                   notices,        defaults,     logger,    clock};
    ctx.calendar = SystemTimeZone::currentCalendar;

    // The tone picker's preview plays a few seconds of the real tone.
    AudioPulse previewAudio(io);
    asio::steady_timer previewEnd(io);
    auto previewTone = [&](AlarmTone tone) {
        auto path = AlarmTones::bundledPath(tone, BundledSounds::directory());
        previewAudio.play(path.value_or(BundledSounds::defaultTone()), [&](const AudioProblem&) {
            logger.log(LogLevel::notice, "AlarmTone", "The tone preview has no audio server");
        });
        previewEnd.expires_after(std::chrono::seconds(3));
        previewEnd.async_wait([&](const boost::system::error_code& ec) {
            if (!ec)
                previewAudio.stop();
        });
    };

    // The desktop's notifications, each taking the road of a Send.
    NotificationCapture capture(io, logger);
    CaptureRelay captureRelay(ctx, capture, io.get_executor());
    captureRelay.start();

    ChangeFeed feed(io, ctx);
    Api::Services services{SystemInfo::osVersion(),
                           SystemInfo::deviceModel(),
                           nullptr,
                           previewTone,
                           "",
                           &captureRelay};
    std::unique_ptr<HttpServer> web;
    std::string token;
    StaticFiles staticFiles(webDirectory());
    if (options.webPort) {
        auto loaded = loadOrCreateWebToken(*configHome / "ringwell");
        if (!loaded)
            return fail(loaded.error().message);
        token = loaded.value();
    }
    std::uint16_t webPort = 0;
    // The web app's API also carries the live feed; it is made once the
    // address (with the port the system chose) is known.
    std::unique_ptr<Api> webApi;
    try {
        if (options.webPort) {
            web = HttpServer::onLoopback(
                io, *options.webPort, [&](ApiRequest request) -> Awaitable<ApiResponse> {
                    if (auto refusal = WebGate::check(request, token, webPort))
                        co_return *refusal;
                    if (request.path.rfind("/v1/", 0) == 0 || request.path == "/v1")
                        co_return co_await webApi->handle(std::move(request));
                    if (request.method != "GET" && request.method != "HEAD")
                        co_return ApiResponse::error(405, "pages are read with GET");
                    co_return staticFiles.serve(request.path);
                });
            webPort = web->port();
            services.webAddress =
                "http://127.0.0.1:" + std::to_string(webPort) + "/?token=" + token;
        }
    } catch (const std::exception& error) {
        return fail(std::string(error.what()) + " (choose another with --port)");
    }
    Api::Services webServices = services;
    webServices.feed = &feed;
    webApi = std::make_unique<Api>(ctx, webServices);
    Api api(ctx, services);

    std::unique_ptr<HttpServer> server;
    try {
        server = HttpServer::onSocket(io, socketPath(), [&api](ApiRequest request) {
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
        if (web)
            web->close();
        feed.closeAll();
        io.stop();
    });

    logger.log(LogLevel::notice, "Daemon",
               "Ringwell is running; local API on " + server->socketPath().string());
    std::cout << "Ringwell is running.\nLocal API: " << server->socketPath().string() << '\n';
    if (web)
        std::cout << "Web app: " << services.webAddress << '\n';
    std::cout << "Stop it with Ctrl-C." << std::endl;
    io.run();
    return 0;
}

} // namespace
} // namespace ringwell

int main(int argc, char** argv) {
    ringwell::Options options;
    if (const char* port = std::getenv("RINGWELL_WEB_PORT")) {
        options.webPort = ringwell::parsePort(port);
        if (!options.webPort) {
            std::cerr << "ringwell serve: RINGWELL_WEB_PORT is not a port number: " << port << '\n';
            return 2;
        }
    }
    for (int i = 1; i < argc; ++i) {
        std::string_view arg = argv[i];
        if (arg == "--help" || arg == "-h") {
            std::cout << ringwell::usage;
            return 0;
        }
        if (arg == "--no-web") {
            options.webPort.reset();
            continue;
        }
        if (arg == "--port" && i + 1 < argc) {
            options.webPort = ringwell::parsePort(argv[++i]);
            if (!options.webPort) {
                std::cerr << "ringwell serve: --port needs a port number (0 to 65535)\n";
                return 2;
            }
            continue;
        }
        std::cerr << "ringwell serve: unknown argument " << arg
                  << "\nRun 'ringwell serve --help' for usage.\n";
        return 2;
    }
    // A client that goes away mid-answer must not kill the daemon.
    std::signal(SIGPIPE, SIG_IGN);
    return ringwell::run(options);
}
