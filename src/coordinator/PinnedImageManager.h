#pragma once

#include "AnnotationResult.h"
#include "Rect.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace tosvar {

// What a sticker shows: an image (PNG), optionally standing for a movie or GIF file.
struct PinnedContentPayload {
    Bytes png;
    std::string title;
    std::optional<std::filesystem::path> videoPath;
    friend bool operator==(const PinnedContentPayload&, const PinnedContentPayload&) = default;
};

using StickerID = std::uint64_t;

// The always-on-top stickers.
class PinnedImageManager {
public:
    virtual ~PinnedImageManager() = default;

    // Creates a sticker (not yet shown); `anchoredToHost` ties it to the shell's anchor window.
    virtual StickerID createSticker(const PinnedContentPayload& payload, const std::optional<Rect>& frame,
                                    bool anchoredToHost) = 0;
    virtual void show(StickerID id, bool mayBecomeKey) = 0;
    virtual void moveBy(StickerID id, double dx, double dy) = 0; // screen points, y up
    virtual std::optional<Rect> frame(StickerID id) const = 0;
    // Hands the sticker's stored form to the change callback.
    virtual void publishSnapshot(StickerID id) = 0;
    virtual void notifyListChanged() = 0;
    // Opens the editor on the sticker; `onResult` gets the edit and the sticker's frame.
    virtual void beginEditing(StickerID id, double scale,
                              std::function<void(const AnnotationResult&, const Rect& frame)> onResult) = 0;
    virtual bool isEditorReady(StickerID id) const = 0;
    virtual void toggleTranslateMode(StickerID id) = 0;
};

} // namespace tosvar
