#pragma once

#include "BuildTarget.h"
#include "CaptureSaveFolder.h"
#include "DefaultsStore.h"
#include "Expected.h"
#include "FileManager.h"

#include <chrono>
#include <filesystem>
#include <string>

namespace tosvar::CaptureOutputPolicy {

using Clock = std::chrono::system_clock;

// <Pictures>/<product folder>, created with its parents if missing.
Expected<std::filesystem::path> picturesFolder(const BuildTarget& target, FileManager& files);

// "Tosvar Screenshot 2026-11-18 at 10.00.00.png": local time, never localised.
// Two captures in the same second share a name; the later replaces the earlier.
std::string screenshotFilename(Clock::time_point at, const BuildTarget& target, const std::string& extension);

// Runs `body` with the capture folder (or its fallback) in use; recordings
// write their files there themselves.
template <typename Body>
auto withCaptureFolder(DefaultsStore& defaults, FileManager& files, Body&& body) {
    return CaptureSaveFolder::captures().withFolder(defaults, files, std::forward<Body>(body));
}

// Writes the PNG atomically into the capture folder (or its fallback) and
// answers where it went.
Expected<std::filesystem::path> writePNGToDisk(const Bytes& png, Clock::time_point at, const BuildTarget& target,
                                               DefaultsStore& defaults, FileManager& files);

} // namespace tosvar::CaptureOutputPolicy
