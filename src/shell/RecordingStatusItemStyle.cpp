#include "RecordingStatusItemStyle.h"

#include <cmath>
#include <cstdio>

namespace tosvar::RecordingStatusItemStyle {

std::string title(double elapsedSeconds)
{
    const long total = std::isfinite(elapsedSeconds) && elapsedSeconds > 0 ? static_cast<long>(elapsedSeconds) : 0;
    const long hours = total / 3600, minutes = total / 60 % 60, seconds = total % 60;
    char text[32];
    if (hours > 0)
        std::snprintf(text, sizeof text, " %ld:%02ld:%02ld", hours, minutes, seconds);
    else
        std::snprintf(text, sizeof text, " %ld:%02ld", minutes, seconds);
    return text;
}

} // namespace tosvar::RecordingStatusItemStyle
