#pragma once

#include "DefaultsStore.h"
#include "PinnedImageManager.h"
#include "Rect.h"

#include <functional>
#include <optional>
#include <string>

namespace tosvar {

// What a translation card may ask of its host.
struct TranslationCardActions {
    std::function<void(const std::string& text)> copyText;
    std::function<void(const PinnedContentPayload& payload, const std::optional<Rect>& frame)> pin;
};

// The translation card over a region, and whether translation can run at all.
class RegionTranslationController {
public:
    virtual ~RegionTranslationController() = default;

    virtual bool isAvailable() const = 0;
    virtual std::string unavailableReasonKey() const = 0;
    // Writes a line to the translation log.
    virtual void note(const std::string& line) = 0;
    virtual void dismissTransientCards() = 0;
    // Shows a card translating the image, placed near `rect`.
    virtual void presentCard(const Bytes& png, const Rect& rect) = 0;

    TranslationCardActions hostActions;
};

} // namespace tosvar
