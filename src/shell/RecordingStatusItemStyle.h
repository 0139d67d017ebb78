#pragma once

#include <string>

namespace tosvar {

// How the tray shows a running recording.
namespace RecordingStatusItemStyle {

// " 0:07", " 12:34", " 1:02:03": the elapsed time, led by a blank.
std::string title(double elapsedSeconds);

} // namespace RecordingStatusItemStyle

} // namespace tosvar
