#pragma once

#include "ScrollBand.h"
#include "ScrollPatch.h"

#include <optional>
#include <vector>

// Measures of how two patches relate. `next` is the newer frame, `prev` the
// older; a shift `delta` means row `y` of `next` shows row `y + delta` of
// `prev`. Bands are in `next` rows.
namespace tosvar::ScrollMatcher {

// Mean absolute difference of the band's cells against `prev` shifted by
// `delta`. Nothing when the band is empty or leaves either patch, or the
// widths differ.
std::optional<double> bandScore(const ScrollPatch& next, const ScrollPatch& prev, ScrollBand band, int delta);

// `bandScore` for every shift of the range, in order.
std::vector<std::optional<double>> bandScores(const ScrollPatch& next, const ScrollPatch& prev, ScrollBand band,
                                              ScrollShiftRange deltas);

// Local minima of `scores` (index i is shift `base + i`) at most `gate`,
// best first, each at least `separation` from every better one, at most
// `limit` of them. A plateau offers every row; missing neighbours do not block.
std::vector<ScrollCandidate> localMinima(const std::vector<std::optional<double>>& scores, int base, double gate,
                                         int limit, int separation);

// The shift of `around - window ... around + window` (clipped to `bounds`)
// with the lowest score of `band`; the smallest shift wins a tie.
std::optional<int> refine(const ScrollPatch& next, const ScrollPatch& prev, ScrollBand band, int around, int window,
                          ScrollShiftRange bounds);

// Fits a nominal band to a shift so that it and its image in `prev` stay in
// [regionTop, regionBottom). Nothing when fewer than `minRows` rows remain.
std::optional<ScrollBand> adjustedBand(ScrollBand nominal, int delta, int regionTop, int regionBottom, int minRows);

// Pearson correlation of the band's cells and the shifted cells of `prev`.
std::optional<double> bandPearson(const ScrollPatch& next, const ScrollPatch& prev, ScrollBand band, int delta);

// Rows that did not change at all: leading ones, then trailing ones below those.
ScrollRuns identicalRuns(const ScrollPatch& prev, const ScrollPatch& next, double staticThreshold);

// Rows that stayed in place although the content moved by `delta`: a top
// and a bottom bar, each reaching only as far as a row that proves it.
ScrollRuns stickyRuns(const ScrollPatch& prev, const ScrollPatch& next, int delta, double staticThreshold);

// Votes over `bands` row bands of `bandRows` rows whether the content moved
// sideways.
bool showsHorizontalShift(const ScrollPatch& prev, const ScrollPatch& next, int bands, int bandRows);

} // namespace tosvar::ScrollMatcher
