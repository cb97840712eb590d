#include "Core/CapturedNotification.h"

#include "Core/TextFolding.h"
#include "Core/Whitespace.h"

#include <string_view>

namespace ringwell::CapturedNotification {
namespace {

constexpr std::string_view gsconnectId = "org.gnome.Shell.Extensions.GSConnect";
constexpr int criticalUrgency = 2;

std::optional<std::string> textHint(const BusNotification& notification, const std::string& key) {
    auto found = notification.hints.find(key);
    if (found == notification.hints.end())
        return std::nullopt;
    if (const auto* text = std::get_if<std::string>(&found->second))
        return *text;
    return std::nullopt;
}

std::string nonBlankHint(const BusNotification& notification, const std::string& key) {
    auto text = textHint(notification, key);
    return text && !text::isBlank(*text) ? *text : std::string();
}

// The last dot-separated part of an application id: "org.gnome.Fractal" is
// "Fractal".
std::string idName(const std::string& id) {
    auto dot = id.rfind('.');
    return dot == std::string::npos ? id : id.substr(dot + 1);
}

// What a phone bridge says the phone showed.
struct PhoneNotification {
    std::string app;
    std::string title;
    std::string body;
    std::string device;
};

// Bridges that cannot pass the phone's title separately write "title: text".
void splitTitle(const std::string& text, PhoneNotification& phone) {
    auto colon = text.find(": ");
    if (colon == std::string::npos || colon == 0) {
        phone.body = text;
        return;
    }
    phone.title = text.substr(0, colon);
    phone.body = text.substr(colon + 2);
}

std::optional<PhoneNotification> kdeConnect(const BusNotification& n) {
    if (n.door != BusNotification::Door::freedesktop ||
        !text::equalsIgnoringCase(nonBlankHint(n, "x-kde-appname"), "kdeconnect"))
        return std::nullopt;
    PhoneNotification phone;
    phone.device = nonBlankHint(n, "x-kdeconnect-source-device");
    if (phone.device.empty())
        phone.device = nonBlankHint(n, "x-kde-origin-name");
    const std::string displayApp = nonBlankHint(n, "x-kde-display-appname");
    if (!displayApp.empty()) {
        phone.app = displayApp;
        phone.title = n.title;
        phone.body = n.body;
    } else if (!phone.device.empty()) {
        phone.app = n.title;
        splitTitle(n.body, phone);
    } else {
        // KDE Connect's own notices, such as its call notices, name no phone app.
        phone.app = "KDE Connect";
        phone.title = n.title;
        phone.body = n.body;
    }
    return phone;
}

std::optional<PhoneNotification> gsConnect(const BusNotification& n) {
    if (n.door == BusNotification::Door::freedesktop || n.app != gsconnectId)
        return std::nullopt;
    PhoneNotification phone;
    auto bar = n.id.find('|');
    if (bar != std::string::npos)
        phone.device = n.id.substr(0, bar);
    phone.app = n.title;
    splitTitle(n.body, phone);
    if (phone.title.empty()) {
        // Texts and calls carry the contact as their title and no "title: ".
        phone.title = n.title;
        phone.app = "GSConnect";
    }
    return phone;
}

// A call the bridge shows becomes a notification of the app "Phone": no body
// for a ringing call, the bridge's text for a missed one.
void recogniseCall(PhoneNotification& phone) {
    const std::string title = text::lowercased(phone.title);
    const std::string body = text::lowercased(phone.body);
    auto mentions = [&](std::string_view words) {
        return title.find(words) != std::string::npos || body.find(words) != std::string::npos;
    };
    const bool missed = mentions("missed call");
    const bool incoming = !missed && (mentions("incoming call") || mentions("calling"));
    if (!missed && !incoming)
        return;
    // The caller is whichever of the two texts does not describe the call.
    const std::string_view words =
        missed ? "missed call" : (mentions("incoming call") ? "incoming call" : "calling");
    const bool titleDescribesCall = title.find(words) != std::string::npos;
    const std::string description = titleDescribesCall ? phone.title : phone.body;
    std::string caller = titleDescribesCall ? phone.body : phone.title;
    if (titleDescribesCall && caller.empty())
        caller = phone.title;
    phone.app = "Phone";
    phone.title = caller;
    phone.body = missed ? description : std::string();
}

std::optional<PhoneNotification> phoneNotification(const BusNotification& n) {
    auto phone = kdeConnect(n);
    if (!phone)
        phone = gsConnect(n);
    if (phone)
        recogniseCall(*phone);
    return phone;
}

bool isTimeSensitive(const BusNotification& n) {
    if (n.door == BusNotification::Door::freedesktop) {
        auto found = n.hints.find("urgency");
        if (found == n.hints.end())
            return false;
        const auto* level = std::get_if<std::int64_t>(&found->second);
        return level && *level == criticalUrgency;
    }
    return textHint(n, "priority") == std::optional<std::string>("urgent");
}

std::optional<std::string> present(const std::string& text) {
    if (text.empty())
        return std::nullopt;
    return text;
}

// Title and body as one text, the way the whole notification reads.
std::optional<std::string> wholeText(const std::string& title, const std::string& body) {
    if (body.empty())
        return present(title);
    return title.empty() ? body : title + "\n" + body;
}

} // namespace

bool isOwnNotice(const BusNotification& notification) {
    return notification.door == BusNotification::Door::freedesktop &&
           notification.hints.count(ownNoticeHint) != 0;
}

std::string appName(const BusNotification& notification) {
    if (auto phone = phoneNotification(notification))
        return phone->app;
    if (notification.door == BusNotification::Door::freedesktop) {
        if (!text::isBlank(notification.app))
            return notification.app;
        return nonBlankHint(notification, "desktop-entry");
    }
    return idName(notification.app);
}

ShortcutInputFields fields(const BusNotification& notification) {
    const std::optional<std::string> timeSensitive =
        isTimeSensitive(notification) ? std::optional<std::string>("yes") : std::nullopt;
    if (auto phone = phoneNotification(notification)) {
        return ShortcutInputFields::fromShortcutInput(
            wholeText(phone->title, phone->body), present(phone->title), std::nullopt,
            present(phone->body), present(phone->app), timeSensitive, present(phone->title),
            present(phone->device), std::nullopt, std::nullopt);
    }
    return ShortcutInputFields::fromShortcutInput(
        wholeText(notification.title, notification.body), present(notification.title), std::nullopt,
        present(notification.body), present(appName(notification)), timeSensitive, std::nullopt,
        std::nullopt, std::nullopt, std::nullopt);
}

std::optional<PhoneBridge> bridge(const BusNotification& notification) {
    if (auto phone = kdeConnect(notification))
        return PhoneBridge{"KDE Connect", phone->device};
    if (auto phone = gsConnect(notification))
        return PhoneBridge{"GSConnect", phone->device};
    return std::nullopt;
}

std::string contentKey(const BusNotification& notification) {
    return notification.title + '\x1f' + notification.body;
}

} // namespace ringwell::CapturedNotification
