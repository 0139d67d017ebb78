#pragma once

#include "TextRecognizing.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace tesseract {
class TessBaseAPI;
}

namespace tosvar {

class WorkerPool;

// Text recognition by Tesseract's line recogniser, made fast enough for a
// screen: the page is cut at blank rows into bands read side by side on the
// worker pool, each by an engine of its own (engines are kept per set of
// models), and read first with the Latin-script languages of the list only;
// lines that come out unsure are read again with every language of the list,
// so a page of English does not pay for the Chinese models and a page of
// Chinese still gets them.
class TesseractTextRecognizer final : public TextRecognizing {
public:
    // `languages` gives the language tags to read ("en-US", "zh-Hans", ...)
    // at each call; tags without installed data are left out, and English
    // stands in when none is left.
    TesseractTextRecognizer(std::function<std::vector<std::string>()> languages, WorkerPool& pool);
    ~TesseractTextRecognizer() override;

    OCROutcome recognizeText(const std::vector<std::uint8_t>& encodedImage) override;
    std::vector<RecognizedLine> recognizeLines(const ImageBuffer& image) override;

    // Tesseract's name for a language tag ("zh-Hans" is "chi_sim"); none when
    // it has no model of its own.
    static std::optional<std::string> modelName(const std::string& languageTag);
    // The language tags whose models are installed.
    static std::vector<std::string> supportedLanguages();

    // A line read with less confidence than this is read again with every language.
    static constexpr float unsureConfidence = 0.6f;

private:
    class Engine;
    struct Models {
        std::string first; // the Latin-script models, English always among them
        std::string all;   // every model of the list, in its order
    };

    Models models() const;
    std::optional<std::vector<RecognizedLine>> read(const ImageBuffer& image);
    std::unique_ptr<Engine> takeEngine(const std::string& models);
    void giveBack(std::unique_ptr<Engine> engine);

    std::function<std::vector<std::string>()> languages_;
    WorkerPool& pool_;
    std::mutex mutex_;
    std::multimap<std::string, std::unique_ptr<Engine>> idle_;
};

} // namespace tosvar
