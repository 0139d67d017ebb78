#pragma once

#include "AnnotationKind.h"
#include "RawEnum.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

namespace tosvar {

// What the pointer does on the canvas. The raw values are the case names and
// the table below is also the order in which tools are offered.
enum class AnnotationTool : std::uint8_t {
    select,
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
    crop,
};

template <>
struct RawEnum<AnnotationTool> {
    using T = AnnotationTool;
    static constexpr std::array table{
        std::pair{T::select, std::string_view("select")},
        std::pair{T::arrow, std::string_view("arrow")},
        std::pair{T::line, std::string_view("line")},
        std::pair{T::rectangle, std::string_view("rectangle")},
        std::pair{T::ellipse, std::string_view("ellipse")},
        std::pair{T::freehand, std::string_view("freehand")},
        std::pair{T::highlighter, std::string_view("highlighter")},
        std::pair{T::text, std::string_view("text")},
        std::pair{T::stepBadge, std::string_view("stepBadge")},
        std::pair{T::watermark, std::string_view("watermark")},
        std::pair{T::mosaic, std::string_view("mosaic")},
        std::pair{T::blur, std::string_view("blur")},
        std::pair{T::magnifier, std::string_view("magnifier")},
        std::pair{T::spotlight, std::string_view("spotlight")},
        std::pair{T::crop, std::string_view("crop")},
    };
};

// Every tool, in the order above.
inline constexpr auto allAnnotationTools = [] {
    std::array<AnnotationTool, RawEnum<AnnotationTool>::table.size()> tools{};
    for (std::size_t i = 0; i < tools.size(); ++i) tools[i] = RawEnum<AnnotationTool>::table[i].first;
    return tools;
}();

// The tool's part of its "annotation.tool." name key: the case name, but
// "pen" for freehand and "step" for stepBadge.
std::string_view toolNameKey(AnnotationTool tool);
// Whether a drag on the canvas creates the tool's element.
bool isDragCreated(AnnotationTool tool);
// The one-letter key that picks the tool; empty for a tool without one.
std::string_view shortcutKey(AnnotationTool tool);
// The first tool, in order, whose key is `characters`; absent for anything
// but a key some tool has (so empty text picks nothing).
std::optional<AnnotationTool> toolForKey(std::string_view characters);
// The tool that draws an element of `kind`; `select` for kinds no tool draws
// (pictures, translated blocks).
AnnotationTool toolFor(AnnotationKind::Case kind);

} // namespace tosvar
