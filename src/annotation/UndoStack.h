#pragma once

#include "AnnotationSnapshot.h"

#include <concepts>
#include <cstddef>
#include <optional>
#include <vector>

namespace tosvar {

// A bounded history of whole snapshots. Owners record the state from before a
// change; grouping of small changes into one step is the owner's business.
// `redo` does not trim `past`, but it never needs to: undo and redo only move
// entries between the two lists and `record` trims `past` and empties
// `future`, so together they never hold more than `limit` entries.
class UndoStack {
public:
    static constexpr std::size_t standardLimit = 100;

    explicit UndoStack(std::size_t limit = standardLimit) : limit_(limit) {}

    std::size_t limit() const { return limit_; }
    const std::vector<AnnotationSnapshot>& past() const { return past_; }     // oldest first
    const std::vector<AnnotationSnapshot>& future() const { return future_; } // most recently undone last
    bool canUndo() const { return !past_.empty(); }
    bool canRedo() const { return !future_.empty(); }

    // Remembers `snapshot`, drops the oldest entries beyond the limit and forgets what was undone.
    void record(AnnotationSnapshot snapshot);
    // The state to go back to, with `current` kept for redo; absent when there is none.
    std::optional<AnnotationSnapshot> undo(AnnotationSnapshot current);
    std::optional<AnnotationSnapshot> redo(AnnotationSnapshot current);

    // Changes every remembered snapshot in place, past first, so the history
    // follows the document into new coordinates.
    template <std::invocable<AnnotationSnapshot&> Mutation>
    void transformAll(Mutation&& mutate) {
        for (AnnotationSnapshot& snapshot : past_) mutate(snapshot);
        for (AnnotationSnapshot& snapshot : future_) mutate(snapshot);
    }

private:
    std::size_t limit_;
    std::vector<AnnotationSnapshot> past_;
    std::vector<AnnotationSnapshot> future_;
};

} // namespace tosvar
