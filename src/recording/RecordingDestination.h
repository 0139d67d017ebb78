#pragma once

#include "BuildTarget.h"

#include <chrono>
#include <optional>
#include <string>

namespace tosvar {

// The zone file names are dated in: the machine's own, or a fixed offset from UTC.
struct RecordingTimeZone {
    std::optional<std::chrono::seconds> utcOffset; // none: the local zone

    static RecordingTimeZone current() { return {}; }
    static RecordingTimeZone fixed(std::chrono::seconds offset) { return {offset}; }
};

// Names of recordings and sound files, and how long they ran.
namespace RecordingDestination {

using Clock = std::chrono::system_clock;

// "Tosvar Recording 2026-03-04 at 09.05.07.mp4", never localised.
std::string fileName(Clock::time_point at, const std::string& extension, RecordingTimeZone zone,
                     const BuildTarget& target = BuildTarget::current());
// "Tosvar Audio 2026-03-04 at 09.05.07.m4a".
std::string audioFileName(Clock::time_point at, const std::string& extension, RecordingTimeZone zone,
                          const BuildTarget& target = BuildTarget::current());
// "m:ss" in whole seconds; below zero counts as zero.
std::string durationString(double seconds);

} // namespace RecordingDestination

} // namespace tosvar
