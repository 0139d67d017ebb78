#pragma once

#include "ScrollBand.h"

#include <optional>

namespace tosvar {

// What one ingested frame did to a stitcher's document.
struct ScrollResultKind {
    enum class Tag { appended, prepended, first, noChange, lowConfidence };
    Tag tag = Tag::lowConfidence;
    int rows = 0; // rows added, for `appended` and `prepended`

    static ScrollResultKind appended(int rows) { return {Tag::appended, rows}; }
    static ScrollResultKind prepended(int rows) { return {Tag::prepended, rows}; }
    static ScrollResultKind of(Tag tag) { return {tag, 0}; }
    bool addedRows() const { return tag == Tag::appended || tag == Tag::prepended; }
    // "appended", "prepended", "first", "noChange" or "lowConfidence".
    const char* name() const;
    friend bool operator==(const ScrollResultKind&, const ScrollResultKind&) = default;
};

// Decides the axis of a capture from the results of a vertical and a
// horizontal stitcher fed the same frames. One vertical success decides at
// once; horizontal needs two successes in a row.
struct ScrollAxisDetector {
    std::optional<ScrollAxis> decided;
    int horizontalStreak = 0;

    std::optional<ScrollAxis> observe(ScrollResultKind vertical, ScrollResultKind horizontal);
};

} // namespace tosvar
