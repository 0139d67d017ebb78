#pragma once

#include "ScrollBand.h"
#include "ScrollPatch.h"

#include <optional>
#include <vector>

// Judging shift hypotheses by column blocks, so that a part of the width
// that moves on its own (a video, a fixed sidebar) cannot outvote the rest.
// A patch of width `w` split into `blocks` has blocks `max(w / blocks, 1)`
// wide and `w / blockWidth` of them; columns past the last block are not used.
namespace tosvar::ScrollOverlap {

// Per block, the mean absolute difference of `next` rows against `prev`
// rows shifted by `delta`, over the rows of the region whose shifted partner
// stays in it and whose `texture` reaches `textureGate`. Nothing with fewer
// than 16 rows in reach or fewer than 6 textured ones.
std::optional<std::vector<double>> blockProfile(const ScrollPatch& next, const ScrollPatch& prev, int delta,
                                                int regionTop, int regionBottom, const std::vector<float>& texture,
                                                float textureGate, int blocks);

// The mean of the best three quarters of the block profile.
std::optional<double> trimmedScore(const ScrollPatch& next, const ScrollPatch& prev, int delta, int regionTop,
                                   int regionBottom, const std::vector<float>& texture, float textureGate,
                                   int blocks);

// Blocks that did not move at all over rows [y0, y1) and hold structure:
// true for such a block. Empty when the range is empty or the widths differ.
std::vector<bool> fixedBlocks(const ScrollPatch& next, const ScrollPatch& prev, int y0, int y1, int blocks,
                              double rowTolerance, double minTexture);

// Blocks that hold structure in `next`: true where the mean vertical
// gradient over the rows of [y0, y1) whose `texture` reaches `textureGate`
// is at least `minTexture`.
std::vector<bool> texturedBlocks(const ScrollPatch& next, int y0, int y1, const std::vector<float>& texture,
                                 float textureGate, int blocks, double minTexture);

// One score per hypothesis: its mean over the informative blocks, those not
// excluded that some hypothesis explains within `tau`. With no informative
// block every score is the largest finite double.
std::vector<double> jointScores(const std::vector<std::vector<double>>& profiles, double tau,
                                const std::vector<bool>& excluding);

// Searches the band of `next` in `window` at every row offset
// 0 ... window.height - band.height: per offset the median Pearson value of
// the textured blocks, or nothing for that offset. Nothing at all when the
// band cannot be searched or holds fewer than 3 textured blocks.
std::optional<std::vector<std::optional<double>>> blockPearsonScan(const ScrollPatch& next, const ScrollPatch& window,
                                                                   ScrollBand band, int blocks);

// Pearson correlation over the columns of the band that are textured in
// `next` (variance above 25), for narrow structure.
std::optional<double> texturedColumnPearson(const ScrollPatch& next, const ScrollPatch& prev, ScrollBand band,
                                            int delta);

} // namespace tosvar::ScrollOverlap
