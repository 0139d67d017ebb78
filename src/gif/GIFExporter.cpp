#include "GIFExporter.h"

#include "AtomicFile.h"
#include "MedianCut.h"
#include "ParallelFor.h"
#include "WorkerPool.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace tosvar::GIFExporter {

namespace {

// Every pixel of the sampled frames: the median cut works on a histogram, so
// the rare colours of text edges and shadows still count.
constexpr int samplesPerFrame = std::numeric_limits<int>::max();

std::vector<std::uint32_t> withTransparentSlot(std::vector<std::uint32_t> palette) {
    palette.push_back(0);
    return palette;
}

// Whether pixel x of two rows of the same byte order is the same.
bool samePixel(const std::uint8_t* a, const std::uint8_t* b, int x) { return std::memcmp(a + 4 * x, b + 4 * x, 4) == 0; }

} // namespace

std::vector<std::size_t> keptIndices(const std::vector<double>& times, int fps) {
    std::vector<std::size_t> kept;
    if (times.empty() || fps <= 0) return kept;
    double next = times.front() - 0.001;
    for (std::size_t i = 0; i < times.size(); ++i) {
        if (times[i] < next) continue;
        kept.push_back(i);
        next = times[i] + 1.0 / fps - 0.001;
    }
    return kept;
}

std::vector<double> frameDelays(const std::vector<double>& kept, double fallback) {
    std::vector<double> delays;
    for (std::size_t i = 0; i < kept.size(); ++i)
        delays.push_back(std::clamp(i + 1 < kept.size() ? kept[i + 1] - kept[i] : fallback, 0.02, 10.0));
    return delays;
}

std::vector<std::size_t> paletteSamplePositions(std::size_t count) {
    if (count == 0) return {};
    const std::size_t n = std::min<std::size_t>(5, count);
    if (n == 1) return {0};
    std::vector<std::size_t> positions;
    for (std::size_t i = 0; i < n; ++i) positions.push_back(i * (count - 1) / (n - 1));
    return positions;
}

GIFColorQuantizer quantizer(const std::vector<ImageBuffer>& sampleFrames) {
    std::vector<std::uint32_t> samples;
    for (const ImageBuffer& frame : sampleFrames) {
        const std::vector<std::uint32_t> some = GIFColorQuantizer::samplePixels(frame, samplesPerFrame);
        samples.insert(samples.end(), some.begin(), some.end());
    }
    return GIFColorQuantizer(MedianCut::palette(samples, 255));
}

AnimationEncoder::AnimationEncoder(const GIFColorQuantizer& quantizer, int width, int height, WorkerPool& pool)
    : quantizer_(quantizer),
      width_(width),
      height_(height),
      pool_(pool),
      writer_(width, height, withTransparentSlot(quantizer.palette())),
      transparentIndex_(static_cast<std::uint8_t>(std::min<std::size_t>(quantizer.palette().size(), 255))) {}

void AnimationEncoder::add(ImageBuffer frame, double delaySeconds) {
    batch_.emplace_back(frame.converted(PixelOrder::rgba), delaySeconds);
    if (batch_.size() >= 2 * std::max<std::size_t>(pool_.threadCount(), 1)) flushBatch();
}

void AnimationEncoder::flushBatch() {
    std::vector<std::vector<std::uint8_t>> dithered(batch_.size());
    parallelFor(pool_, static_cast<int>(batch_.size()), static_cast<int>(batch_.size()), [&](int begin, int end) {
        for (int i = begin; i < end; ++i) dithered[static_cast<std::size_t>(i)] = quantizer_.indices(batch_[static_cast<std::size_t>(i)].first);
    });
    for (std::size_t f = 0; f < batch_.size(); ++f) {
        const ImageBuffer& frame = batch_[f].first;
        const double delay = batch_[f].second;
        std::vector<std::uint8_t>& indices = dithered[f];
        if (previous_.isEmpty()) {
            writePending();
            displayed_ = indices;
            pending_ = Pending{{0, 0, width_, height_}, std::move(indices), false, delay};
            previous_ = frame;
            continue;
        }
        // The rectangle of pixels that changed.
        int top = height_, bottom = -1, left = width_, right = -1;
        for (int y = 0; y < height_; ++y) {
            const std::uint8_t* now = frame.row(y);
            const std::uint8_t* before = previous_.row(y);
            if (std::memcmp(now, before, 4 * static_cast<std::size_t>(width_)) == 0) continue;
            top = std::min(top, y);
            bottom = y;
            int x0 = 0, x1 = width_ - 1;
            while (samePixel(now, before, x0)) ++x0;
            while (samePixel(now, before, x1)) --x1;
            left = std::min(left, x0);
            right = std::max(right, x1);
        }
        if (bottom < 0) {
            if (pending_) pending_->delay += delay;
            continue;
        }
        const PixelRect area{left, top, right - left + 1, bottom - top + 1};
        std::vector<std::uint8_t> changed(static_cast<std::size_t>(area.width) * area.height);
        for (int y = 0; y < area.height; ++y) {
            const std::uint8_t* now = frame.row(area.y + y);
            const std::uint8_t* before = previous_.row(area.y + y);
            const std::uint8_t* source = &indices[static_cast<std::size_t>(area.y + y) * width_ + area.x];
            std::uint8_t* target = &changed[static_cast<std::size_t>(y) * area.width];
            std::uint8_t* shown = &displayed_[static_cast<std::size_t>(area.y + y) * width_ + area.x];
            // A pixel that shows what it should already is left as it is too.
            for (int x = 0; x < area.width; ++x) {
                if (samePixel(now, before, area.x + x) || shown[x] == source[x]) {
                    target[x] = transparentIndex_;
                } else {
                    target[x] = source[x];
                    shown[x] = source[x];
                }
            }
        }
        previous_ = frame;
        // Only the part that shows something new is stored; none lengthens the frame before.
        int top2 = area.height, bottom2 = -1, left2 = area.width, right2 = -1;
        for (int y = 0; y < area.height; ++y)
            for (int x = 0; x < area.width; ++x)
                if (changed[static_cast<std::size_t>(y) * area.width + x] != transparentIndex_) {
                    top2 = std::min(top2, y), bottom2 = y;
                    left2 = std::min(left2, x), right2 = std::max(right2, x);
                }
        if (bottom2 < 0) {
            if (pending_) pending_->delay += delay;
            continue;
        }
        const PixelRect shownArea{area.x + left2, area.y + top2, right2 - left2 + 1, bottom2 - top2 + 1};
        std::vector<std::uint8_t> stored(static_cast<std::size_t>(shownArea.width) * shownArea.height);
        for (int y = 0; y < shownArea.height; ++y)
            std::copy_n(&changed[static_cast<std::size_t>(top2 + y) * area.width + left2], shownArea.width,
                        &stored[static_cast<std::size_t>(y) * shownArea.width]);
        writePending();
        pending_ = Pending{shownArea, std::move(stored), true, delay};
    }
    batch_.clear();
}

void AnimationEncoder::writePending() {
    if (!pending_) return;
    writer_.add({pending_->area, pending_->indices.data(),
                 pending_->transparent ? std::optional<std::uint8_t>(transparentIndex_) : std::nullopt, pending_->delay});
    pending_.reset();
}

std::vector<std::uint8_t> AnimationEncoder::finish() {
    flushBatch();
    writePending();
    return writer_.finish();
}

std::optional<Error> exportMovie(MovieFileProcessing& movies, const std::filesystem::path& movie, const std::filesystem::path& destination,
                                 const Settings& settings, WorkerPool& pool, const std::function<void(double)>& progress) {
    const auto unreadable = [](const std::string& why) { return Error{std::string(unreadableMovie) + ": " + why}; };
    Expected<std::vector<double>> times = movies.videoFrameTimes(movie);
    if (!times) return unreadable(times.error().message);
    const std::vector<std::size_t> kept = keptIndices(*times, settings.fps);
    if (kept.empty()) return unreadable("it holds no picture");
    std::vector<double> keptTimes;
    for (std::size_t i : kept) keptTimes.push_back((*times)[i]);
    const std::vector<double> delays = frameDelays(keptTimes, 1.0 / std::max(settings.fps, 1));

    std::vector<std::size_t> sampled;
    for (std::size_t position : paletteSamplePositions(kept.size())) sampled.push_back(kept[position]);
    std::vector<ImageBuffer> samples;
    if (std::optional<Error> error = movies.readVideoFrames(movie, sampled, settings.maxWidthPixels,
                                                            [&](std::size_t, ImageBuffer frame) { samples.push_back(std::move(frame)); }))
        return unreadable(error->message);
    if (samples.empty()) return unreadable("no picture could be decoded");
    const GIFColorQuantizer palette = quantizer(samples);

    std::optional<AnimationEncoder> encoder;
    std::size_t written = 0;
    bool mismatched = false;
    const std::optional<Error> error = movies.readVideoFrames(movie, kept, settings.maxWidthPixels, [&](std::size_t, ImageBuffer frame) {
        if (!encoder) encoder.emplace(palette, frame.width(), frame.height(), pool);
        if (frame.width() != samples.front().width() || frame.height() != samples.front().height()) {
            mismatched = true;
            return;
        }
        encoder->add(std::move(frame), delays[written]);
        ++written;
        if (progress) progress(static_cast<double>(written) / static_cast<double>(kept.size()));
    });
    if (error) return unreadable(error->message);
    if (!encoder || mismatched) return Error{std::string(encodeFailed) + ": the pictures change size"};
    if (std::optional<Error> failed = AtomicFile::write(destination, encoder->finish()))
        return Error{std::string(encodeFailed) + ": " + failed->message};
    return std::nullopt;
}

} // namespace tosvar::GIFExporter
