#include "HintPanel.h"

namespace tosvar::HintPanel {

SelectedHint SelectedHint::of(AnnotationKind::Case kind) {
    using C = AnnotationKind::Case;
    SelectedHint hint;
    if (kind == C::translatedText) hint.titleToolKey = "annotation.translate";
    else if (const AnnotationTool tool = toolFor(kind); tool != AnnotationTool::select)
        hint.titleToolKey = "annotation.tool." + std::string(toolNameKey(tool));
    hint.editableText = kind == C::text || kind == C::translatedText;
    hint.isMagnifier = kind == C::magnifier;
    return hint;
}

namespace {

using Mode = ScreenshotOverlayMode;

constexpr double margin = 24;

Content rowsOf(std::string title, std::initializer_list<const char*> keys, const Localize& localize) {
    Content c{std::move(title), {}, std::nullopt};
    for (const char* key : keys) c.rows.push_back(row(key, localize));
    return c;
}

} // namespace

Row row(const std::string& key, const Localize& localize) {
    const std::string text = localize(key);
    const std::size_t bar = text.find('|');
    if (bar == std::string::npos) return {text, {}};
    return {text.substr(0, bar), text.substr(bar + 1)};
}

Content toolContent(AnnotationTool tool, const Localize& localize) {
    using T = AnnotationTool;
    if (tool == T::select) return {localize("hint.title.pointer"), {}, std::nullopt};
    const std::string title = localize("hint.title.tool") + localize("annotation.tool." + std::string(toolNameKey(tool)));
    switch (tool) {
    case T::arrow:
    case T::line: return rowsOf(title, {"hint.stroke.draw", "hint.shape.width", "hint.shape.opacity", "hint.shape.color", "hint.shape.reset"}, localize);
    case T::freehand:
    case T::highlighter:
        return rowsOf(title, {"hint.stroke.draw", "hint.shape.width", "hint.stroke.opacity.pen", "hint.shape.color", "hint.shape.reset"}, localize);
    case T::rectangle:
    case T::ellipse: return rowsOf(title, {"hint.shape.opacity", "hint.shape.width", "hint.shape.color", "hint.shape.reset"}, localize);
    case T::spotlight: return rowsOf(title, {"hint.shape.opacity", "hint.shape.width", "hint.shape.reset"}, localize);
    case T::text:
    case T::stepBadge:
    case T::watermark: return rowsOf(title, {"hint.text.size", "hint.shape.color", "hint.shape.reset"}, localize);
    case T::mosaic:
    case T::blur: return rowsOf(title, {"hint.mask.draw", "hint.mask.size", "hint.shape.reset"}, localize);
    case T::magnifier: return rowsOf(title, {"hint.lens.zoom"}, localize);
    case T::crop: return rowsOf(title, {"hint.crop.draw"}, localize);
    case T::select: break;
    }
    return {title, {}, std::nullopt};
}

Content content(const State& state, const Localize& localize) {
    if (const Idle* idle = std::get_if<Idle>(&state)) {
        const char* title = "hint.title.select.annotate";
        switch (idle->mode) {
        case Mode::annotate: title = "hint.title.select.annotate"; break;
        case Mode::captureText: title = "hint.title.select.captureText"; break;
        case Mode::record: title = "hint.title.select.record"; break;
        case Mode::scrollCapture: title = "hint.title.select.scroll"; break;
        case Mode::translate: title = "hint.title.select.translate"; break;
        }
        Content c = idle->mode == Mode::annotate
                        ? rowsOf(localize(title), {"hint.idle.candidates", "hint.idle.element", "hint.idle.color", "hint.idle.loupe", "hint.idle.cancel"}, localize)
                        : rowsOf(localize(title), {"hint.idle.candidates", "hint.idle.element", "hint.idle.loupe", "hint.idle.cancel"}, localize);
        c.modes = idle->mode;
        return c;
    }
    if (const Pointer* pointer = std::get_if<Pointer>(&state)) {
        Content c = rowsOf(localize("hint.title.pointer"), {"hint.pointer.nudge", "hint.pointer.zoom", "hint.pointer.addWindow"}, localize);
        if (pointer->canRemoveWindows) c.rows.push_back(row("hint.pointer.removeWindow", localize));
        c.rows.push_back(row("hint.pointer.reframe", localize));
        c.rows.push_back(row("hint.pointer.confirm", localize));
        return c;
    }
    if (const Tool* tool = std::get_if<Tool>(&state)) return toolContent(tool->tool, localize);
    if (const SelectedHint* selected = std::get_if<SelectedHint>(&state)) {
        const std::string title = selected->titleToolKey ? localize("hint.title.selected") + localize(*selected->titleToolKey)
                                                         : localize("hint.title.selected.generic");
        Content c = rowsOf(title, {"hint.sel.size"}, localize);
        if (selected->isMagnifier) {
            c.rows.push_back(row("hint.sel.lensPan", localize));
            c.rows.push_back(row("hint.sel.lensZoom", localize));
        } else {
            c.rows.push_back(row("hint.sel.rotate", localize));
        }
        for (const char* key : {"hint.sel.nudge", "hint.sel.color", "hint.sel.layer", "hint.sel.delete", "hint.sel.duplicate"})
            c.rows.push_back(row(key, localize));
        if (selected->editableText) c.rows.push_back(row("hint.sel.editText", localize));
        c.rows.push_back(row("hint.sel.deselect", localize));
        return c;
    }
    switch (std::get<Simple>(state)) {
    case Simple::dragging: return rowsOf(localize("hint.title.dragging"), {"hint.drag.square", "hint.drag.center", "hint.drag.nudge", "hint.drag.cancel"}, localize);
    case Simple::elementPick: return rowsOf(localize("hint.title.element"), {"hint.element.level", "hint.element.capture", "hint.element.copy"}, localize);
    case Simple::textEditing:
        return rowsOf(localize("hint.title.textEditing"), {"hint.edit.commit", "hint.edit.newline", "hint.edit.size", "hint.edit.cancel"}, localize);
    case Simple::ocr: return rowsOf(localize("hint.title.ocr"), {"hint.ocr.select", "hint.ocr.copy"}, localize);
    case Simple::recordArmed: return rowsOf(localize("hint.title.recordArmed"), {"hint.armed.start", "hint.armed.zoom"}, localize);
    }
    return {};
}

Rect frame(Size panel, const Rect& bounds, Corner corner) {
    const bool left = corner == Corner::bottomLeft || corner == Corner::topLeft;
    const bool top = corner == Corner::topLeft || corner == Corner::topRight;
    const double x = left ? bounds.minX() + margin : bounds.maxX() - margin - panel.width;
    const double y = top ? bounds.minY() + margin : bounds.maxY() - margin - panel.height;
    return {x, y, panel.width, panel.height};
}

std::optional<Corner> placement(Size panel, const Rect& bounds, const std::vector<Rect>& obstacles, Corner current) {
    if (!(panel.width + 2 * margin < bounds.width()) || !(panel.height + 2 * margin < bounds.height())) return std::nullopt;
    auto free = [&](Corner corner) {
        const Rect at = frame(panel, bounds, corner);
        for (const Rect& obstacle : obstacles)
            if (at.intersects(obstacle)) return false;
        return true;
    };
    if (free(current)) return current;
    for (Corner corner : {Corner::bottomLeft, Corner::bottomRight, Corner::topLeft, Corner::topRight})
        if (free(corner)) return corner;
    return std::nullopt;
}

} // namespace tosvar::HintPanel
