#pragma once

#include "AppSettings.h"
#include "BuildTarget.h"

#include <string>
#include <string_view>
#include <vector>

// The other product that can stand in for this one. While it runs, this
// product only says so in its menu and settings; it never yields captures.
namespace tosvar::SiblingApp {

inline constexpr const char* bundleIdentifier = "app.vemla";
inline constexpr const char* displayName = "Vemla";

// Whether `bundleID` belongs to the sibling family named by `siblingPrefix`:
// equal to it or below it ("prefix."); the other products of the same family
// ("app.vemla.tosvar…", "app.vemla.sedlo…") are never the "app.vemla" sibling.
bool matches(std::string_view bundleID, std::string_view siblingPrefix);

// Over the identifiers of the running applications (on Linux: the well-known
// names on the session bus), skipping our own.
bool isRunning(const std::vector<std::string>& runningIdentifiers, std::string_view ownIdentifier);

// Only the larger product yields captures to this one, and only when asked to.
bool shouldYieldCapture(const AppSettings& settings, const BuildTarget& target);

} // namespace tosvar::SiblingApp
