#pragma once

#include "Expected.h"
#include "ImageBuffer.h"

#include <filesystem>
#include <string>
#include <vector>

namespace tosvar {

// The folder of one recorded scrolling session: "frame-000000.png" and up,
// each frame as it was given to the stitcher, and "meta.json" saying what the
// stitcher did with each.
namespace ScrollSessionFolder {

struct FrameEntry {
    int i = 0;          // index, from 0
    double t = 0;       // seconds since the recorder started
    std::string file;   // file name in the folder
    std::string kind;   // "first", "appended", "prepended", "noChange" or "lowConfidence"
    int rows = 0;       // rows the frame added
    int total = 0;      // stitched height after the frame
    friend bool operator==(const FrameEntry&, const FrameEntry&) = default;
};

struct Meta {
    int version = 1;
    double createdAt = 0; // seconds since 1970 at the start of the session
    int frameWidth = 0, frameHeight = 0;
    double scale = 0;
    std::vector<FrameEntry> frames;
    friend bool operator==(const Meta&, const Meta&) = default;
};

std::string frameFileName(int index);
// Pretty-printed, keys sorted.
std::string encode(const Meta& meta);
Expected<Meta> decode(const std::string& json);

// The "meta.json" of a session folder; an error names a folder without one.
Expected<Meta> readMeta(const std::filesystem::path& directory);
// The frames to replay from a folder: those of its "meta.json" in order, or
// in a folder without one, its PNG files in the order of their names.
Expected<std::vector<std::filesystem::path>> frameFiles(const std::filesystem::path& directory);
// One frame; an error names the file.
Expected<ImageBuffer> readFrame(const std::filesystem::path& file);
// The immediate sub-folders of `root` that hold a "meta.json", by path.
std::vector<std::filesystem::path> sessions(const std::filesystem::path& root);

} // namespace ScrollSessionFolder

} // namespace tosvar
