#pragma once

#include "ImageBuffer.h"
#include "ScrollAxisDetector.h"
#include "ScrollSessionFolder.h"
#include "SerialQueue.h"

#include <chrono>
#include <filesystem>
#include <memory>

namespace tosvar {

class DefaultsStore;

// Writes every frame a scrolling session ingests, with its outcome, to a
// folder, so the session can be replayed away from the screen. `record`
// returns at once: PNG encoding runs on the recorder's own serial queue.
// Call `record` and `finish` from one thread.
class ScrollSessionRecorder {
public:
    // A recorder when the environment variable "VEMLA_SCROLL_RECORD" is "1"
    // or the defaults Boolean "VemlaScrollRecord" is true, writing to a folder
    // named for the present time under the data folder's "ScrollSessions".
    static std::unique_ptr<ScrollSessionRecorder> ifEnabled(const DefaultsStore& defaults);
    // Nothing when the folder cannot be created.
    static std::unique_ptr<ScrollSessionRecorder> create(const std::filesystem::path& directory);

    const std::filesystem::path& directory() const { return directory_; }

    void record(const ImageBuffer& frame, ScrollResultKind kind, int totalHeight, double scale);
    // Returns when every frame and the final "meta.json" are on disk.
    void finish();

private:
    explicit ScrollSessionRecorder(std::filesystem::path directory);
    void flushMeta() const; // on the queue

    std::filesystem::path directory_;
    std::chrono::steady_clock::time_point started_;
    ScrollSessionFolder::Meta meta_; // on the queue
    int index_ = 0;                  // on the queue
    SerialQueue queue_{"app.vemla.scrollcapture.recorder"};
};

} // namespace tosvar
