#pragma once

#include "AppSettings.h"
#include "DefaultsStore.h"
#include "FileManager.h"
#include "SystemPermissions.h"

#include <QPointer>
#include <QWidget>

#include <functional>
#include <memory>

class QVBoxLayout;

namespace tosvar {

// The first-run window: which permissions are held, the main shortcuts, and
// where captures go. Leaving it through its buttons marks the welcome done;
// closing the window does not, so it comes back at the next launch.
class TosvarOnboarding {
public:
    static constexpr const char* completedKey = "tosvar.onboardingCompleted";
    static constexpr int width = 520;
    static constexpr int height = 560;

    struct Dependencies {
        SystemPermissions& permissions;
        DefaultsStore& defaults;
        FileManager& files;
        std::function<AppSettings()> settings;
    };

    explicit TosvarOnboarding(Dependencies dependencies);
    ~TosvarOnboarding();
    TosvarOnboarding(const TosvarOnboarding&) = delete;
    TosvarOnboarding& operator=(const TosvarOnboarding&) = delete;

    static bool isCompleted(const DefaultsStore& defaults);

    // Shows the window (the same one again when it exists) and brings it to
    // the front. `onOpenSettings` runs after the shortcuts link closed it.
    void show(std::function<void()> onOpenSettings);
    QWidget* window() const { return window_.get(); }

private:
    void build();
    void refreshPermissions();
    void leave(bool openSettings);

    Dependencies d_;
    std::function<void()> onOpenSettings_;
    std::unique_ptr<QWidget> window_;
    QPointer<QWidget> permissionRows_;
};

} // namespace tosvar
