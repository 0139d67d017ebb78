#include "RecordingDestination.h"

#include "LocalTime.h"

#include <cmath>
#include <cstdio>
#include <ctime>

namespace tosvar::RecordingDestination {

namespace {

std::string dated(const BuildTarget& target, const char* kind, Clock::time_point at, const std::string& extension,
                  RecordingTimeZone zone) {
    std::tm fields{};
    if (zone.utcOffset) {
        const std::time_t shifted = Clock::to_time_t(at + *zone.utcOffset);
        gmtime_r(&shifted, &fields);
    } else {
        const std::time_t seconds = Clock::to_time_t(at);
        localtime_r(&seconds, &fields);
    }
    return target.displayName() + kind + formatTime(fields, "%Y-%m-%d at %H.%M.%S") + "." + extension;
}

} // namespace

std::string fileName(Clock::time_point at, const std::string& extension, RecordingTimeZone zone,
                     const BuildTarget& target) {
    return dated(target, " Recording ", at, extension, zone);
}

std::string audioFileName(Clock::time_point at, const std::string& extension, RecordingTimeZone zone,
                          const BuildTarget& target) {
    return dated(target, " Audio ", at, extension, zone);
}

std::string durationString(double seconds) {
    const long whole = seconds > 0 ? static_cast<long>(std::floor(seconds)) : 0;
    char text[32];
    std::snprintf(text, sizeof text, "%ld:%02ld", whole / 60, whole % 60);
    return text;
}

} // namespace tosvar::RecordingDestination
