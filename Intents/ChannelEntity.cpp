#include "Intents/ChannelEntity.h"

#include "Core/Json.h"
#include "Core/TextFolding.h"

#include <algorithm>

namespace ringwell {
namespace {

template <typename Predicate>
std::vector<ChannelEntity> entitiesWhere(const RingwellStore& store, Predicate predicate) {
    std::vector<ChannelEntity> result;
    for (const Channel& channel : store.channels()) {
        if (predicate(channel))
            result.push_back(ChannelEntity::make(channel));
    }
    return result;
}

} // namespace

ChannelEntity ChannelEntity::make(const Channel& channel) {
    return {channel.id, channel.name, channel.rule.summary()};
}

json::Json toJson(const ChannelEntity& entity) {
    return json::Json{
        {"id", entity.id.toString()}, {"name", entity.name}, {"ruleSummary", entity.ruleSummary}};
}

namespace ChannelQuery {

std::vector<ChannelEntity> entities(const RingwellStore& store, const std::vector<Uuid>& ids) {
    return entitiesWhere(store, [&](const Channel& channel) {
        return std::find(ids.begin(), ids.end(), channel.id) != ids.end();
    });
}

std::vector<ChannelEntity> entities(const RingwellStore& store, std::string_view text) {
    return entitiesWhere(store, [&](const Channel& channel) {
        return text::containsIgnoringCaseAndDiacritics(channel.name, text);
    });
}

std::vector<ChannelEntity> suggestedEntities(const RingwellStore& store) {
    return entitiesWhere(store, [](const Channel&) { return true; });
}

} // namespace ChannelQuery
} // namespace ringwell
