#pragma once

#include "Alarms/AppContext.h"
#include "Core/JsonFwd.h"
#include "Core/Result.h"
#include "Daemon/ApiMessage.h"
#include "Daemon/ApiRoute.h"
#include "Daemon/DeviceBook.h"
#include "Daemon/HttpServer.h"
#include "Daemon/RateLimiter.h"
#include "Shared/Asio.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace ringwell {

// Where and how the LAN listener listens.
struct LanOptions {
    static constexpr std::uint16_t defaultPort = 7384;
    std::string address = "0.0.0.0";
    std::uint16_t port = defaultPort;
    // The host in the address shown to devices: this machine's LAN address
    // when listening on every interface.
    std::string advertisedHost;
    // Both or neither: the listener then speaks only TLS.
    std::filesystem::path certificate;
    std::filesystem::path privateKey;
};

// A device just added: its token, shown this once, and where it sends.
struct NewLanDevice {
    LanDevice device;
    std::string token;
    std::string url;
    // Why the listener is not listening although the device was added.
    std::string problem;
};

// The door for phones on the network: a second HTTP listener that serves only
// POST /v1/send (LanGate) for the devices in the devices file, each Send
// taking the road of a local one with the device's name recorded. It listens
// only while there is a device, so it is off until the first is added.
//
// Main thread only; `ctx` must outlive it.
class LanListener {
public:
    LanListener(asio::io_context& io, AppContext& ctx, LanOptions options,
                std::filesystem::path devicesFile);
    ~LanListener();
    LanListener(const LanListener&) = delete;
    LanListener& operator=(const LanListener&) = delete;

    // Loads the devices and listens when there are any. Fails for an
    // unreadable devices file or TLS files that do not load; a taken port
    // is only a problem in `state` (it is retried when a device is added).
    Result<bool> start();
    void close();

    // Adds a device, saves the file and listens. The token is in the answer
    // only.
    Result<NewLanDevice> add(const std::string& name);
    // Revokes a device at once; the listener stops with the last one.
    Result<LanDevice> remove(const std::string& name);

    // {"listening", "url", "tls", "problem", "devices": [{"name", "addedAt"}]}
    json::Json state() const;
    bool listening() const { return server_ != nullptr; }
    // The address devices send to: "http://HOST:PORT/v1/send".
    std::string url() const;

    // Answers one request of the listener (public for the tests' sake).
    Awaitable<ApiResponse> handle(ApiRequest request);

private:
    void listen();
    Result<bool> save(const DeviceBook& book);
    void logRefusal(const std::string& line);

    asio::io_context& io_;
    AppContext& ctx_;
    LanOptions options_;
    std::filesystem::path devicesFile_;
    ApiServices services_;
    DeviceBook book_;
    RateLimiter limiter_;
    std::shared_ptr<asio::ssl::context> tls_;
    std::unique_ptr<HttpServer> server_;
    std::string problem_;
};

} // namespace ringwell
