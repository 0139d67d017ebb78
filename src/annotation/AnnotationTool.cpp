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

} // namespace tosvar
