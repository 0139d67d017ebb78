#include "TesseractTextRecognizer.h"

#include "Log.h"
#include "ParallelFor.h"
#include "PngDecoder.h"
#include "WorkerPool.h"

#include <omp.h>
#include <tesseract/baseapi.h>
#include <tesseract/resultiterator.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>

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

// Rows holding no text: their lightest and darkest pixels lie close together.
std::vector<bool> blankRows(const ImageBuffer& image) {
    std::vector<bool> blank(static_cast<std::size_t>(image.height()));
    for (int y = 0; y < image.height(); ++y) {
        const std::uint8_t* row = image.row(y);
        int lo = 255, hi = 0;
        for (int x = 0; x < image.width(); ++x) {
            const int grey = (row[4 * x] * 3 + row[4 * x + 1] * 6 + row[4 * x + 2]) / 10;
            lo = std::min(lo, grey);
            hi = std::max(hi, grey);
        }
        blank[static_cast<std::size_t>(y)] = hi - lo < 40;
    }
    return blank;
}

// Where the page is cut into at most `count` bands: at the blank row nearest
// each even cut, none nearer than 48 rows to another; no band without one.
std::vector<int> bandCuts(const ImageBuffer& image, int count) {
    std::vector<int> cuts{0};
    if (count > 1 && image.height() >= 256) {
        const std::vector<bool> blank = blankRows(image);
        for (int k = 1; k < count; ++k) {
            const int ideal = image.height() * k / count;
            const int reach = image.height() / (2 * count);
            for (int d = 0; d <= reach; ++d) {
                const int below = ideal + d, above = ideal - d;
                const int found = below < image.height() && blank[static_cast<std::size_t>(below)] ? below
                                  : above > 0 && blank[static_cast<std::size_t>(above)]       ? above
                                                                                                : -1;
                if (found < 0) continue;
                if (found - cuts.back() >= 48 && image.height() - found >= 48) cuts.push_back(found);
                break;
            }
        }
    }
    cuts.push_back(image.height());
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

    // The lines of `image` in its own unit coordinates; none when the engine fails.
    std::optional<std::vector<RecognizedLine>> readPage(const ImageBuffer& image) {
        return read(image, tesseract::PSM_AUTO);
    }
    // `image` as one line: its text and confidence.
    std::optional<RecognizedLine> readLine(const ImageBuffer& image) {
        const std::optional<std::vector<RecognizedLine>> lines = read(image, tesseract::PSM_SINGLE_LINE);
        if (!lines || lines->empty()) return std::nullopt;
        return lines->front();
    }

private:
    std::optional<std::vector<RecognizedLine>> read(const ImageBuffer& image, tesseract::PageSegMode mode) {
        // The engine's own OpenMP threads spin against each other and make a
        // page six times slower on two cores: one thread per engine, set on
        // the thread that reads, since the setting belongs to it.
        omp_set_max_active_levels(0);
        api_.SetPageSegMode(mode);
        api_.SetImage(image.data(), image.width(), image.height(), 4, static_cast<int>(image.stride()));
        if (api_.Recognize(nullptr) != 0) {
            api_.Clear();
            return std::nullopt;
        }
        std::vector<RecognizedLine> lines;
        const double w = image.width(), h = image.height();
        std::unique_ptr<tesseract::ResultIterator> it(api_.GetIterator());
        if (it) {
            do {
                std::unique_ptr<char[]> text(it->GetUTF8Text(tesseract::RIL_TEXTLINE));
                int x1 = 0, y1 = 0, x2 = 0, y2 = 0;
                if (!text || !it->BoundingBox(tesseract::RIL_TEXTLINE, &x1, &y1, &x2, &y2)) continue;
                std::string line = text.get();
                while (!line.empty() && (line.back() == '\n' || line.back() == ' ')) line.pop_back();
                const float confidence = std::clamp(it->Confidence(tesseract::RIL_TEXTLINE) / 100.0f, 0.0f, 1.0f);
                lines.push_back({line, Rect(x1 / w, 1 - y2 / h, (x2 - x1) / w, (y2 - y1) / h), confidence});
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

std::optional<std::vector<RecognizedLine>> TesseractTextRecognizer::read(const ImageBuffer& source) {
    if (source.isEmpty()) return std::vector<RecognizedLine>{};
    const auto started = std::chrono::steady_clock::now();
    const Models wanted = models();
    const ImageBuffer image = source.converted(PixelOrder::rgba);
    const std::vector<int> cuts = bandCuts(image, static_cast<int>(std::max<std::size_t>(pool_.threadCount(), 1)));
    const int bands = static_cast<int>(cuts.size()) - 1;
    std::vector<std::optional<std::vector<RecognizedLine>>> read(static_cast<std::size_t>(bands));
    parallelFor(pool_, bands, bands, [&](int begin, int end) {
        for (int b = begin; b < end; ++b) {
            std::unique_ptr<Engine> engine = takeEngine(wanted.first);
            if (!engine) continue;
            const ImageBuffer band = image.cropped({0, cuts[b], image.width(), cuts[b + 1] - cuts[b]});
            read[static_cast<std::size_t>(b)] = engine->readPage(band);
            giveBack(std::move(engine));
        }
    });

    // Back into the page's unit coordinates (origin bottom left).
    std::vector<RecognizedLine> lines;
    const double h = image.height();
    for (int b = 0; b < bands; ++b) {
        if (!read[static_cast<std::size_t>(b)]) {
            logLine("text recognition: the engine failed on a " + std::to_string(image.width()) + "x" + std::to_string(image.height()) +
                    " image");
            return std::nullopt;
        }
        const double top = cuts[b], height = cuts[b + 1] - cuts[b];
        for (RecognizedLine line : *read[static_cast<std::size_t>(b)]) {
            const Rect& box = line.normalizedBox;
            const double y0 = top + (1 - box.maxY()) * height, y1 = top + (1 - box.minY()) * height;
            line.normalizedBox = Rect(box.minX(), 1 - y1 / h, box.width(), (y1 - y0) / h);
            lines.push_back(std::move(line));
        }
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
                            const Rect& box = line.normalizedBox;
                            const int pad = std::max(2, static_cast<int>(box.height() * h * 0.15));
                            const PixelRect crop = PixelRect{static_cast<int>(box.minX() * image.width()) - pad,
                                                             static_cast<int>((1 - box.maxY()) * h) - pad,
                                                             static_cast<int>(box.width() * image.width()) + 2 * pad,
                                                             static_cast<int>(box.height() * h) + 2 * pad}
                                                       .intersection({0, 0, image.width(), image.height()});
                            if (crop.isEmpty()) continue;
                            const std::optional<RecognizedLine> again = engine->readLine(image.cropped(crop));
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
