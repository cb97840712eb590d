#pragma once

#include "Core/ChannelRule.h"
#include "Core/JsonFwd.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ringwell {

// A ready-made rule offered when a channel is added.
struct RuleTemplate {
    // The condition the person still has to fill in.
    enum class Blank { sender, app };

    std::string id;
    std::string title;
    std::string subtitle;
    std::string systemImage;
    ChannelRule rule;
    std::optional<Blank> blank;

    // The fixed catalogue, in menu order; built once.
    static const std::vector<RuleTemplate>& all();
    static const RuleTemplate* find(std::string_view id);

    bool operator==(const RuleTemplate&) const = default;
};

std::string_view rawValue(RuleTemplate::Blank blank);
json::Json toJson(const RuleTemplate& ruleTemplate);

} // namespace ringwell
