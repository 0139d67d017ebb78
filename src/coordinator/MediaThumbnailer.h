#pragma once

#include "DefaultsStore.h"

#include <filesystem>
#include <optional>

namespace tosvar {

// The first frame of a movie or GIF file as PNG bytes, for stickers and cards.
class MediaThumbnailer {
public:
    virtual ~MediaThumbnailer() = default;
    virtual std::optional<Bytes> firstFramePNG(const std::filesystem::path& file) const = 0;
};

} // namespace tosvar
