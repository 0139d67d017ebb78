#pragma once

#include "Rect.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace tosvar {

// The accessibility tree of other programs, as element detection reads it.
// Elements are opaque handles; every call is bounded in time by the
// implementation, and a call that fails answers none.
class AccessibleElements {
public:
    struct Element {
        virtual ~Element() = default;
    };
    using Handle = std::shared_ptr<const Element>;

    virtual ~AccessibleElements() = default;
    virtual bool isAvailable() const = 0;
    // The deepest element of the program `pid` at `point` (global, top-left).
    virtual Handle elementAt(const Point& point, std::int64_t pid) = 0;
    virtual Handle parent(const Handle& element) = 0;
    // Global top-left frame.
    virtual std::optional<Rect> frame(const Handle& element) = 0;
    virtual std::optional<std::string> role(const Handle& element) = 0;
    // What the element says: its text, else its name, else its description;
    // the first that is not blank, trimmed.
    virtual std::optional<std::string> text(const Handle& element) = 0;
    // Asks the program to build its tree; may block for a while, so callers
    // run it off the main thread.
    virtual void enableAccessibility(std::int64_t pid) = 0;
};

} // namespace tosvar
