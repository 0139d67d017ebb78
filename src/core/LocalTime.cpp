#include "LocalTime.h"

#include <cstdio>

namespace tosvar {

std::string formatTime(const std::tm& fields, const char* pattern) {
    char buffer[96];
    const std::size_t length = std::strftime(buffer, sizeof buffer, pattern, &fields);
    return std::string(buffer, length);
}

std::string formatLocalTime(std::chrono::system_clock::time_point at, const char* pattern) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(at);
    std::tm local{};
    localtime_r(&seconds, &local);
    return formatTime(local, pattern);
}

std::string formatLocalTimeWithMilliseconds(std::chrono::system_clock::time_point at, const char* pattern) {
    const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(at.time_since_epoch()).count() % 1000;
    char fraction[8];
    std::snprintf(fraction, sizeof fraction, ".%03d", static_cast<int>(ms));
    return formatLocalTime(at, pattern) + fraction;
}

} // namespace tosvar
