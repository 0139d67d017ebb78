#include "ScrollSessionRecorder.h"

#include "AtomicFile.h"
#include "DefaultsStore.h"
#include "LocalTime.h"
#include "Log.h"
#include "PngEncoder.h"
#include "XdgPaths.h"

#include <cstdlib>
#include <string_view>

namespace tosvar {

namespace {

// The present local time as "yyyyMMdd-HHmmss".
std::string folderNameForNow() { return formatLocalTime(std::chrono::system_clock::now(), "%Y%m%d-%H%M%S"); }

} // namespace

ScrollSessionRecorder::ScrollSessionRecorder(std::filesystem::path directory)
    : directory_(std::move(directory)), started_(std::chrono::steady_clock::now()) {
    meta_.createdAt = std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

std::unique_ptr<ScrollSessionRecorder> ScrollSessionRecorder::ifEnabled(const DefaultsStore& defaults) {
    const char* variable = std::getenv("VEMLA_SCROLL_RECORD");
    const bool enabled = (variable && std::string_view(variable) == "1") || defaults.boolean("VemlaScrollRecord").value_or(false);
    if (!enabled) return nullptr;
    std::unique_ptr<ScrollSessionRecorder> recorder =
        create(XdgPaths::appDataDir() / "ScrollSessions" / folderNameForNow());
    if (recorder) logLine("scroll session recording to " + recorder->directory().string());
    return recorder;
}

std::unique_ptr<ScrollSessionRecorder> ScrollSessionRecorder::create(const std::filesystem::path& directory) {
    std::error_code error;
    std::filesystem::create_directories(directory, error);
    if (error) {
        logLine("scroll recorder: cannot create " + directory.string() + ": " + error.message());
        return nullptr;
    }
    return std::unique_ptr<ScrollSessionRecorder>(new ScrollSessionRecorder(directory));
}

void ScrollSessionRecorder::record(const ImageBuffer& frame, ScrollResultKind kind, int totalHeight, double scale) {
    const double t = std::chrono::duration<double>(std::chrono::steady_clock::now() - started_).count();
    queue_.async([this, frame, kind, totalHeight, scale, t] {
        if (meta_.frames.empty()) {
            meta_.frameWidth = frame.width();
            meta_.frameHeight = frame.height();
            meta_.scale = scale;
        }
        const std::string file = ScrollSessionFolder::frameFileName(index_);
        // A frame that cannot be written leaves no file; its entry stays.
        PngEncoder::writeFile(frame, directory_ / file);
        meta_.frames.push_back({index_, t, file, kind.name(), kind.rows, totalHeight});
        ++index_;
        if (meta_.frames.size() % 20 == 0) flushMeta();
    });
}

void ScrollSessionRecorder::finish() {
    queue_.sync([this] { flushMeta(); });
}

void ScrollSessionRecorder::flushMeta() const {
    AtomicFile::write(directory_ / "meta.json", ScrollSessionFolder::encode(meta_));
}

} // namespace tosvar
