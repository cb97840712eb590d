#pragma once

#include "Core/Escalation.h"
#include "Shared/Asio.h"

#include <chrono>
#include <string>
#include <utility>
#include <vector>

namespace ringwell {

// One POST of an escalation's webhook step.
struct WebhookRequest {
    WebhookUrl url;
    std::vector<std::pair<std::string, std::string>> headers;
    std::string contentType;
    std::string body;
    std::chrono::seconds timeout{10};
};

// How one attempt ended: `ok` for a 2xx answer; `detail` says what happened
// ("HTTP 204", "HTTP 500", "connection refused", "timed out after 10 s") and
// never repeats a header or the URL.
struct WebhookReply {
    bool ok = false;
    std::string detail;
};

// Sends webhook requests: Platform/WebhookClient (Boost.Beast, OpenSSL for
// https) in the daemon. Main thread; `post` resumes there and never throws:
// every failure is a reply.
class WebhookSender {
public:
    virtual ~WebhookSender() = default;
    virtual Awaitable<WebhookReply> post(WebhookRequest request) = 0;
};

} // namespace ringwell
