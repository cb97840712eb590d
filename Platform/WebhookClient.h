#pragma once

#include "Alarms/WebhookSender.h"
#include "Shared/Asio.h"

#include <boost/asio/ssl/context.hpp>

namespace ringwell {

// Sends an escalation's webhook with Boost.Beast over TCP, or over TLS with
// OpenSSL for https (the system's trusted certificates, host name checked,
// SNI set). One attempt per `post`: resolve, connect, write and read must all
// end within the request's timeout. Main thread; never throws.
class WebhookClient final : public WebhookSender {
public:
    explicit WebhookClient(asio::io_context& context);
    Awaitable<WebhookReply> post(WebhookRequest request) override;

private:
    asio::io_context& context_;
    asio::ssl::context tls_;
};

} // namespace ringwell
