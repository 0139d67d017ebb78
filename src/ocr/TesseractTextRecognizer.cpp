#include "TesseractTextRecognizer.h"

#include "Log.h"
#include "ParallelFor.h"
#include "PngDecoder.h"
#include "TextBlockGrouping.h"
#include "WorkerPool.h"

#include <omp.h>
#include <tesseract/baseapi.h>
#include <tesseract/resultiterator.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <iterator>

namespace tosvar {

namespace {

struct ModelEntry {
    const char* tag;
    const char* model;
    bool latin;
};

constexpr std::array<ModelEntry, 14> knownModels{{
    {"en", "eng", true},      {"zh-Hans", "chi_sim", false}, {"zh-Hant", "chi_tra", false}, {"ja", "jpn", false},
    {"ko", "kor", false},     {"de", "deu", true},           {"fr", "fra", true},           {"es", "spa", true},
    {"it", "ita", true},      {"pt", "por", true},           {"ru", "rus", false},          {"ar", "ara", false},
    {"hi", "hin", false},     {"th", "tha", false},
}};

const ModelEntry* entryFor(const std::string& tag) {
    for (const ModelEntry& entry : knownModels) {
        const std::string p = entry.tag;
        if (tag == p || tag.starts_with(p + "-") || tag.starts_with(p + "_")) return &entry;
    }
    return nullptr;
}

const std::vector<std::string>& installedModels() {
    static const std::vector<std::string> installed = [] {
        tesseract::TessBaseAPI probe;
        std::vector<std::string> found;
        if (probe.Init(nullptr, "eng", tesseract::OEM_LSTM_ONLY) == 0) probe.GetAvailableLanguagesAsVector(&found);
        return found;
    }();
    return installed;
}

bool isInstalled(const std::string& model) {
    const std::vector<std::string>& installed = installedModels();
    return std::find(installed.begin(), installed.end(), model) != installed.end();
}

void append(std::string& models, const std::string& model) {
    if (("+" + models + "+").find("+" + model + "+") != std::string::npos) return;
    models += (models.empty() ? "" : "+") + model;
}

// The page in grey, one byte a pixel, as the engine reads it anyway.
struct GreyPage {
    std::vector<std::uint8_t> pixels;
    int width = 0, height = 0;

    explicit GreyPage(const ImageBuffer& image) : pixels(static_cast<std::size_t>(image.width()) * image.height()),
                                                  width(image.width()), height(image.height()) {
        const ChannelOffsets c = channelOffsets(image.order());
        for (int y = 0; y < height; ++y) {
            const std::uint8_t* row = image.row(y);
            std::uint8_t* out = &pixels[static_cast<std::size_t>(y) * width];
            for (int x = 0; x < width; ++x) out[x] = static_cast<std::uint8_t>((row[4 * x + c.r] * 77 + row[4 * x + c.g] * 150 + row[4 * x + c.b] * 29) >> 8);
        }
    }
    const std::uint8_t* at(int x, int y) const { return &pixels[static_cast<std::size_t>(y) * width + x]; }
};

// A rectangle of the grey page, read without a copy.
struct PageView {
    const GreyPage* page;
    PixelRect area;
};

// Whether a row or column of the page holds text: its lightest and darkest
// pixels lie apart.
bool inked(const GreyPage& page, int x0, int y0, int dx, int dy, int count) {
    int lo = 255, hi = 0;
    for (int i = 0; i < count; ++i) {
        const int v = *page.at(x0 + i * dx, y0 + i * dy);
        lo = std::min(lo, v);
        hi = std::max(hi, v);
    }
    return hi - lo >= 40;
}

// The part of the page that holds anything, with a margin; empty for a blank page.
PixelRect contentBox(const GreyPage& page) {
    int top = 0, bottom = page.height, left = 0, right = page.width;
    while (top < bottom && !inked(page, 0, top, 1, 0, page.width)) ++top;
    while (bottom > top && !inked(page, 0, bottom - 1, 1, 0, page.width)) --bottom;
    if (top == bottom) return {};
    while (left < right && !inked(page, left, top, 0, 1, bottom - top)) ++left;
    while (right > left && !inked(page, right - 1, top, 0, 1, bottom - top)) --right;
    constexpr int margin = 12;
    return PixelRect{left - margin, top - margin, right - left + 2 * margin, bottom - top + 2 * margin}.intersection(
        {0, 0, page.width, page.height});
}

// Where `area` is cut into at most `count` bands: at the blank row nearest
// each even cut, none nearer than 48 rows to another; no band without one.
std::vector<int> bandCuts(const GreyPage& page, const PixelRect& area, int count) {
    std::vector<int> cuts{area.y};
    if (count > 1 && area.height >= 256) {
        auto blank = [&](int y) { return !inked(page, area.x, y, 1, 0, area.width); };
        for (int k = 1; k < count; ++k) {
            const int ideal = area.y + area.height * k / count;
            const int reach = area.height / (2 * count);
            for (int d = 0; d <= reach; ++d) {
                const int below = ideal + d, above = ideal - d;
                const int found = below < area.maxY() && blank(below) ? below : above > area.y && blank(above) ? above : -1;
                if (found < 0) continue;
                if (found - cuts.back() >= 48 && area.maxY() - found >= 48) cuts.push_back(found);
                break;
            }
        }
    }
    cuts.push_back(area.maxY());
    return cuts;
}

} // namespace

// One Tesseract engine with its models loaded.
class TesseractTextRecognizer::Engine {
public:
    explicit Engine(std::string models) : models_(std::move(models)) {
        if (api_.Init(nullptr, models_.c_str(), tesseract::OEM_LSTM_ONLY) != 0) {
            logLine("text recognition: cannot load the models " + models_);
            ready_ = false;
        }
    }
    const std::string& models() const { return models_; }
    bool ready() const { return ready_; }

    // The lines of `view`, in the whole page's unit coordinates; none when the engine fails.
    std::optional<std::vector<RecognizedLine>> readPage(const PageView& view) { return read(view, tesseract::PSM_AUTO); }
    // `view` as one line: its text and confidence.
    std::optional<RecognizedLine> readLine(const PageView& view) {
        const std::optional<std::vector<RecognizedLine>> lines = read(view, tesseract::PSM_SINGLE_LINE);
        if (!lines || lines->empty()) return std::nullopt;
        return lines->front();
    }

private:
    std::optional<std::vector<RecognizedLine>> read(const PageView& view, tesseract::PageSegMode mode) {
        // The engine's own OpenMP threads spin against each other and make a
        // page six times slower on two cores: one thread per engine, set on
        // the thread that reads, since the setting belongs to it.
        omp_set_max_active_levels(0);
        api_.SetPageSegMode(mode);
        const GreyPage& page = *view.page;
        api_.SetImage(page.at(view.area.x, view.area.y), view.area.width, view.area.height, 1, page.width);
        if (api_.Recognize(nullptr) != 0) {
            api_.Clear();
            return std::nullopt;
        }
        std::vector<RecognizedLine> lines;
        const double w = page.width, h = page.height;
        const int dx = view.area.x, dy = view.area.y;
        std::unique_ptr<tesseract::ResultIterator> it(api_.GetIterator());
        if (it) {
            do {
                std::unique_ptr<char[]> text(it->GetUTF8Text(tesseract::RIL_TEXTLINE));
                int x1 = 0, y1 = 0, x2 = 0, y2 = 0;
                if (!text || !it->BoundingBox(tesseract::RIL_TEXTLINE, &x1, &y1, &x2, &y2)) continue;
                std::string line = text.get();
                while (!line.empty() && (line.back() == '\n' || line.back() == ' ')) line.pop_back();
                const float confidence = std::clamp(it->Confidence(tesseract::RIL_TEXTLINE) / 100.0f, 0.0f, 1.0f);
                lines.push_back({line, Rect((x1 + dx) / w, 1 - (y2 + dy) / h, (x2 - x1) / w, (y2 - y1) / h), confidence});
            } while (it->Next(tesseract::RIL_TEXTLINE));
        }
        api_.Clear();
        return lines;
    }

    std::string models_;
    tesseract::TessBaseAPI api_;
    bool ready_ = true;
};

TesseractTextRecognizer::TesseractTextRecognizer(std::function<std::vector<std::string>()> languages, WorkerPool& pool)
    : languages_(std::move(languages)), pool_(pool) {}

TesseractTextRecognizer::~TesseractTextRecognizer() = default;

std::optional<std::string> TesseractTextRecognizer::modelName(const std::string& tag) {
    const ModelEntry* entry = entryFor(tag);
    return entry ? std::optional<std::string>(entry->model) : std::nullopt;
}

std::vector<std::string> TesseractTextRecognizer::supportedLanguages() {
    std::vector<std::string> tags;
    for (const ModelEntry& entry : knownModels)
        if (isInstalled(entry.model)) tags.emplace_back(entry.tag);
    return tags;
}

TesseractTextRecognizer::Models TesseractTextRecognizer::models() const {
    Models models;
    for (const std::string& tag : languages_()) {
        const ModelEntry* entry = entryFor(tag);
        if (!entry || !isInstalled(entry->model)) continue;
        append(models.all, entry->model);
        if (entry->latin) append(models.first, entry->model);
    }
    if (models.all.empty()) models.all = "eng";
    if (models.first.empty()) models.first = "eng";
    return models;
}

std::unique_ptr<TesseractTextRecognizer::Engine> TesseractTextRecognizer::takeEngine(const std::string& models) {
    {
        const std::lock_guard lock(mutex_);
        if (const auto found = idle_.find(models); found != idle_.end()) {
            std::unique_ptr<Engine> engine = std::move(found->second);
            idle_.erase(found);
            return engine;
        }
    }
    auto engine = std::make_unique<Engine>(models);
    return engine->ready() ? std::move(engine) : nullptr;
}

void TesseractTextRecognizer::giveBack(std::unique_ptr<Engine> engine) {
    const std::lock_guard lock(mutex_);
    const std::string key = engine->models();
    idle_.emplace(key, std::move(engine));
}

std::optional<std::vector<RecognizedLine>> TesseractTextRecognizer::read(const ImageBuffer& image) {
    if (image.isEmpty()) return std::vector<RecognizedLine>{};
    const auto started = std::chrono::steady_clock::now();
    const Models wanted = models();
    const GreyPage page(image);
    const PixelRect content = contentBox(page);
    if (content.isEmpty()) return std::vector<RecognizedLine>{};
    const std::vector<int> cuts = bandCuts(page, content, static_cast<int>(std::max<std::size_t>(pool_.threadCount(), 1)));
    const int bands = static_cast<int>(cuts.size()) - 1;
    std::vector<std::optional<std::vector<RecognizedLine>>> read(static_cast<std::size_t>(bands));
    parallelFor(pool_, bands, bands, [&](int begin, int end) {
        for (int b = begin; b < end; ++b) {
            std::unique_ptr<Engine> engine = takeEngine(wanted.first);
            if (!engine) continue;
            read[static_cast<std::size_t>(b)] = engine->readPage({&page, {content.x, cuts[b], content.width, cuts[b + 1] - cuts[b]}});
            giveBack(std::move(engine));
        }
    });
    std::vector<RecognizedLine> lines;
    for (std::optional<std::vector<RecognizedLine>>& band : read) {
        if (!band) {
            logLine("text recognition: the engine failed on a " + std::to_string(image.width()) + "x" + std::to_string(image.height()) +
                    " image");
            return std::nullopt;
        }
        std::move(band->begin(), band->end(), std::back_inserter(lines));
    }

    // Unsure lines again with every language of the list.
    std::size_t reread = 0;
    if (wanted.all != wanted.first) {
        std::vector<std::size_t> unsure;
        for (std::size_t i = 0; i < lines.size(); ++i)
            if (lines[i].confidence < unsureConfidence) unsure.push_back(i);
        reread = unsure.size();
        parallelFor(pool_, static_cast<int>(unsure.size()), static_cast<int>(std::min<std::size_t>(unsure.size(), pool_.threadCount())),
                    [&](int begin, int end) {
                        std::unique_ptr<Engine> engine = takeEngine(wanted.all);
                        if (!engine) return;
                        for (int k = begin; k < end; ++k) {
                            RecognizedLine& line = lines[unsure[static_cast<std::size_t>(k)]];
                            const Rect box = TextBlockGrouping::pixelBox(line.normalizedBox, {static_cast<double>(page.width),
                                                                                              static_cast<double>(page.height)});
                            // A line read alone wants ground around it, half its height.
                            const int pad = std::max(8, static_cast<int>(box.height() / 2));
                            const PixelRect crop = PixelRect{static_cast<int>(box.minX()) - pad, static_cast<int>(box.minY()) - pad,
                                                             static_cast<int>(box.width()) + 2 * pad, static_cast<int>(box.height()) + 2 * pad}
                                                       .intersection({0, 0, page.width, page.height});
                            if (crop.isEmpty()) continue;
                            const std::optional<RecognizedLine> again = engine->readLine({&page, crop});
                            if (again && again->confidence > line.confidence) {
                                line.text = again->text;
                                line.confidence = again->confidence;
                            }
                        }
                        giveBack(std::move(engine));
                    });
    }
    char note[200];
    std::snprintf(note, sizeof note, "note  text recognition: %.0fms (%dx%d, %d band(s), %s, %zu line(s), %zu read again with %s)",
                  std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - started).count(), image.width(),
                  image.height(), bands, wanted.first.c_str(), lines.size(), reread, wanted.all.c_str());
    logLine(note);
    return lines;
}

std::vector<RecognizedLine> TesseractTextRecognizer::recognizeLines(const ImageBuffer& image) {
    return read(image).value_or(std::vector<RecognizedLine>{});
}

OCROutcome TesseractTextRecognizer::recognizeText(const std::vector<std::uint8_t>& encoded) {
    Expected<ImageBuffer> image = PngDecoder::decode(encoded);
    if (!image) return OCROutcome::failure();
    const std::optional<std::vector<RecognizedLine>> lines = read(*image);
    if (!lines) return OCROutcome::failure();
    std::string text;
    for (const RecognizedLine& line : *lines) text += (text.empty() ? "" : "\n") + line.text;
    return OCROutcome::recognized(text);
}

} // namespace tosvar
