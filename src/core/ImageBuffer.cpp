#include "ImageBuffer.h"

#include <atomic>
#include <cstring>

namespace tosvar {

namespace {

constexpr std::size_t rowAlignment = 64;

} // namespace

ChannelOffsets channelOffsets(PixelOrder order) {
    switch (order) {
    case PixelOrder::rgba: return {0, 1, 2, 3};
    case PixelOrder::bgra: return {2, 1, 0, 3};
    case PixelOrder::argb: return {1, 2, 3, 0};
    case PixelOrder::abgr: return {3, 2, 1, 0};
    }
    return {0, 1, 2, 3};
}

MutableImage::MutableImage(int width, int height, PixelOrder order, PixelMemoryFill fill)
    : width_(width < 0 ? 0 : width),
      height_(height < 0 ? 0 : height),
      stride_((static_cast<std::size_t>(width_) * 4 + rowAlignment - 1) / rowAlignment * rowAlignment),
      order_(order),
      pixels_(allocatePixelMemory(stride_ * static_cast<std::size_t>(height_), fill)) {}

void MutableImage::setPixel(int x, int y, Rgba8 c) {
    const ChannelOffsets o = channelOffsets(order_);
    std::uint8_t* p = row(y) + static_cast<std::size_t>(x) * 4;
    p[o.r] = c.r;
    p[o.g] = c.g;
    p[o.b] = c.b;
    p[o.a] = c.a;
}

void MutableImage::fill(Rgba8 c) {
    const ChannelOffsets o = channelOffsets(order_);
    std::uint8_t pixel[4];
    pixel[o.r] = c.r;
    pixel[o.g] = c.g;
    pixel[o.b] = c.b;
    pixel[o.a] = c.a;
    for (int y = 0; y < height_; ++y) {
        std::uint8_t* p = row(y);
        for (int x = 0; x < width_; ++x) std::memcpy(p + x * 4, pixel, 4);
    }
}

ImageBuffer MutableImage::freeze() && {
    ImageBuffer image;
    image.data_ = pixels_.get();
    image.owner_ = std::move(pixels_);
    image.width_ = width_;
    image.height_ = height_;
    image.stride_ = stride_;
    image.order_ = order_;
    image.identity_ = ImageBuffer::nextIdentity();
    width_ = height_ = 0;
    return image;
}

std::uint64_t ImageBuffer::nextIdentity() {
    static std::atomic<std::uint64_t> serial{0};
    return ++serial;
}

ImageBuffer ImageBuffer::adopt(const std::uint8_t* pixels, int width, int height, std::size_t stride,
                               PixelOrder order, std::shared_ptr<const void> owner) {
    ImageBuffer image;
    if (!pixels || width <= 0 || height <= 0 || stride < static_cast<std::size_t>(width) * 4) return image;
    image.owner_ = std::move(owner);
    image.data_ = pixels;
    image.width_ = width;
    image.height_ = height;
    image.stride_ = stride;
    image.order_ = order;
    image.identity_ = nextIdentity();
    return image;
}

Rgba8 ImageBuffer::pixel(int x, int y) const {
    const ChannelOffsets o = channelOffsets(order_);
    const std::uint8_t* p = row(y) + static_cast<std::size_t>(x) * 4;
    return {p[o.r], p[o.g], p[o.b], p[o.a]};
}

ImageBuffer ImageBuffer::cropped(const PixelRect& rect) const {
    const PixelRect r = rect.intersection(bounds());
    if (r.isEmpty()) return {};
    if (r == bounds()) return *this;
    ImageBuffer crop = *this;
    crop.data_ = row(r.y) + static_cast<std::size_t>(r.x) * 4;
    crop.width_ = r.width;
    crop.height_ = r.height;
    crop.identity_ = nextIdentity();
    return crop;
}

ImageBuffer ImageBuffer::converted(PixelOrder order) const {
    if (order == order_ || isEmpty()) return *this;
    MutableImage out(width_, height_, order);
    const ChannelOffsets from = channelOffsets(order_);
    const ChannelOffsets to = channelOffsets(order);
    for (int y = 0; y < height_; ++y) {
        const std::uint8_t* src = row(y);
        std::uint8_t* dst = out.row(y);
        for (int x = 0; x < width_; ++x, src += 4, dst += 4) {
            dst[to.r] = src[from.r];
            dst[to.g] = src[from.g];
            dst[to.b] = src[from.b];
            dst[to.a] = src[from.a];
        }
    }
    return std::move(out).freeze();
}

bool ImageBuffer::isOpaque() const {
    const int a = channelOffsets(order_).a;
    for (int y = 0; y < height_; ++y) {
        const std::uint8_t* p = row(y) + a;
        std::uint8_t all = 0xff;
        for (int x = 0; x < width_; ++x) all &= p[x * 4];
        if (all != 0xff) return false;
    }
    return true;
}

bool ImageBuffer::samePixels(const ImageBuffer& other) const {
    if (width_ != other.width_ || height_ != other.height_) return false;
    if (order_ == other.order_) {
        const std::size_t rowBytes = static_cast<std::size_t>(width_) * 4;
        for (int y = 0; y < height_; ++y)
            if (std::memcmp(row(y), other.row(y), rowBytes) != 0) return false;
        return true;
    }
    for (int y = 0; y < height_; ++y)
        for (int x = 0; x < width_; ++x)
            if (pixel(x, y) != other.pixel(x, y)) return false;
    return true;
}

} // namespace tosvar
