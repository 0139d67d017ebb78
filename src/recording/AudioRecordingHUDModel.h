#pragma once

#include <string>

// What the floating bar of a sound recording shows, apart from its drawing.
namespace tosvar::AudioRecordingHUDModel {

inline constexpr double width = 236;
inline constexpr double height = 38;
inline constexpr double cornerRadius = 10;
inline constexpr double bottomOffset = 24; // above the bottom of the visible frame
inline constexpr float meterFall = 0.72f;  // kept of the shown level at each report

// The meter rises at once and falls smoothly; it stands still while paused.
inline float meterLevel(float shown, float level, bool paused) {
    if (paused) return shown;
    const float fallen = shown * meterFall;
    return level > fallen ? level : fallen;
}

// "m:ss" below an hour, "h:mm:ss" from there.
std::string timeText(double seconds);

} // namespace tosvar::AudioRecordingHUDModel
