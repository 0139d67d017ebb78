#pragma once

#include "DefaultsStore.h"

#include <variant>

namespace tosvar {

enum class AnnotationAction { copy, save, pin };

// How an editing session ended: a flattened PNG and what to do with it, or nothing.
struct AnnotationResult {
    struct Finished {
        Bytes png;
        AnnotationAction action = AnnotationAction::copy;
    };

    static AnnotationResult cancelled() { return {}; }
    static AnnotationResult finished(Bytes png, AnnotationAction action) {
        return AnnotationResult{Finished{std::move(png), action}};
    }
    const Finished* finishedValue() const { return std::get_if<Finished>(&state); }

    std::variant<std::monostate, Finished> state;
};

} // namespace tosvar
