#pragma once

#include "DefaultsStore.h"

#include <functional>
#include <optional>
#include <string>

namespace tosvar {

// Reads the text of an image, for the card's copy-text action. `completion`
// runs on the main thread with the text, or none when nothing was read.
class TextRecognition {
public:
    virtual ~TextRecognition() = default;
    virtual void recognizeTextForCard(const Bytes& png, std::function<void(const std::optional<std::string>&)> completion) = 0;
};

} // namespace tosvar
