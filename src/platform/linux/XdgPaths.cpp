#include "XdgPaths.h"

#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace tosvar::XdgPaths {

namespace {

constexpr const char* appFolder = "tosvar";

// The XDG base-directory rules ignore relative values.
std::filesystem::path fromEnvironment(const char* variable, const std::filesystem::path& fallback) {
    const char* value = std::getenv(variable);
    if (value && value[0] == '/') return value;
    return fallback;
}

} // namespace

std::filesystem::path home() {
    if (const char* value = std::getenv("HOME"); value && value[0]) return value;
    if (const passwd* entry = getpwuid(getuid()); entry && entry->pw_dir) return entry->pw_dir;
    return "/";
}

std::filesystem::path configHome() { return fromEnvironment("XDG_CONFIG_HOME", home() / ".config"); }
std::filesystem::path stateHome() { return fromEnvironment("XDG_STATE_HOME", home() / ".local/state"); }
std::filesystem::path dataHome() { return fromEnvironment("XDG_DATA_HOME", home() / ".local/share"); }
std::filesystem::path cacheHome() { return fromEnvironment("XDG_CACHE_HOME", home() / ".cache"); }

std::filesystem::path appConfigDir() { return configHome() / appFolder; }
std::filesystem::path appStateDir() { return stateHome() / appFolder; }
std::filesystem::path appDataDir() { return dataHome() / appFolder; }
std::filesystem::path appCacheDir() { return cacheHome() / appFolder; }

} // namespace tosvar::XdgPaths
