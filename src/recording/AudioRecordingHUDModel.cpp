#include "AudioRecordingHUDModel.h"

#include <cmath>
#include <cstdio>

namespace tosvar::AudioRecordingHUDModel {

std::string timeText(double seconds) {
    const long whole = seconds > 0 ? static_cast<long>(std::floor(seconds)) : 0;
    char text[32];
    if (whole < 3600) {
        std::snprintf(text, sizeof text, "%ld:%02ld", whole / 60, whole % 60);
    } else {
        std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", whole / 3600, whole / 60 % 60, whole % 60);
    }
    return text;
}

} // namespace tosvar::AudioRecordingHUDModel
