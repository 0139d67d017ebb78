#include "OwnPasteboard.h"

#include "BuildTarget.h"

#include <algorithm>

namespace tosvar {

namespace {

Bytes bytesOf(const std::string& text) { return Bytes(text.begin(), text.end()); }

std::int64_t writeStamped(Pasteboard& pasteboard, OwnPasteboardLedger& ledger, PasteboardContent content,
                          OwnWriteKind kind) {
    for (auto& marker : OwnPasteboard::markers(kind, true, BuildTarget::applicationIdentifier()))
        content.add(std::move(marker.first), std::move(marker.second));
    const std::int64_t changeCount = pasteboard.write(content);
    if (pasteboard.isGeneral()) ledger.registerOwnWrite(changeCount, kind);
    return changeCount;
}

} // namespace

OwnPasteboardLedger& OwnPasteboardLedger::shared() {
    static OwnPasteboardLedger ledger;
    return ledger;
}

void OwnPasteboardLedger::registerOwnWrite(std::int64_t changeCount, OwnWriteKind kind) {
    writes_.emplace_back(changeCount, kind);
    if (writes_.size() > capacity) writes_.pop_front();
}

std::optional<OwnWriteKind> OwnPasteboardLedger::ownWrite(std::int64_t changeCount) const {
    const auto it = std::find_if(writes_.rbegin(), writes_.rend(),
                                 [changeCount](const auto& entry) { return entry.first == changeCount; });
    if (it == writes_.rend()) return std::nullopt;
    return it->second;
}

namespace OwnPasteboard {

std::vector<std::pair<std::string, Bytes>> markers(OwnWriteKind kind, bool stampsSource, const std::string& bundleID) {
    std::vector<std::pair<std::string, Bytes>> result;
    result.emplace_back(markerType, bytesOf(std::to_string(static_cast<int>(kind))));
    if (stampsSource) result.emplace_back(sourceMarkerType, bytesOf(bundleID));
    return result;
}

std::int64_t writePNG(Pasteboard& pasteboard, OwnPasteboardLedger& ledger, const Bytes& png) {
    PasteboardContent content;
    content.add("image/png", png);
    return writeStamped(pasteboard, ledger, std::move(content), OwnWriteKind::image);
}

std::int64_t write(Pasteboard& pasteboard, OwnPasteboardLedger& ledger, const std::string& text) {
    PasteboardContent content;
    content.add("text/plain;charset=utf-8", bytesOf(text));
    content.add("text/plain", bytesOf(text));
    return writeStamped(pasteboard, ledger, std::move(content), OwnWriteKind::text);
}

std::int64_t write(Pasteboard& pasteboard, OwnPasteboardLedger& ledger,
                   const std::vector<std::filesystem::path>& files) {
    std::string uriList;
    std::string gnomeCopied = "copy";
    std::string plain;
    for (const auto& file : files) {
        const std::string uri = fileURI(file);
        uriList += uri + "\r\n";
        gnomeCopied += "\n" + uri;
        plain += (plain.empty() ? "" : "\n") + file.string();
    }
    PasteboardContent content;
    content.add("text/uri-list", bytesOf(uriList));
    content.add("x-special/gnome-copied-files", bytesOf(gnomeCopied));
    content.add("text/plain;charset=utf-8", bytesOf(plain));
    return writeStamped(pasteboard, ledger, std::move(content), OwnWriteKind::files);
}

std::string fileURI(const std::filesystem::path& file) {
    static constexpr char hex[] = "0123456789ABCDEF";
    std::string uri = "file://";
    for (unsigned char c : std::filesystem::absolute(file).lexically_normal().string()) {
        const bool plainByte = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                               c == '/' || c == '-' || c == '_' || c == '.' || c == '~';
        if (plainByte) {
            uri.push_back(static_cast<char>(c));
        } else {
            uri.push_back('%');
            uri.push_back(hex[c >> 4]);
            uri.push_back(hex[c & 15]);
        }
    }
    return uri;
}

} // namespace OwnPasteboard

} // namespace tosvar
