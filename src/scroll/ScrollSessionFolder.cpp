#include "ScrollSessionFolder.h"

#include "FileContents.h"
#include "PngDecoder.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>

namespace tosvar::ScrollSessionFolder {

namespace {

constexpr const char* metaName = "meta.json";

} // namespace

std::string frameFileName(int index) {
    char name[32];
    std::snprintf(name, sizeof name, "frame-%06d.png", index);
    return name;
}

std::string encode(const Meta& meta) {
    nlohmann::json frames = nlohmann::json::array();
    for (const FrameEntry& f : meta.frames)
        frames.push_back({{"i", f.i}, {"t", f.t}, {"file", f.file}, {"kind", f.kind}, {"rows", f.rows}, {"total", f.total}});
    // nlohmann's objects keep their keys sorted.
    const nlohmann::json json = {{"version", meta.version},     {"createdAt", meta.createdAt},
                                 {"frameWidth", meta.frameWidth}, {"frameHeight", meta.frameHeight},
                                 {"scale", meta.scale},           {"frames", frames}};
    return json.dump(2) + "\n";
}

Expected<Meta> decode(const std::string& text) {
    const nlohmann::json json = nlohmann::json::parse(text, nullptr, false);
    if (json.is_discarded() || !json.is_object()) return Error{"meta.json is not a JSON object"};
    try {
        Meta meta;
        meta.version = json.at("version").get<int>();
        meta.createdAt = json.at("createdAt").get<double>();
        meta.frameWidth = json.at("frameWidth").get<int>();
        meta.frameHeight = json.at("frameHeight").get<int>();
        meta.scale = json.at("scale").get<double>();
        for (const nlohmann::json& f : json.at("frames"))
            meta.frames.push_back({f.at("i").get<int>(), f.at("t").get<double>(), f.at("file").get<std::string>(),
                                   f.at("kind").get<std::string>(), f.at("rows").get<int>(), f.at("total").get<int>()});
        return meta;
    } catch (const nlohmann::json::exception& e) {
        return Error{std::string("meta.json: ") + e.what()};
    }
}

Expected<Meta> readMeta(const std::filesystem::path& directory) {
    const std::filesystem::path path = directory / metaName;
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) return Error{"missing meta.json in " + directory.string()};
    Expected<std::string> text = readFileText(path);
    if (!text) return text.error();
    return decode(*text);
}

Expected<std::vector<std::filesystem::path>> frameFiles(const std::filesystem::path& directory) {
    std::vector<std::filesystem::path> files;
    std::error_code error;
    if (std::filesystem::exists(directory / metaName, error)) {
        Expected<Meta> meta = readMeta(directory);
        if (!meta) return meta.error();
        for (const FrameEntry& entry : meta->frames) files.push_back(directory / entry.file);
        return files;
    }
    for (std::filesystem::directory_iterator it(directory, error), end; !error && it != end; it.increment(error))
        if (it->path().extension() == ".png") files.push_back(it->path());
    if (error) return Error{"cannot read " + directory.string() + ": " + error.message()};
    if (files.empty()) return Error{"no meta.json and no PNG frames in " + directory.string()};
    std::sort(files.begin(), files.end());
    return files;
}

Expected<ImageBuffer> readFrame(const std::filesystem::path& file) {
    Expected<ImageBuffer> image = PngDecoder::decodeFile(file);
    if (!image) return Error{"unreadable frame " + file.filename().string() + ": " + image.error().message};
    return image;
}

std::vector<std::filesystem::path> sessions(const std::filesystem::path& root) {
    std::vector<std::filesystem::path> found;
    std::error_code error;
    for (std::filesystem::directory_iterator it(root, error), end; !error && it != end; it.increment(error))
        if (it->is_directory(error) && std::filesystem::is_regular_file(it->path() / metaName, error))
            found.push_back(it->path());
    std::sort(found.begin(), found.end());
    return found;
}

} // namespace tosvar::ScrollSessionFolder
