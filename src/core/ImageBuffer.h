#pragma once

#include "PixelMemory.h"
#include "PixelRect.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace tosvar {

// Byte order of one 32-bit pixel in memory. Every order holds premultiplied
// alpha with 8 bits per channel. Our own images are `rgba`; frames from a
// capture source keep the order they arrive in (X11 delivers `bgra`), so the
// hot paths never pay for a swizzle they do not need.
enum class PixelOrder : std::uint8_t { rgba, bgra, argb, abgr };

// One premultiplied pixel, in channel order whatever the memory order.
struct Rgba8 {
    std::uint8_t r = 0, g = 0, b = 0, a = 0;
    friend constexpr bool operator==(const Rgba8&, const Rgba8&) = default;
};

class ImageBuffer;

// Pixels being written. Freezing it hands the memory to an `ImageBuffer`
// without a copy; nothing can write to them afterwards.
class MutableImage {
public:
    // Rows are aligned to 64 bytes. New pixels are transparent black, unless the
    // caller is about to write every byte itself and asks for them uninitialized.
    MutableImage(int width, int height, PixelOrder order = PixelOrder::rgba,
                 PixelMemoryFill fill = PixelMemoryFill::zeroed);

    int width() const { return width_; }
    int height() const { return height_; }
    std::size_t stride() const { return stride_; }
    PixelOrder order() const { return order_; }
    std::uint8_t* data() { return pixels_.get(); }
    std::uint8_t* row(int y) { return pixels_.get() + static_cast<std::size_t>(y) * stride_; }
    const std::uint8_t* row(int y) const { return pixels_.get() + static_cast<std::size_t>(y) * stride_; }
    void setPixel(int x, int y, Rgba8 premultiplied);
    void fill(Rgba8 premultiplied);

    ImageBuffer freeze() &&;

private:
    int width_;
    int height_;
    std::size_t stride_;
    PixelOrder order_;
    std::shared_ptr<std::uint8_t[]> pixels_;
};

// An immutable image: 8-bit premultiplied pixels shared by every copy.
// `identity()` names the pixels this value shows; copies keep it, while any
// operation that makes a different image (a crop, a conversion) gets a new one.
// Caches key on it, never on an address that memory reuse could repeat.
class ImageBuffer {
public:
    ImageBuffer() = default; // the empty image

    // Wraps pixels owned elsewhere (a shared-memory segment, a toolkit image);
    // `owner` keeps them alive for as long as any copy of this buffer exists.
    static ImageBuffer adopt(const std::uint8_t* pixels, int width, int height, std::size_t stride,
                             PixelOrder order, std::shared_ptr<const void> owner);

    int width() const { return width_; }
    int height() const { return height_; }
    std::size_t stride() const { return stride_; }
    PixelOrder order() const { return order_; }
    bool isEmpty() const { return width_ <= 0 || height_ <= 0; }
    std::uint64_t identity() const { return identity_; }
    const std::uint8_t* data() const { return data_; }
    const std::uint8_t* row(int y) const { return data_ + static_cast<std::size_t>(y) * stride_; }
    std::size_t byteCount() const { return stride_ * static_cast<std::size_t>(height_); }
    PixelRect bounds() const { return {0, 0, width_, height_}; }
    // Whether two buffers show the same memory (a crop shares its source's).
    bool sharesPixelsWith(const ImageBuffer& other) const { return owner_ && owner_ == other.owner_; }

    Rgba8 pixel(int x, int y) const;
    // Shares the pixels; the rectangle is clipped to the image first.
    ImageBuffer cropped(const PixelRect& rect) const;
    // A copy in another byte order (shares the pixels when the order matches).
    ImageBuffer converted(PixelOrder order) const;
    bool isOpaque() const;

    // Same size and the same pixel values (in channel order), whatever the layout.
    bool samePixels(const ImageBuffer& other) const;

private:
    friend class MutableImage;
    static std::uint64_t nextIdentity();

    std::shared_ptr<const void> owner_;
    const std::uint8_t* data_ = nullptr;
    int width_ = 0;
    int height_ = 0;
    std::size_t stride_ = 0;
    PixelOrder order_ = PixelOrder::rgba;
    std::uint64_t identity_ = 0;
};

// Channel positions within a pixel for each memory order.
struct ChannelOffsets {
    int r, g, b, a;
};
ChannelOffsets channelOffsets(PixelOrder order);

} // namespace tosvar
