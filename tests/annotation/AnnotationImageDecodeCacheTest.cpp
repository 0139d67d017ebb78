#include "AnnotationImageDecodeCache.h"
#include "AnnotationSamples.h"

#include "PngEncoder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>

using namespace tosvar;

namespace {

// Decodes the first byte as the width of a 1-pixel-high image; an empty input fails.
struct CountingDecoder {
    std::shared_ptr<std::atomic<int>> calls = std::make_shared<std::atomic<int>>(0);

    AnnotationImageDecodeCache::Decoder decoder() const {
        return [calls = calls](std::span<const std::uint8_t> bytes) -> Expected<ImageBuffer> {
            ++*calls;
            if (bytes.empty()) return Error{"no bytes"};
            return MutableImage(bytes[0], 1).freeze();
        };
    }
};

AnnotationImage pictureOfWidth(std::uint8_t width) {
    return {Uuid::random(), SharedBytes({width}), static_cast<double>(width), 1};
}

} // namespace

TEST(AnnotationImageDecodeCache, DecodesEachPictureOnce) {
    CountingDecoder counting;
    AnnotationImageDecodeCache cache(counting.decoder());
    const AnnotationImage picture = pictureOfWidth(7);
    const std::optional<ImageBuffer> first = cache.image(picture);
    const std::optional<ImageBuffer> second = cache.image(picture);
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first->width(), 7);
    EXPECT_EQ(first->identity(), second->identity());
    EXPECT_EQ(*counting.calls, 1);
}

TEST(AnnotationImageDecodeCache, AFailedDecodeIsNotRemembered) {
    CountingDecoder counting;
    AnnotationImageDecodeCache cache(counting.decoder());
    AnnotationImage broken = pictureOfWidth(1);
    broken.data = SharedBytes();
    EXPECT_FALSE(cache.image(broken));
    EXPECT_FALSE(cache.image(broken));
    EXPECT_EQ(*counting.calls, 2);
    EXPECT_EQ(cache.count(), 0u);
}

TEST(AnnotationImageDecodeCache, TheSixtyFifthPictureEmptiesTheStoreFirst) {
    CountingDecoder counting;
    AnnotationImageDecodeCache cache(counting.decoder());
    for (int i = 0; i < 64; ++i) ASSERT_TRUE(cache.image(pictureOfWidth(static_cast<std::uint8_t>(i + 1))));
    EXPECT_EQ(cache.count(), 64u);
    ASSERT_TRUE(cache.image(pictureOfWidth(200)));
    EXPECT_EQ(cache.count(), 1u);
}

TEST(AnnotationImageDecodeCache, LookupsGoOnWhileAnotherThreadDecodes) {
    std::promise<void> decoding;
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    const AnnotationImage slow = pictureOfWidth(3);
    const AnnotationImage ready = pictureOfWidth(5);
    AnnotationImageDecodeCache cache([&](std::span<const std::uint8_t> bytes) -> Expected<ImageBuffer> {
        if (bytes[0] == 3) {
            decoding.set_value();
            released.wait();
        }
        return MutableImage(bytes[0], 1).freeze();
    });
    ASSERT_TRUE(cache.image(ready));

    auto slowLookup = std::async(std::launch::async, [&] { return cache.image(slow); });
    decoding.get_future().wait();
    // The slow decode holds no lock: this lookup answers while it is still running.
    const std::optional<ImageBuffer> hit = cache.image(ready);
    release.set_value();
    ASSERT_TRUE(hit);
    EXPECT_EQ(hit->width(), 5);
    EXPECT_EQ(slowLookup.get()->width(), 3);
}

TEST(AnnotationImageDecodeCache, ManyThreadsShareOneStore) {
    CountingDecoder counting;
    AnnotationImageDecodeCache cache(counting.decoder());
    std::vector<AnnotationImage> pictures;
    for (int i = 0; i < 100; ++i) pictures.push_back(pictureOfWidth(static_cast<std::uint8_t>(i + 1)));
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int round = 0; round < 50; ++round)
                for (std::size_t i = 0; i < pictures.size(); i += static_cast<std::size_t>(t + 1)) {
                    const std::optional<ImageBuffer> image = cache.image(pictures[i]);
                    if (!image || image->width() != static_cast<int>(i + 1)) ++wrong;
                }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_LE(cache.count(), AnnotationImageDecodeCache::capacity);
}

TEST(AnnotationImageDecodeCache, TheSharedStoreDecodesPng) {
    MutableImage pixels(6, 4);
    pixels.fill({255, 0, 0, 255});
    const Expected<std::vector<std::uint8_t>> png = PngEncoder::encode(std::move(pixels).freeze());
    ASSERT_TRUE(png);
    const AnnotationImage picture{Uuid::random(), SharedBytes(*png), 6, 4};
    const std::optional<ImageBuffer> image = AnnotationImageDecodeCache::shared().image(picture);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->width(), 6);
    EXPECT_EQ(image->height(), 4);
    EXPECT_EQ(image->pixel(2, 2), (Rgba8{255, 0, 0, 255}));

    EXPECT_FALSE(AnnotationImageDecodeCache::shared().image(samples::picture()));
}
