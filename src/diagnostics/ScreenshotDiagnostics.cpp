#include "ScreenshotDiagnostics.h"

#include "LocalTime.h"
#include "XdgPaths.h"

#include <chrono>
#include <cstdio>
#include <mutex>
#include <string>

namespace tosvar::ScreenshotDiagnostics {

std::filesystem::path file() { return XdgPaths::appStateDir() / "screenshot-diagnostics.log"; }

void log(std::string_view message) {
    static std::mutex mutex;
    const std::string text = "[Vemla] " + std::string(message) + "\n";
    std::lock_guard lock(mutex);
    std::fwrite(text.data(), 1, text.size(), stderr);

    const std::string stamp = formatLocalTimeWithMilliseconds(std::chrono::system_clock::now(), "%Y-%m-%d %H:%M:%S") + " ";

    std::error_code ec;
    std::filesystem::create_directories(file().parent_path(), ec);
    if (std::FILE* out = std::fopen(file().c_str(), "a")) {
        std::fputs(stamp.c_str(), out);
        std::fwrite(text.data(), 1, text.size(), out);
        std::fclose(out);
    }
}

} // namespace tosvar::ScreenshotDiagnostics
