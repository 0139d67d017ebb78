#pragma once

#include <filesystem>
#include <string_view>

// The running log of the capture path (freeze timings, window-grab
// decisions): standard error, and "screenshot-diagnostics.log" beside the
// launch log, opened and closed for each line so it survives any crash.
namespace tosvar::ScreenshotDiagnostics {

void log(std::string_view message);
std::filesystem::path file();

} // namespace tosvar::ScreenshotDiagnostics
