#include "ScreenshotDiagnostics.h"

#include "XdgPaths.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <mutex>
#include <string>

namespace tosvar::ScreenshotDiagnostics {

std::filesystem::path file() { return XdgPaths::appStateDir() / "screenshot-diagnostics.log"; }

void log(std::string_view message) {
    static std::mutex mutex;
    const std::string text = "[Vemla] " + std::string(message) + "\n";
    std::lock_guard lock(mutex);
    std::fwrite(text.data(), 1, text.size(), stderr);

    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    std::tm local{};
    localtime_r(&seconds, &local);
    char stamp[40];
    const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
    const std::size_t length = std::strftime(stamp, sizeof stamp, "%Y-%m-%d %H:%M:%S", &local);
    std::snprintf(stamp + length, sizeof stamp - length, ".%03d ", static_cast<int>(ms));

    std::error_code ec;
    std::filesystem::create_directories(file().parent_path(), ec);
    if (std::FILE* out = std::fopen(file().c_str(), "a")) {
        std::fputs(stamp, out);
        std::fwrite(text.data(), 1, text.size(), out);
        std::fclose(out);
    }
}

} // namespace tosvar::ScreenshotDiagnostics
