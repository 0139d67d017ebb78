#include "AnnotationKind.h"

namespace tosvar {

namespace {

std::variant<std::monostate, std::string, AnnotationImage, TranslatedBlock> neutralPayload(AnnotationKindCase c) {
    switch (c) {
    case AnnotationKindCase::text:
    case AnnotationKindCase::stepBadge:
    case AnnotationKindCase::watermark:
        return std::string();
    case AnnotationKindCase::image:
        return AnnotationImage{};
    case AnnotationKindCase::translatedText:
        return TranslatedBlock{};
    default:
        return std::monostate{};
    }
}

} // namespace

AnnotationKind::AnnotationKind(Case kindCase) : case_(kindCase), payload_(neutralPayload(kindCase)) {}

AnnotationKind AnnotationKind::text(std::string text) { return {Case::text, std::move(text)}; }
AnnotationKind AnnotationKind::stepBadge(std::string label) { return {Case::stepBadge, std::move(label)}; }
AnnotationKind AnnotationKind::watermark(std::string text) { return {Case::watermark, std::move(text)}; }
AnnotationKind AnnotationKind::image(AnnotationImage image) { return {Case::image, std::move(image)}; }
AnnotationKind AnnotationKind::translatedText(TranslatedBlock block) {
    return {Case::translatedText, std::move(block)};
}

const std::string& AnnotationKind::textPayload() const {
    static const std::string none;
    const std::string* text = std::get_if<std::string>(&payload_);
    return text ? *text : none;
}

bool AnnotationKind::isRegionEffect() const {
    return case_ == Case::mosaic || case_ == Case::blur || case_ == Case::magnifier;
}

std::size_t hashValue(const AnnotationKind& kind) {
    std::size_t seed = static_cast<std::size_t>(kind.kindCase());
    if (const AnnotationImage* image = kind.imagePayload()) hashCombine(seed, std::hash<AnnotationImage>{}(*image));
    else if (const TranslatedBlock* block = kind.blockPayload()) hashCombine(seed, hashValue(*block));
    else hashCombine(seed, std::hash<std::string>{}(kind.textPayload()));
    return seed;
}

} // namespace tosvar
