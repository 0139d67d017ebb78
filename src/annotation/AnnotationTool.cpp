#include "AnnotationTool.h"

namespace tosvar {

namespace {

struct ToolTraits {
    bool dragCreated;
    std::string_view key;
};

ToolTraits traits(AnnotationTool tool) {
    switch (tool) {
    case AnnotationTool::select: return {false, "v"};
    case AnnotationTool::arrow: return {true, "a"};
    case AnnotationTool::line: return {true, "l"};
    case AnnotationTool::rectangle: return {true, "r"};
    case AnnotationTool::ellipse: return {true, "o"};
    case AnnotationTool::freehand: return {true, "p"};
    case AnnotationTool::highlighter: return {true, ""};
    case AnnotationTool::text: return {false, "t"};
    case AnnotationTool::stepBadge: return {false, "n"};
    case AnnotationTool::watermark: return {false, "w"};
    case AnnotationTool::mosaic: return {true, "m"};
    case AnnotationTool::blur: return {true, "b"};
    case AnnotationTool::magnifier: return {true, "g"};
    case AnnotationTool::spotlight: return {true, "s"};
    case AnnotationTool::crop: return {false, "c"};
    }
    return {false, ""};
}

} // namespace

std::string_view toolNameKey(AnnotationTool tool) {
    if (tool == AnnotationTool::freehand) return "pen";
    if (tool == AnnotationTool::stepBadge) return "step";
    return rawValue(tool);
}

bool isDragCreated(AnnotationTool tool) { return traits(tool).dragCreated; }

std::string_view shortcutKey(AnnotationTool tool) { return traits(tool).key; }

std::optional<AnnotationTool> toolForKey(std::string_view characters) {
    if (characters.empty()) return std::nullopt;
    for (AnnotationTool tool : allAnnotationTools)
        if (shortcutKey(tool) == characters) return tool;
    return std::nullopt;
}

AnnotationTool toolFor(AnnotationKind::Case kind) {
    switch (kind) {
    case AnnotationKind::Case::arrow: return AnnotationTool::arrow;
    case AnnotationKind::Case::line: return AnnotationTool::line;
    case AnnotationKind::Case::rectangle: return AnnotationTool::rectangle;
    case AnnotationKind::Case::ellipse: return AnnotationTool::ellipse;
    case AnnotationKind::Case::freehand: return AnnotationTool::freehand;
    case AnnotationKind::Case::highlighter: return AnnotationTool::highlighter;
    case AnnotationKind::Case::text: return AnnotationTool::text;
    case AnnotationKind::Case::stepBadge: return AnnotationTool::stepBadge;
    case AnnotationKind::Case::watermark: return AnnotationTool::watermark;
    case AnnotationKind::Case::mosaic: return AnnotationTool::mosaic;
    case AnnotationKind::Case::blur: return AnnotationTool::blur;
    case AnnotationKind::Case::magnifier: return AnnotationTool::magnifier;
    case AnnotationKind::Case::spotlight: return AnnotationTool::spotlight;
    case AnnotationKind::Case::image:
    case AnnotationKind::Case::translatedText: break;
    }
    return AnnotationTool::select;
}

} // namespace tosvar
