#pragma once

#include "Pasteboard.h"

#include <cstdint>
#include <deque>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tosvar {

enum class OwnWriteKind : std::uint8_t { image = 1, text = 2, files = 3 };

// The change counts of the clipboard writes this program made, so a reader
// of the clipboard can tell them from other programs' writes. Keeps the most
// recent ones. Main thread only.
class OwnPasteboardLedger {
public:
    static OwnPasteboardLedger& shared();

    void registerOwnWrite(std::int64_t changeCount, OwnWriteKind kind);
    std::optional<OwnWriteKind> ownWrite(std::int64_t changeCount) const;

private:
    static constexpr std::size_t capacity = 64;
    std::deque<std::pair<std::int64_t, OwnWriteKind>> writes_;
};

// Clipboard writes stamped as our own: every write carries marker types
// beside its content, and lands in the ledger when it went to the general
// clipboard.
namespace OwnPasteboard {

inline constexpr const char* markerType = "application/x-vemla-own-write";
inline constexpr const char* sourceMarkerType = "application/x-vemla-source";

std::vector<std::pair<std::string, Bytes>> markers(OwnWriteKind kind, bool stampsSource, const std::string& bundleID);

std::int64_t writePNG(Pasteboard& pasteboard, OwnPasteboardLedger& ledger, const Bytes& png);
std::int64_t write(Pasteboard& pasteboard, OwnPasteboardLedger& ledger, const std::string& text);
std::int64_t write(Pasteboard& pasteboard, OwnPasteboardLedger& ledger, const std::vector<std::filesystem::path>& files);

// "file:///..." with the bytes that need it percent-encoded.
std::string fileURI(const std::filesystem::path& file);

} // namespace OwnPasteboard

} // namespace tosvar
