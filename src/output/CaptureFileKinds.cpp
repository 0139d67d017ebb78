#include "CaptureFileKinds.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string>
#include <string_view>

namespace tosvar::CaptureFileKinds {

namespace {

template <std::size_t N>
bool extensionIn(const std::filesystem::path& file, const std::array<std::string_view, N>& extensions) {
    std::string ext = file.extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return std::find(extensions.begin(), extensions.end(), ext) != extensions.end();
}

constexpr std::array<std::string_view, 9> imageExtensions{".png", ".jpg", ".jpeg", ".gif", ".heic", ".tiff", ".tif", ".webp", ".bmp"};
constexpr std::array<std::string_view, 5> videoExtensions{".mp4", ".mov", ".m4v", ".webm", ".mkv"};
constexpr std::array<std::string_view, 7> audioExtensions{".m4a", ".mp3", ".wav", ".aac", ".ogg", ".opus", ".flac"};

} // namespace

bool isImage(const std::filesystem::path& file) { return extensionIn(file, imageExtensions); }
bool isVideo(const std::filesystem::path& file) { return extensionIn(file, videoExtensions); }
bool isAudio(const std::filesystem::path& file) { return extensionIn(file, audioExtensions); }

} // namespace tosvar::CaptureFileKinds
