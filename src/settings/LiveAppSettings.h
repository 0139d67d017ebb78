#pragma once

#include "AppSettings.h"
#include "Uuid.h"

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace tosvar {

// Cancels one observation when cancelled or destroyed. Outliving the
// observed object is harmless.
class ObservationToken {
public:
    ObservationToken() = default;
    ObservationToken(Uuid id, std::function<void()> cancel) : id_(id), cancel_(std::move(cancel)) {}
    ~ObservationToken() { cancel(); }
    ObservationToken(ObservationToken&& other) noexcept { *this = std::move(other); }
    ObservationToken& operator=(ObservationToken&& other) noexcept {
        if (this != &other) {
            cancel();
            id_ = other.id_;
            cancel_ = std::exchange(other.cancel_, nullptr);
        }
        return *this;
    }
    ObservationToken(const ObservationToken&) = delete;
    ObservationToken& operator=(const ObservationToken&) = delete;

    const Uuid& id() const { return id_; }
    void cancel() {
        if (auto cancel = std::exchange(cancel_, nullptr)) cancel();
    }

private:
    Uuid id_;
    std::function<void()> cancel_;
};

// The process-wide settings that views observe. Main thread only.
class LiveAppSettings {
public:
    using Observer = std::function<void(const AppSettings&)>;

    // Built at first use from SettingsStore().load().
    static LiveAppSettings& shared();
    // A private instance for a test, starting from `initial`.
    static std::unique_ptr<LiveAppSettings> forTesting(AppSettings initial);

    const AppSettings& settings() const { return state_->settings; }
    // Observers are called in the order they registered, with the new value.
    [[nodiscard]] ObservationToken observe(Observer observer);
    // Publishes `newSettings` unless it equals the current value.
    void update(const AppSettings& newSettings);

private:
    explicit LiveAppSettings(AppSettings initial);

    struct State {
        AppSettings settings;
        std::vector<std::pair<Uuid, std::shared_ptr<Observer>>> observers;
    };
    std::shared_ptr<State> state_;
};

} // namespace tosvar
