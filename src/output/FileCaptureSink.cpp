#include "FileCaptureSink.h"

#include "Log.h"
#include "SecurityScopedFileAccess.h"

namespace tosvar {

FileCaptureSink::FileCaptureSink(RecentCaptures& recents, Pasteboard& pasteboard, OwnPasteboardLedger& ledger,
                                 DefaultsStore& defaults, FileManager& files, ToastPresenter toast)
    : recents_(recents),
      pasteboard_(pasteboard),
      ledger_(ledger),
      defaults_(defaults),
      files_(files),
      toast_(std::move(toast)) {}

void FileCaptureSink::deliver(const Bytes& png, bool copyToClipboard) {
    if (copyToClipboard) OwnPasteboard::writePNG(pasteboard_, ledger_, png);
    const auto at = now();
    Expected<std::filesystem::path> written =
        CaptureOutputPolicy::writePNGToDisk(png, at, BuildTarget::current(), defaults_, files_);
    CaptureDelivery delivery{png, std::nullopt, copyToClipboard, std::nullopt};
    if (written) {
        SecurityScopedFileAccess::mint(*written);
        recents_.record(*written);
        lastWrittenURL_ = *written;
        delivery.fileURL = *written;
    } else {
        logLine("screenshot could not be saved: " + written.error().message);
        if (toast_) toast_("tosvar.toast.saveFailed", toastSeconds);
    }
    if (onDelivered) onDelivered(delivery);
}

void FileCaptureSink::deliver(const std::filesystem::path& mediaFile) {
    SecurityScopedFileAccess::mint(mediaFile);
    recents_.record(mediaFile);
    lastWrittenURL_ = mediaFile;
    OwnPasteboard::write(pasteboard_, ledger_, std::vector<std::filesystem::path>{mediaFile});
    if (onDelivered) onDelivered(CaptureDelivery{mediaFile, mediaFile, true, std::nullopt});
}

} // namespace tosvar
