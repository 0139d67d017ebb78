#include "AnnotationImageDecodeCache.h"

#include "PngDecoder.h"

namespace tosvar {

AnnotationImageDecodeCache::AnnotationImageDecodeCache(Decoder decoder) : decode_(std::move(decoder)) {}

AnnotationImageDecodeCache& AnnotationImageDecodeCache::shared() {
    static AnnotationImageDecodeCache cache([](std::span<const std::uint8_t> bytes) { return PngDecoder::decode(bytes); });
    return cache;
}

std::optional<ImageBuffer> AnnotationImageDecodeCache::image(const AnnotationImage& picture) {
    {
        std::lock_guard lock(mutex_);
        if (const auto found = entries_.find(picture.id); found != entries_.end()) return found->second;
    }
    Expected<ImageBuffer> decoded = decode_(picture.data.span());
    if (!decoded) return std::nullopt;

    std::lock_guard lock(mutex_);
    if (const auto found = entries_.find(picture.id); found != entries_.end()) return found->second;
    if (entries_.size() >= capacity) entries_.clear();
    entries_.emplace(picture.id, *decoded);
    return std::move(decoded).value();
}

std::size_t AnnotationImageDecodeCache::count() const {
    std::lock_guard lock(mutex_);
    return entries_.size();
}

} // namespace tosvar
