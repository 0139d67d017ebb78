#pragma once

#include "KeyEvent.h"

#include <functional>
#include <memory>

namespace tosvar {

// Key events of the whole desktop, whichever program has the focus; they are
// only observed, never taken from that program.
class KeyboardMonitoring {
public:
    // Keeps the monitor installed while it lives.
    class Token {
    public:
        virtual ~Token() = default;
    };
    enum class EventMask : unsigned { keyDown = 1u << 0, keyUp = 1u << 1, flagsChanged = 1u << 2 };

    virtual ~KeyboardMonitoring() = default;
    virtual std::unique_ptr<Token> addMonitor(unsigned eventMask, std::function<void(const KeyEvent&)> handler) = 0;
};

inline constexpr unsigned operator|(KeyboardMonitoring::EventMask a, KeyboardMonitoring::EventMask b)
{
    return static_cast<unsigned>(a) | static_cast<unsigned>(b);
}

} // namespace tosvar
