#include "Daemon/LanListener.h"

#include "Core/Json.h"
#include "Daemon/ApiRoutes.h"
#include "Daemon/DeviceToken.h"
#include "Daemon/LanGate.h"
#include "Daemon/RouteTable.h"
#include "Daemon/SaveBarrier.h"
#include "Model/AtomicFile.h"

#include <boost/asio/ssl/context.hpp>

namespace ringwell {
namespace {

constexpr std::string_view logCategory = "Lan";

} // namespace

LanListener::LanListener(asio::io_context& io, AppContext& ctx, LanOptions options,
                         std::filesystem::path devicesFile)
    : io_(io), ctx_(ctx), options_(std::move(options)), devicesFile_(std::move(devicesFile)),
      limiter_(LanGate::sendsPerSecond, LanGate::burst) {}

LanListener::~LanListener() {
    close();
}

Result<bool> LanListener::start() {
    if (!options_.certificate.empty()) {
        try {
            tls_ = std::make_shared<asio::ssl::context>(asio::ssl::context::tls_server);
            tls_->set_options(asio::ssl::context::default_workarounds |
                              asio::ssl::context::no_sslv2 | asio::ssl::context::no_sslv3 |
                              asio::ssl::context::no_tlsv1 | asio::ssl::context::no_tlsv1_1);
            tls_->use_certificate_chain_file(options_.certificate.string());
            tls_->use_private_key_file(options_.privateKey.string(), asio::ssl::context::pem);
        } catch (const boost::system::system_error& error) {
            return Error{"cannot load the LAN certificate " + options_.certificate.string() +
                         " or its key " + options_.privateKey.string() + ": " + error.what()};
        }
    }
    auto contents = AtomicFile::read(devicesFile_);
    if (!contents)
        return contents.error();
    if (contents.value()) {
        auto parsed = json::parse(*contents.value());
        try {
            if (!parsed)
                throw json::DecodeError(parsed.error().message);
            book_ = deviceBookFromJson(parsed.value());
        } catch (const std::exception& error) {
            // No device may send until the person adds them again.
            ctx_.logger.log(LogLevel::error, logCategory,
                            AtomicFile::quarantine(devicesFile_, error.what()));
        }
    }
    if (!book_.empty())
        listen();
    return true;
}

void LanListener::close() {
    if (server_)
        server_->close();
    server_.reset();
}

void LanListener::listen() {
    if (server_)
        return;
    HttpServer::Limits limits;
    limits.maxBodyBytes = LanGate::maxBodyBytes;
    limits.readTimeout = std::chrono::seconds(10);
    limits.maxConnections = 64;
    limits.log = [this](const std::string& message) {
        ctx_.logger.log(LogLevel::error, logCategory, message);
    };
    limits.refused = [this](const std::string& peer, const ApiResponse& response) {
        logRefusal(LanGate::refusalLine(peer, response));
    };
    try {
        server_ = HttpServer::onAddress(
            io_, options_.address, options_.port,
            [this](ApiRequest request) { return handle(std::move(request)); }, limits, tls_);
        problem_.clear();
        ctx_.logger.log(LogLevel::notice, logCategory, "Listening for devices on " + url());
    } catch (const std::exception& error) {
        problem_ = std::string(error.what()) + " (choose another with --lan-port)";
        ctx_.logger.log(LogLevel::error, logCategory, problem_);
    }
}

Result<bool> LanListener::save(const DeviceBook& book) {
    auto directory = AtomicFile::createPrivateDirectories(devicesFile_.parent_path());
    if (!directory)
        return directory.error();
    auto written = AtomicFile::replace(devicesFile_, toJson(book).dump(2) + "\n");
    if (!written)
        return written.error();
    return true;
}

Result<NewLanDevice> LanListener::add(const std::string& name) {
    DeviceBook changed = book_;
    std::string token = DeviceToken::generate();
    auto added = changed.add(name, DeviceToken::hash(token), ctx_.clock.now());
    if (!added)
        return added.error();
    if (auto saved = save(changed); !saved)
        return saved.error();
    book_ = std::move(changed);
    limiter_.forget(added.value().name);
    ctx_.logger.log(LogLevel::notice, logCategory, "Added the device \"" + name + "\"");
    listen();
    return NewLanDevice{added.value(), token, url(), problem_};
}

Result<LanDevice> LanListener::remove(const std::string& name) {
    DeviceBook changed = book_;
    auto removed = changed.remove(name);
    if (!removed)
        return removed.error();
    if (auto saved = save(changed); !saved)
        return saved.error();
    book_ = std::move(changed);
    limiter_.forget(removed.value().name);
    ctx_.logger.log(LogLevel::notice, logCategory,
                    "Removed the device \"" + removed.value().name + "\"");
    if (book_.empty()) {
        close();
        problem_.clear();
    }
    return removed;
}

std::string LanListener::url() const {
    std::string host = options_.advertisedHost.empty() ? options_.address : options_.advertisedHost;
    if (host.find(':') != std::string::npos)
        host = "[" + host + "]";
    const std::uint16_t port = server_ ? server_->port() : options_.port;
    return std::string(tls_ ? "https" : "http") + "://" + host + ":" + std::to_string(port) +
           LanGate::sendPath;
}

json::Json LanListener::state() const {
    json::Json devices = json::Json::array();
    for (const auto& device : book_.devices())
        devices.push_back({{"name", device.name}, {"addedAt", json::dateValue(device.addedAt)}});
    return json::Json{{"listening", listening()},
                      {"url", url()},
                      {"tls", tls_ != nullptr},
                      {"problem", problem_},
                      {"devices", std::move(devices)}};
}

void LanListener::logRefusal(const std::string& line) {
    ctx_.logger.log(LogLevel::notice, logCategory, line);
}

Awaitable<ApiResponse> LanListener::handle(ApiRequest request) {
    auto verdict = LanGate::admit(request, book_, limiter_, RateLimiter::Clock::now());
    if (auto* refusal = std::get_if<LanGate::Refusal>(&verdict)) {
        logRefusal(refusal->logLine);
        co_return refusal->response;
    }
    // A copy: the book may change while the Send waits.
    std::string device = std::get<const LanDevice*>(verdict)->name;
    ApiState state{ctx_, services_};
    ApiResult result = co_await routes::sendFrom(request, state, device);
    // Acknowledged only once the event is on disk, as on the local API.
    co_await savedToDisk(ctx_.store);
    if (!result)
        co_return ApiResponse::error(httpStatus(result.error().kind), result.error().message);
    co_return std::move(result).value();
}

} // namespace ringwell
