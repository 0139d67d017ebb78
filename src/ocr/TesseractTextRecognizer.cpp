#include "TesseractTextRecognizer.h"

#include "Log.h"
#include "PngDecoder.h"

#include <tesseract/baseapi.h>
#include <tesseract/resultiterator.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace tosvar {

namespace {

constexpr std::array<std::pair<const char*, const char*>, 14> models{{
    {"en", "eng"},      {"zh-Hans", "chi_sim"}, {"zh-Hant", "chi_tra"}, {"ja", "jpn"}, {"ko", "kor"},
    {"de", "deu"},      {"fr", "fra"},          {"es", "spa"},          {"it", "ita"}, {"pt", "por"},
    {"ru", "rus"},      {"ar", "ara"},          {"hi", "hin"},          {"th", "tha"},
}};

std::vector<std::string> installedModels() {
    tesseract::TessBaseAPI probe;
    std::vector<std::string> installed;
    if (probe.Init(nullptr, "eng", tesseract::OEM_LSTM_ONLY) == 0) probe.GetAvailableLanguagesAsVector(&installed);
    return installed;
}

} // namespace

TesseractTextRecognizer::TesseractTextRecognizer(std::function<std::vector<std::string>()> languages)
    : languages_(std::move(languages)) {
    // Several threads per page make a screenshot slower, not faster.
    ::setenv("OMP_THREAD_LIMIT", "1", 0);
}

TesseractTextRecognizer::~TesseractTextRecognizer() = default;

std::optional<std::string> TesseractTextRecognizer::modelName(const std::string& tag) {
    for (const auto& [prefix, model] : models) {
        const std::string p = prefix;
        if (tag == p || tag.starts_with(p + "-") || tag.starts_with(p + "_")) return std::string(model);
    }
    return std::nullopt;
}

std::vector<std::string> TesseractTextRecognizer::supportedLanguages() {
    const std::vector<std::string> installed = installedModels();
    std::vector<std::string> tags;
    for (const auto& [tag, model] : models)
        if (std::find(installed.begin(), installed.end(), model) != installed.end()) tags.emplace_back(tag);
    return tags;
}

bool TesseractTextRecognizer::prepare(const std::string& wanted) {
    if (engine_ && loadedModels_ == wanted) return true;
    engine_ = std::make_unique<tesseract::TessBaseAPI>();
    if (engine_->Init(nullptr, wanted.c_str(), tesseract::OEM_LSTM_ONLY) != 0) {
        logLine("text recognition: cannot load the models " + wanted);
        engine_.reset();
        loadedModels_.clear();
        return false;
    }
    engine_->SetPageSegMode(tesseract::PSM_AUTO);
    loadedModels_ = wanted;
    return true;
}

std::optional<std::vector<RecognizedLine>> TesseractTextRecognizer::read(const ImageBuffer& source) {
    if (source.isEmpty()) return std::vector<RecognizedLine>{};
    static const std::vector<std::string> installed = installedModels();
    std::string wanted;
    for (const std::string& tag : languages_()) {
        const std::optional<std::string> model = modelName(tag);
        if (!model || std::find(installed.begin(), installed.end(), *model) == installed.end()) continue;
        if (wanted.find(*model) != std::string::npos) continue;
        wanted += (wanted.empty() ? "" : "+") + *model;
    }
    if (wanted.empty()) wanted = "eng";

    const std::lock_guard lock(mutex_);
    if (!prepare(wanted)) return std::nullopt;
    const auto started = std::chrono::steady_clock::now();
    const ImageBuffer image = source.converted(PixelOrder::rgba);
    engine_->SetImage(image.data(), image.width(), image.height(), 4, static_cast<int>(image.stride()));
    if (engine_->Recognize(nullptr) != 0) {
        logLine("text recognition: the engine failed on a " + std::to_string(image.width()) + "x" +
                std::to_string(image.height()) + " image");
        return std::nullopt;
    }
    std::vector<RecognizedLine> lines;
    const double w = image.width(), h = image.height();
    std::unique_ptr<tesseract::ResultIterator> it(engine_->GetIterator());
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
    engine_->Clear();
    char note[160];
    std::snprintf(note, sizeof note, "note  text recognition: %.0fms (%dx%d, %s, %zu line(s))",
                  std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - started).count(),
                  image.width(), image.height(), wanted.c_str(), lines.size());
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
