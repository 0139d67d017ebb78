#pragma once

#include <filesystem>

// Base directories of the XDG specification, each with the product's own
// subfolder. Read from the environment on every call, so tests can point them
// at a temporary folder.
namespace tosvar::XdgPaths {

std::filesystem::path home();
std::filesystem::path configHome(); // $XDG_CONFIG_HOME or ~/.config
std::filesystem::path stateHome();  // $XDG_STATE_HOME or ~/.local/state
std::filesystem::path dataHome();   // $XDG_DATA_HOME or ~/.local/share
std::filesystem::path cacheHome();  // $XDG_CACHE_HOME or ~/.cache

std::filesystem::path appConfigDir(); // configHome()/tosvar
std::filesystem::path appStateDir();  // stateHome()/tosvar
std::filesystem::path appDataDir();   // dataHome()/tosvar
std::filesystem::path appCacheDir();  // cacheHome()/tosvar

} // namespace tosvar::XdgPaths
