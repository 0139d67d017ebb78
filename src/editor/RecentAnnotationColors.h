#pragma once

#include "DefaultsStore.h"
#include "MainQueue.h"
#include "RGBAColor.h"

#include <cstddef>
#include <functional>
#include <string_view>
#include <vector>

namespace tosvar {

// The colours the user last picked in any editor, newest first, at most five,
// kept in the user's defaults. A use is committed only after the picker has
// rested for a moment, so a drag across the colour wheel adds where it stopped
// rather than every colour on the way. Main thread only; the application owns
// one and every editor shares it.
class RecentAnnotationColors {
public:
    static constexpr std::size_t capacity = 5;
    static constexpr double commitDelay = 0.8; // seconds
    static constexpr std::string_view defaultsKey = "annotationRecentColors";

    // Reads the stored list; anything unreadable gives an empty list.
    RecentAnnotationColors(DefaultsStore& store, MainQueue& queue);
    ~RecentAnnotationColors();
    RecentAnnotationColors(const RecentAnnotationColors&) = delete;
    RecentAnnotationColors& operator=(const RecentAnnotationColors&) = delete;

    const std::vector<RGBAColor>& colors() const { return colors_; }

    // Commits `color` after `commitDelay` unless another use comes first, which
    // replaces it. The commit puts it first, drops an entry that looks the same
    // (`isApproximately`), keeps five, saves, and calls `onChange`. A use still
    // pending when this object goes is dropped.
    void noteUse(const RGBAColor& color);

    // Called after each commit, with the new list in `colors()`.
    std::function<void()> onChange;

private:
    void commit(const RGBAColor& color);

    DefaultsStore& store_;
    MainQueue& queue_;
    std::vector<RGBAColor> colors_;
    TimerHandle pendingCommit_;
};

} // namespace tosvar
