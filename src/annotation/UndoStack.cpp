#include "UndoStack.h"

namespace tosvar {

namespace {

// Undo and redo alike: takes the newest entry of `from` and leaves `current`
// on `to` in its place; absent, changing nothing, when `from` is empty.
std::optional<AnnotationSnapshot> step(std::vector<AnnotationSnapshot>& from, std::vector<AnnotationSnapshot>& to,
                                       AnnotationSnapshot current) {
    if (from.empty()) return std::nullopt;
    AnnotationSnapshot taken = std::move(from.back());
    from.pop_back();
    to.push_back(std::move(current));
    return taken;
}

} // namespace

void UndoStack::record(AnnotationSnapshot snapshot) {
    past_.push_back(std::move(snapshot));
    if (past_.size() > limit_) past_.erase(past_.begin(), past_.end() - static_cast<std::ptrdiff_t>(limit_));
    future_.clear();
}

std::optional<AnnotationSnapshot> UndoStack::undo(AnnotationSnapshot current) {
    return step(past_, future_, std::move(current));
}

std::optional<AnnotationSnapshot> UndoStack::redo(AnnotationSnapshot current) {
    return step(future_, past_, std::move(current));
}

} // namespace tosvar
