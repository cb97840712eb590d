#pragma once

#include "Core/JsonFwd.h"
#include "Core/Uuid.h"
#include "Model/Channel.h"
#include "Model/RingwellStore.h"

#include <string>
#include <string_view>
#include <vector>

namespace ringwell {

// A channel as automations and the command line pick it: shown with its name
// as the title and its rule's one-line summary as the subtitle.
struct ChannelEntity {
    static constexpr std::string_view typeDisplayName = "Ringwell Channel";

    Uuid id;
    std::string name;
    std::string ruleSummary;

    static ChannelEntity make(const Channel& channel);

    bool operator==(const ChannelEntity&) const = default;
};

// {"id", "name", "ruleSummary"}
json::Json toJson(const ChannelEntity& entity);

// Finds channels for automations and for `ringwell channels` / `ringwell ring`.
// Every list is in the store's order, which is the channels' priority. Main
// thread only, like the store.
namespace ChannelQuery {

// The channels whose ids are among `ids`.
std::vector<ChannelEntity> entities(const RingwellStore& store, const std::vector<Uuid>& ids);
// The channels whose name contains `text`, ignoring case and diacritics.
std::vector<ChannelEntity> entities(const RingwellStore& store, std::string_view text);
// Every channel.
std::vector<ChannelEntity> suggestedEntities(const RingwellStore& store);

} // namespace ChannelQuery
} // namespace ringwell
