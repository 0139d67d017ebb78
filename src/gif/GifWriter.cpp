#include "GifWriter.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>

namespace tosvar {

namespace {

// GIF's variable-length LZW: codes from `minimumBits` + 1 bits up to 12,
// packed least significant bit first into sub-blocks of at most 255 bytes.
// The dictionary is a table of child codes per (code, byte), made valid by a
// generation stamp, so clearing it when it fills costs nothing.
class LzwEncoder {
public:
    LzwEncoder() : child_(4096 * 256, 0), stamp_(4096 * 256, 0) {}

    void encode(const std::uint8_t* symbols, std::size_t count, int minimumBits, std::vector<std::uint8_t>& out) {
        out_ = &out;
        clearCode_ = 1 << minimumBits;
        endCode_ = clearCode_ + 1;
        minimumBits_ = minimumBits;
        out.push_back(static_cast<std::uint8_t>(minimumBits));
        block_.clear();
        bits_ = 0;
        bitCount_ = 0;
        reset();
        emit(clearCode_);
        if (count > 0) {
            int prefix = symbols[0];
            for (std::size_t i = 1; i < count; ++i) {
                const int symbol = symbols[i];
                const std::size_t slot = static_cast<std::size_t>(prefix) * 256 + static_cast<std::size_t>(symbol);
                if (stamp_[slot] == generation_) {
                    prefix = child_[slot];
                    continue;
                }
                emit(prefix);
                if (nextCode_ < 4096) {
                    child_[slot] = static_cast<std::uint16_t>(nextCode_);
                    stamp_[slot] = generation_;
                    // The decoder widens its codes one code later than it adds one.
                    if (nextCode_ == (1 << codeBits_) && codeBits_ < 12) ++codeBits_;
                    ++nextCode_;
                } else {
                    emit(clearCode_);
                    reset();
                }
                prefix = symbol;
            }
            emit(prefix);
        }
        emit(endCode_);
        if (bitCount_ > 0) pushByte(static_cast<std::uint8_t>(bits_ & 0xFF));
        flushBlock();
        out.push_back(0);
    }

private:
    void reset() {
        ++generation_;
        nextCode_ = endCode_ + 1;
        codeBits_ = minimumBits_ + 1;
    }
    void emit(int code) {
        bits_ |= static_cast<std::uint32_t>(code) << bitCount_;
        bitCount_ += codeBits_;
        while (bitCount_ >= 8) {
            pushByte(static_cast<std::uint8_t>(bits_ & 0xFF));
            bits_ >>= 8;
            bitCount_ -= 8;
        }
    }
    void pushByte(std::uint8_t byte) {
        block_.push_back(byte);
        if (block_.size() == 255) flushBlock();
    }
    void flushBlock() {
        if (block_.empty()) return;
        out_->push_back(static_cast<std::uint8_t>(block_.size()));
        out_->insert(out_->end(), block_.begin(), block_.end());
        block_.clear();
    }

    std::vector<std::uint16_t> child_;
    std::vector<std::uint32_t> stamp_;
    std::uint32_t generation_ = 0;
    std::vector<std::uint8_t>* out_ = nullptr;
    std::vector<std::uint8_t> block_;
    std::uint32_t bits_ = 0;
    int bitCount_ = 0;
    int clearCode_ = 0, endCode_ = 0, nextCode_ = 0, codeBits_ = 0, minimumBits_ = 0;
};

} // namespace

GifWriter::GifWriter(int width, int height, const std::vector<std::uint32_t>& palette) : width_(width), height_(height) {
    const std::size_t colours = std::clamp<std::size_t>(palette.size(), 2, 256);
    tableBits_ = 1;
    while ((std::size_t{1} << tableBits_) < colours) ++tableBits_;
    for (const char c : std::string_view("GIF89a")) out_.push_back(static_cast<std::uint8_t>(c));
    put16(width);
    put16(height);
    out_.push_back(static_cast<std::uint8_t>(0x80 | 0x70 | (tableBits_ - 1)));
    out_.push_back(0); // background index
    out_.push_back(0); // square pixels
    for (std::size_t i = 0; i < (std::size_t{1} << tableBits_); ++i) {
        const std::uint32_t colour = i < palette.size() ? palette[i] : 0;
        out_.push_back(static_cast<std::uint8_t>(colour >> 16));
        out_.push_back(static_cast<std::uint8_t>(colour >> 8));
        out_.push_back(static_cast<std::uint8_t>(colour));
    }
    for (const std::uint8_t byte : {0x21, 0xFF, 0x0B}) out_.push_back(byte);
    for (const char c : std::string_view("NETSCAPE2.0")) out_.push_back(static_cast<std::uint8_t>(c));
    for (const std::uint8_t byte : {0x03, 0x01, 0x00, 0x00, 0x00}) out_.push_back(byte); // loop for ever
}

void GifWriter::put16(int value) {
    out_.push_back(static_cast<std::uint8_t>(value & 0xFF));
    out_.push_back(static_cast<std::uint8_t>((value >> 8) & 0xFF));
}

void GifWriter::add(const Frame& frame) {
    const int hundredths = std::max(2, static_cast<int>(std::lround(frame.delaySeconds * 100)));
    for (const std::uint8_t byte : {0x21, 0xF9, 0x04}) out_.push_back(byte);
    out_.push_back(static_cast<std::uint8_t>((1 << 2) | (frame.transparent ? 1 : 0))); // keep what is drawn
    put16(std::min(hundredths, 0xFFFF));
    out_.push_back(frame.transparent.value_or(0));
    out_.push_back(0);
    out_.push_back(0x2C);
    put16(frame.area.x);
    put16(frame.area.y);
    put16(frame.area.width);
    put16(frame.area.height);
    out_.push_back(0); // no local table, not interlaced
    static thread_local LzwEncoder lzw;
    lzw.encode(frame.indices, static_cast<std::size_t>(frame.area.width) * frame.area.height, std::max(2, tableBits_), out_);
}

std::vector<std::uint8_t> GifWriter::finish() {
    out_.push_back(0x3B);
    return std::move(out_);
}

} // namespace tosvar
