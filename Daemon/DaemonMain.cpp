// `ringwell-daemon`, started by `ringwell serve`: wires the real
// implementations together on one io_context and serves the local API and the
// web app until SIGINT or SIGTERM.

#include "Alarms/AlarmAuthorization.h"
#include "Alarms/AlarmScheduler.h"
#include "Alarms/AppContext.h"
#include "Alarms/CaptureRelay.h"
#include "Alarms/EscalationRunner.h"
#include "Alarms/SetupTestController.h"
#include "Alarms/Watchdog.h"
#include "Core/Json.h"
#include "Core/SoundSettings.h"
#include "Daemon/Api.h"
#include "Daemon/ChangeFeed.h"
#include "Daemon/HttpServer.h"
#include "Daemon/LanListener.h"
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
#include "Platform/DesktopOpener.h"
#include "Platform/InstalledData.h"
#include "Platform/JournalLogger.h"
#include "Platform/LocalAlarmService.h"
#include "Platform/NotificationCapture.h"
#include "Platform/NotifierDBus.h"
#include "Platform/SettingsFile.h"
#include "Platform/SystemInfo.h"
#include "Platform/SystemTimeZone.h"
#include "Platform/Systemd.h"
#include "Platform/WebhookClient.h"
#include "Shared/Asio.h"

#include "ServeUsage.h"

#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>

#include <algorithm>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <optional>

namespace ringwell {
namespace {

constexpr std::uint16_t defaultWebPort = 7383;

struct Options {
    std::optional<std::uint16_t> webPort = defaultWebPort;
    LanOptions lan;
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

// Tells the silences that fell due, at start (some may have while the daemon
// was down) and then once a minute. A check that throws is logged and the
// next one runs as usual.
Awaitable<void> checkWatches(asio::steady_timer& timer, Watchdog& watchdog, Logger& logger) {
    for (;;) {
        std::optional<std::string> problem;
        try {
            co_await watchdog.check();
        } catch (const std::exception& error) {
            problem = error.what();
        }
        if (problem)
            logger.log(LogLevel::error, "Watchdog", "A check of the watches failed: " + *problem);
        timer.expires_after(std::chrono::minutes(1));
        co_await timer.async_wait(asio::use_awaitable);
    }
}

std::filesystem::path webDirectory() {
    if (const char* configured = std::getenv("RINGWELL_WEB_DIR"))
        return configured;
    const std::filesystem::path built = RINGWELL_WEB_DIR;
    return InstalledData::directory(built.parent_path()) / "web";
}

int run(const Options& options) {
    // Under systemd the API socket is ringwell.socket's, already listening.
    const auto passed = Systemd::passedSocket();
    if (passed.error)
        return fail(*passed.error);
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
    auto soundLog = [&logger](const std::string& line) {
        logger.log(LogLevel::notice, "Sound", line);
    };
    AudioPulse audio(io, {files->alarms.parent_path() / "raised-sink.json",
                          [&defaults] {
                              return SoundSettings::read(
                                  [&](std::string_view key) { return defaults.value(key); });
                          },
                          soundLog, nullptr});
    LocalAlarmService alarmService(io, clock, audio, notices, logger, *files);
    AlarmScheduler scheduler(alarmService, *store.value(), clock);
    AlarmAuthorization authorization(alarmService);
    authorization.observe();
    SetupTestController setupTest(defaults, clock);
    AppContext ctx{*store.value(), alarmService, scheduler, authorization, setupTest,
                   notices,        defaults,     logger,    clock};
    ctx.calendar = SystemTimeZone::currentCalendar;

    // The tone picker's preview plays a few seconds of the real tone.
    AudioPulse previewAudio(io, {{}, nullptr, soundLog, nullptr});
    asio::steady_timer previewEnd(io);
    auto previewTone = [&](AlarmTone tone) {
        auto path = AlarmTones::bundledPath(tone, BundledSounds::directory());
        previewAudio.play(
            path.value_or(BundledSounds::defaultTone()), "Tone preview", [&](const AudioProblem&) {
                logger.log(LogLevel::notice, "AlarmTone", "The tone preview has no audio server");
            });
        previewEnd.expires_after(std::chrono::seconds(3));
        previewEnd.async_wait([&](const boost::system::error_code& ec) {
            if (!ec)
                previewAudio.stop();
        });
    };

    // The alarm volume's test plays the default tone through the alarms' own
    // sink, so it breaks through as an alarm would; never over a ringing one.
    asio::steady_timer soundTestEnd(io);
    auto alarmRings = [&] {
        const auto alarms = alarmService.alarms();
        return std::any_of(alarms.begin(), alarms.end(),
                           [](const Alarm& alarm) { return alarm.state == AlarmState::alerting; });
    };
    auto testAlarmSound = [&]() -> bool {
        if (alarmRings())
            return false;
        audio.play(BundledSounds::defaultTone(), "Alarm volume test", [&](const AudioProblem& p) {
            soundLog("The alarm volume test has no sound: " + p.message);
        });
        soundTestEnd.expires_after(std::chrono::seconds(5));
        soundTestEnd.async_wait([&](const boost::system::error_code& ec) {
            if (!ec && !alarmRings())
                audio.stop();
        });
        return true;
    };
    auto soundStatus = [&audio] {
        const AudioStatus status = audio.status();
        return json::Json{{"reachable", status.reachable},
                          {"server", status.server},
                          {"problem", status.problem}};
    };

    // The desktop's notifications, each taking the road of a Send.
    NotificationCapture capture(io, logger);
    CaptureRelay captureRelay(ctx, capture, io.get_executor());
    captureRelay.start();

    // The watches on forwarding, the desktop's capture among them.
    Watchdog watchdog(ctx);
    watchdog.watchCapture(
        [&captureRelay] { return captureRelay.enabled() && !captureRelay.status().active; });
    asio::steady_timer watchdogTimer(io);
    asio::co_spawn(io, checkWatches(watchdogTimer, watchdog, logger),
                   reportEscaped(categoryLog(logger, "Watchdog"), "Watching the forwarding"));

    // Phones on the network, once a device has been added.
    LanOptions lanOptions = options.lan;
    if (lanOptions.address == "0.0.0.0" || lanOptions.address == "::")
        lanOptions.advertisedHost = SystemInfo::lanAddress().value_or("127.0.0.1");
    LanListener lan(io, ctx, lanOptions, *configHome / "ringwell" / "devices.json");
    if (auto started = lan.start(); !started)
        return fail(started.error().message);

    ChangeFeed feed(io, ctx);
    captureRelay.onSighting([&feed] { feed.publishSoon("capture"); });
    capture.onStatusChange([&feed] { feed.publishSoon("capture"); });
    Api::Services services{SystemInfo::osVersion(),
                           SystemInfo::deviceModel(),
                           nullptr,
                           previewTone,
                           "",
                           &captureRelay,
                           soundStatus,
                           testAlarmSound,
                           &lan,
                           &watchdog};
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
    // A click on a notice opens the web app.
    DesktopOpener opener(notices, logger, services.webAddress);

    // Escalation: the channels' steps while an alarm rings unanswered. The
    // stop link is the alarm's event in the web app; it carries no token.
    WebhookClient webhookClient(io);
    EscalationRunner escalation(io, ctx, webhookClient, alarmService,
                                {std::chrono::seconds(5), [&webPort](const Uuid& event) {
                                     return webPort
                                                ? "http://127.0.0.1:" + std::to_string(webPort) +
                                                      "/history/" + event.toString()
                                                : std::string();
                                 }});
    Api::Services webServices = services;
    webServices.feed = &feed;
    webApi = std::make_unique<Api>(ctx, webServices);
    Api api(ctx, services);

    std::unique_ptr<HttpServer> server;
    try {
        auto handler = [&api](ApiRequest request) { return api.handle(std::move(request)); };
        server = passed.descriptor
                     ? HttpServer::onListeningSocket(io, *passed.descriptor, socketPath(), handler)
                     : HttpServer::onSocket(io, socketPath(), handler);
    } catch (const std::exception& error) {
        return fail(error.what());
    }

    asio::signal_set signals(io, SIGINT, SIGTERM);
    signals.async_wait([&](const boost::system::error_code&, int signal) {
        logger.log(LogLevel::notice, "Daemon",
                   std::string("Stopping on ") + (signal == SIGINT ? "SIGINT" : "SIGTERM"));
        Systemd::notifyStopping();
        server->close();
        if (web)
            web->close();
        lan.close();
        feed.closeAll();
        io.stop();
    });

    logger.log(LogLevel::notice, "Daemon",
               "Ringwell is running; local API on " + server->socketPath().string());
    std::cout << "Ringwell is running.\nLocal API: " << server->socketPath().string() << '\n';
    if (web)
        std::cout << "Web app: " << services.webAddress << '\n';
    std::cout << "Stop it with Ctrl-C." << std::endl;
    // The socket, the session bus and the web listener are all up by now.
    Systemd::notifyReady(
        "Serving on " + server->socketPath().string() +
        (web ? " and " + services.webAddress.substr(0, services.webAddress.find('?'))
             : std::string()));
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
            std::cout << ringwell::serveUsage;
            return 0;
        }
        if (arg == "--no-web") {
            options.webPort.reset();
            continue;
        }
        if ((arg == "--lan-port") && i + 1 < argc) {
            auto port = ringwell::parsePort(argv[++i]);
            if (!port) {
                std::cerr << "ringwell serve: --lan-port needs a port number (0 to 65535)\n";
                return 2;
            }
            options.lan.port = *port;
            continue;
        }
        if (arg == "--lan-address" && i + 1 < argc) {
            options.lan.address = argv[++i];
            continue;
        }
        if (arg == "--lan-cert" && i + 1 < argc) {
            options.lan.certificate = argv[++i];
            continue;
        }
        if (arg == "--lan-key" && i + 1 < argc) {
            options.lan.privateKey = argv[++i];
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
    if (options.lan.certificate.empty() != options.lan.privateKey.empty()) {
        std::cerr << "ringwell serve: --lan-cert and --lan-key go together\n";
        return 2;
    }
    // A client that goes away mid-answer must not kill the daemon.
    std::signal(SIGPIPE, SIG_IGN);
    return ringwell::run(options);
}
