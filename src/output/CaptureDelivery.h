#pragma once

#include "DefaultsStore.h"
#include "Rect.h"

#include <filesystem>
#include <optional>
#include <variant>

namespace tosvar {

// One capture as it left the program: PNG bytes or a media file, where it
// stands on disk (none when writing failed) and what the clipboard holds.
struct CaptureDelivery {
    std::variant<Bytes, std::filesystem::path> content; // image bytes, or a movie, GIF or sound file
    std::optional<std::filesystem::path> fileURL;
    bool copiedToClipboard = false;
    std::optional<Rect> sourceRect; // screen rectangle, picks the card's screen

    const Bytes* imageData() const { return std::get_if<Bytes>(&content); }
};

} // namespace tosvar
