#pragma once

#include "CaptureOutputSink.h"
#include "CaptureOutputPolicy.h"
#include "OwnPasteboard.h"
#include "RecentCaptures.h"

#include <functional>
#include <string_view>

namespace tosvar {

// Shows a short message (a localisation key) for some seconds.
using ToastPresenter = std::function<void(std::string_view key, double seconds)>;

// The product's output: clipboard first, then an atomic file in the save
// folder, then the recents list and `onDelivered`. A failed write still
// delivers (without a file) so the capture is never lost: it stays on the
// clipboard and on the card. Main thread only, the disk write included.
class FileCaptureSink final : public CaptureOutputSink {
public:
    FileCaptureSink(RecentCaptures& recents, Pasteboard& pasteboard, OwnPasteboardLedger& ledger,
                    DefaultsStore& defaults, FileManager& files, ToastPresenter toast);

    std::function<CaptureOutputPolicy::Clock::time_point()> now = [] { return CaptureOutputPolicy::Clock::now(); };

    const std::optional<std::filesystem::path>& lastWrittenURL() const override { return lastWrittenURL_; }
    void deliver(const Bytes& png, bool copyToClipboard = true) override;
    void deliver(const std::filesystem::path& mediaFile) override;

    static constexpr double toastSeconds = 1.6;

private:
    RecentCaptures& recents_;
    Pasteboard& pasteboard_;
    OwnPasteboardLedger& ledger_;
    DefaultsStore& defaults_;
    FileManager& files_;
    ToastPresenter toast_;
    std::optional<std::filesystem::path> lastWrittenURL_;
};

} // namespace tosvar
