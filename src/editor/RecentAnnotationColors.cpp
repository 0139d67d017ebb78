#include "RecentAnnotationColors.h"

#include "ColorApproximation.h"
#include "Log.h"
#include "RGBAColorJson.h"

#include <algorithm>
#include <optional>
#include <string>
#include <variant>

namespace tosvar {

namespace {

using Json = nlohmann::ordered_json;

std::vector<RGBAColor> readColors(const DefaultsStore& store) {
    const std::optional<std::string> text = store.recordText(std::string(RecentAnnotationColors::defaultsKey));
    if (!text) return {};
    const Json json = Json::parse(*text, nullptr, /*allow_exceptions=*/false);
    if (!json.is_array()) return {};
    std::vector<RGBAColor> colors;
    for (const Json& entry : json) {
        Expected<RGBAColor> color = RGBAColorJson::fromJson(entry);
        if (!color) return {};
        colors.push_back(*color);
    }
    if (colors.size() > RecentAnnotationColors::capacity) colors.resize(RecentAnnotationColors::capacity);
    return colors;
}

} // namespace

RecentAnnotationColors::RecentAnnotationColors(DefaultsStore& store, MainQueue& queue)
    : store_(store), queue_(queue), colors_(readColors(store)) {}

RecentAnnotationColors::~RecentAnnotationColors() { pendingCommit_.cancel(); }

void RecentAnnotationColors::noteUse(const RGBAColor& color) {
    pendingCommit_.cancel();
    pendingCommit_ = queue_.after(commitDelay, [this, color] { commit(color); });
}

void RecentAnnotationColors::commit(const RGBAColor& color) {
    Json array = Json::array();
    Expected<Json> json = RGBAColorJson::toJson(color);
    if (!json) {
        logLine("recent annotation colours: " + json.error().message);
        return;
    }
    std::erase_if(colors_, [&](const RGBAColor& existing) { return isApproximately(existing, color); });
    colors_.insert(colors_.begin(), color);
    if (colors_.size() > capacity) colors_.resize(capacity);
    for (const RGBAColor& entry : colors_) array.push_back(RGBAColorJson::toJson(entry).value());
    store_.set(std::string(defaultsKey), array.dump());
    if (onChange) onChange();
}

} // namespace tosvar
