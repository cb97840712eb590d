#include "Platform/AlarmNotice.h"

#include "Core/Text.h"

namespace ringwell::AlarmNotice {

std::string identifier(const Uuid& alarm) {
    return "alarm-" + alarm.toString();
}

NoticeRequest make(const Alarm& alarm) {
    const auto& attributes = alarm.configuration.attributes;
    const auto& metadata = attributes.metadata;

    NoticeRequest request;
    request.identifier = identifier(alarm.id);
    request.title = text::isBlank(attributes.presentation.alert.title)
                        ? metadata.channelName
                        : attributes.presentation.alert.title;
    for (const std::string* part : {&metadata.title, &metadata.subtitle, &metadata.body}) {
        if (!text::isBlank(*part))
            request.body += text::trimmed(*part) + "\n";
    }
    request.body += "Channel " + metadata.channelName;
    if (!text::isBlank(metadata.app))
        request.body += ", from " + metadata.app;
    request.threadIdentifier = threadIdentifier;
    return request;
}

} // namespace ringwell::AlarmNotice
