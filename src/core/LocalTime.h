#pragma once

#include <chrono>
#include <ctime>
#include <string>

namespace tosvar {

// Calendar fields through a strftime pattern.
std::string formatTime(const std::tm& fields, const char* pattern);
// A moment in the local time zone through a strftime pattern.
std::string formatLocalTime(std::chrono::system_clock::time_point at, const char* pattern);
// The same, followed by ".mmm" milliseconds.
std::string formatLocalTimeWithMilliseconds(std::chrono::system_clock::time_point at, const char* pattern);

} // namespace tosvar
