#pragma once

#include "AnnotationImage.h"
#include "RawEnum.h"
#include "TranslatedBlock.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace tosvar {

// The cases of `AnnotationKind`, in declaration order (also the order of
// their coding keys).
enum class AnnotationKindCase : std::uint8_t {
    arrow,
    line,
    rectangle,
    ellipse,
    freehand,
    highlighter,
    text,
    stepBadge,
    watermark,
    mosaic,
    blur,
    magnifier,
    spotlight,
    image,
    translatedText,
};

template <>
struct RawEnum<AnnotationKindCase> {
    using C = AnnotationKindCase;
    static constexpr std::array table{
        std::pair{C::arrow, std::string_view("arrow")},
        std::pair{C::line, std::string_view("line")},
        std::pair{C::rectangle, std::string_view("rectangle")},
        std::pair{C::ellipse, std::string_view("ellipse")},
        std::pair{C::freehand, std::string_view("freehand")},
        std::pair{C::highlighter, std::string_view("highlighter")},
        std::pair{C::text, std::string_view("text")},
        std::pair{C::stepBadge, std::string_view("stepBadge")},
        std::pair{C::watermark, std::string_view("watermark")},
        std::pair{C::mosaic, std::string_view("mosaic")},
        std::pair{C::blur, std::string_view("blur")},
        std::pair{C::magnifier, std::string_view("magnifier")},
        std::pair{C::spotlight, std::string_view("spotlight")},
        std::pair{C::image, std::string_view("image")},
        std::pair{C::translatedText, std::string_view("translatedText")},
    };
};

// What an element is, with the payload some kinds carry: the string of `text`,
// `watermark` and the label of `stepBadge`, the picture of `image`, the block
// of `translatedText`. The payload always matches the case.
class AnnotationKind {
public:
    using Case = AnnotationKindCase;

    // The case with a neutral payload: none, an empty string, an empty picture or block.
    explicit AnnotationKind(Case kindCase);
    static AnnotationKind text(std::string text);
    static AnnotationKind stepBadge(std::string label);
    static AnnotationKind watermark(std::string text);
    static AnnotationKind image(AnnotationImage image);
    static AnnotationKind translatedText(TranslatedBlock block);

    Case kindCase() const { return case_; }
    bool is(Case kindCase) const { return case_ == kindCase; }
    // The string of `text`, `stepBadge` and `watermark`; empty for every other case.
    const std::string& textPayload() const;
    // The payload of `image` or `translatedText`, or null for every other case.
    const AnnotationImage* imagePayload() const { return std::get_if<AnnotationImage>(&payload_); }
    const TranslatedBlock* blockPayload() const { return std::get_if<TranslatedBlock>(&payload_); }

    // `mosaic`, `blur` and `magnifier`: effects on the pixels of a region.
    bool isRegionEffect() const;

    friend bool operator==(const AnnotationKind&, const AnnotationKind&) = default;

private:
    using Payload = std::variant<std::monostate, std::string, AnnotationImage, TranslatedBlock>;
    AnnotationKind(Case kindCase, Payload payload) : case_(kindCase), payload_(std::move(payload)) {}

    Case case_;
    Payload payload_;
};

std::size_t hashValue(const AnnotationKind& kind);

} // namespace tosvar

template <>
struct std::hash<tosvar::AnnotationKind> {
    std::size_t operator()(const tosvar::AnnotationKind& k) const noexcept { return tosvar::hashValue(k); }
};
