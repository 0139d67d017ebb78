#include "UndoStack.h"

namespace tosvar {

void UndoStack::record(AnnotationSnapshot snapshot) {
    past_.push_back(std::move(snapshot));
    if (past_.size() > limit_) past_.erase(past_.begin(), past_.end() - static_cast<std::ptrdiff_t>(limit_));
    future_.clear();
}

std::optional<AnnotationSnapshot> UndoStack::undo(AnnotationSnapshot current) {
    if (past_.empty()) return std::nullopt;
    AnnotationSnapshot previous = std::move(past_.back());
    past_.pop_back();
    future_.push_back(std::move(current));
    return previous;
}

std::optional<AnnotationSnapshot> UndoStack::redo(AnnotationSnapshot current) {
    if (future_.empty()) return std::nullopt;
    AnnotationSnapshot next = std::move(future_.back());
    future_.pop_back();
    past_.push_back(std::move(current));
    return next;
}

} // namespace tosvar
