#pragma once

#include <filesystem>

// What kind of capture a file is, by its extension (any letter case).
namespace tosvar::CaptureFileKinds {

bool isImage(const std::filesystem::path& file); // png, jpg, jpeg, gif, heic, tiff, webp, bmp
bool isVideo(const std::filesystem::path& file); // mp4, mov, m4v, webm, mkv
bool isAudio(const std::filesystem::path& file); // m4a, mp3, wav, aac, ogg, opus, flac
inline bool isCapture(const std::filesystem::path& file) { return isImage(file) || isVideo(file) || isAudio(file); }

} // namespace tosvar::CaptureFileKinds
