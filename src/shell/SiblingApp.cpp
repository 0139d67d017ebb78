#include "SiblingApp.h"

namespace tosvar::SiblingApp {

namespace {

bool equalsOrPrefixes(std::string_view id, std::string_view prefix) {
    return id == prefix || (id.size() > prefix.size() && id.starts_with(prefix) && id[prefix.size()] == '.');
}

} // namespace

bool matches(std::string_view bundleID, std::string_view siblingPrefix) {
    if (!equalsOrPrefixes(bundleID, siblingPrefix)) return false;
    if (siblingPrefix == "app.vemla") {
        for (const char* other : BuildTarget::nonVemlaBundleIDPrefixes())
            if (equalsOrPrefixes(bundleID, other)) return false;
    }
    return true;
}

bool isRunning(const std::vector<std::string>& runningIdentifiers, std::string_view ownIdentifier) {
    for (const std::string& id : runningIdentifiers) {
        if (id.empty() || id == ownIdentifier) continue;
        if (matches(id, bundleIdentifier)) return true;
    }
    return false;
}

bool shouldYieldCapture(const AppSettings& settings, const BuildTarget& target) {
    return target.product == BuildProduct::vemla && settings.captureHandledBySiblingApp;
}

} // namespace tosvar::SiblingApp
