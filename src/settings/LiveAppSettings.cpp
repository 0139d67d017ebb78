#include "LiveAppSettings.h"

#include "SettingsStore.h"

#include <algorithm>

namespace tosvar {

LiveAppSettings::LiveAppSettings(AppSettings initial) : state_(std::make_shared<State>()) {
    state_->settings = std::move(initial);
}

LiveAppSettings& LiveAppSettings::shared() {
    static LiveAppSettings instance(SettingsStore().load());
    return instance;
}

std::unique_ptr<LiveAppSettings> LiveAppSettings::forTesting(AppSettings initial) {
    return std::unique_ptr<LiveAppSettings>(new LiveAppSettings(std::move(initial)));
}

ObservationToken LiveAppSettings::observe(Observer observer) {
    const Uuid id = Uuid::random();
    state_->observers.emplace_back(id, std::make_shared<Observer>(std::move(observer)));
    return ObservationToken(id, [weak = std::weak_ptr<State>(state_), id] {
        if (auto state = weak.lock())
            std::erase_if(state->observers, [&id](const auto& entry) { return entry.first == id; });
    });
}

void LiveAppSettings::update(const AppSettings& newSettings) {
    if (newSettings == state_->settings) return;
    state_->settings = newSettings;
    // An observer may cancel others or itself while we walk the list: call the
    // ones registered now, skipping any that are gone by their turn.
    const auto snapshot = state_->observers;
    for (const auto& [id, observer] : snapshot) {
        const bool stillRegistered = std::any_of(state_->observers.begin(), state_->observers.end(),
                                                 [&id](const auto& entry) { return entry.first == id; });
        if (stillRegistered) (*observer)(state_->settings);
    }
}

} // namespace tosvar
