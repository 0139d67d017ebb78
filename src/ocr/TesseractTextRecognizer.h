#pragma once

#include "TextRecognizing.h"

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace tesseract {
class TessBaseAPI;
}

namespace tosvar {

// Text recognition by Tesseract's line recogniser. One engine is kept and
// set up again only when the languages change; calls take turns on it.
class TesseractTextRecognizer final : public TextRecognizing {
public:
    // `languages` gives the language tags to read ("en-US", "zh-Hans", ...)
    // at each call; tags without installed data are left out, and English
    // stands in when none is left.
    explicit TesseractTextRecognizer(std::function<std::vector<std::string>()> languages);
    ~TesseractTextRecognizer() override;

    OCROutcome recognizeText(const std::vector<std::uint8_t>& encodedImage) override;
    std::vector<RecognizedLine> recognizeLines(const ImageBuffer& image) override;

    // Tesseract's name for a language tag ("zh-Hans" is "chi_sim"); none when
    // it has no model of its own.
    static std::optional<std::string> modelName(const std::string& languageTag);
    // The language tags whose models are installed.
    static std::vector<std::string> supportedLanguages();

private:
    std::optional<std::vector<RecognizedLine>> read(const ImageBuffer& image);
    bool prepare(const std::string& models);

    std::function<std::vector<std::string>()> languages_;
    std::mutex mutex_;
    std::unique_ptr<tesseract::TessBaseAPI> engine_;
    std::string loadedModels_;
};

} // namespace tosvar
