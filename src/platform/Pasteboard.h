#pragma once

#include "DefaultsStore.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tosvar {

// What goes on the clipboard in one write: the same content under several
// MIME types ("image/png", "text/uri-list", our own markers, ...).
struct PasteboardContent {
    std::vector<std::pair<std::string, Bytes>> representations;

    void add(std::string mimeType, Bytes bytes) { representations.emplace_back(std::move(mimeType), std::move(bytes)); }
    const Bytes* find(const std::string& mimeType) const {
        for (const auto& [type, bytes] : representations)
            if (type == mimeType) return &bytes;
        return nullptr;
    }
};

// The system clipboard. The change count grows by one for every change of
// the contents, ours or another program's. Main thread only.
class Pasteboard {
public:
    virtual ~Pasteboard() = default;

    virtual std::int64_t changeCount() const = 0;
    // Replaces the contents; returns the change count of this write.
    virtual std::int64_t write(const PasteboardContent& content) = 0;
    // The clipboard the user pastes from (as opposed to a private one).
    virtual bool isGeneral() const = 0;
    // The image on the clipboard as PNG bytes, if it holds one.
    virtual std::optional<Bytes> readImagePNG() const = 0;
};

} // namespace tosvar
