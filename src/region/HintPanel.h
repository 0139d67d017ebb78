#pragma once

#include "AnnotationTool.h"
#include "CaptureModeShortcuts.h"
#include "Rect.h"
#include "Size.h"

#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

// What the corner panel of a capture session says about the keys that work
// now, worked out from the overlay's state by pure functions.
namespace tosvar::HintPanel {

using Localize = std::function<std::string(const std::string& key)>;

struct SelectedHint {
    std::optional<std::string> titleToolKey;
    bool editableText = false;
    bool isMagnifier = false;
    // The hint of a selected element: its tool's title ("annotation.translate"
    // for a translated block, none for a picture), the text row for text.
    static SelectedHint of(AnnotationKind::Case kind);
    friend bool operator==(const SelectedHint&, const SelectedHint&) = default;
};

struct Idle {
    ScreenshotOverlayMode mode;
    friend bool operator==(const Idle&, const Idle&) = default;
};
struct Pointer {
    bool canRemoveWindows = false;
    friend bool operator==(const Pointer&, const Pointer&) = default;
};
struct Tool {
    AnnotationTool tool;
    friend bool operator==(const Tool&, const Tool&) = default;
};
enum class Simple { dragging, elementPick, textEditing, ocr, recordArmed };

using State = std::variant<Idle, Pointer, Tool, SelectedHint, Simple>;

struct Row {
    std::string text;
    std::string key;
    friend bool operator==(const Row&, const Row&) = default;
};

struct Content {
    std::string title;
    std::vector<Row> rows;
    std::optional<ScreenshotOverlayMode> modes; // the mode chips, with this one current
    friend bool operator==(const Content&, const Content&) = default;
};

// A localised row: the text before the first "|" and the key after it.
Row row(const std::string& key, const Localize& localize);
Content content(const State& state, const Localize& localize);
Content toolContent(AnnotationTool tool, const Localize& localize);

enum class Corner { bottomLeft, bottomRight, topLeft, topRight };

// Where the panel goes: the corner in use when it meets no obstacle, else the
// first free one in the order bottom left, bottom right, top left, top
// right; none when the panel does not fit with 24 points all round or every
// corner is blocked. Bounds and obstacles are in view points, y down.
std::optional<Corner> placement(Size panel, const Rect& bounds, const std::vector<Rect>& obstacles, Corner current);
Rect frame(Size panel, const Rect& bounds, Corner corner);

} // namespace tosvar::HintPanel
