#pragma once

#include <cstdint>
#include <functional>

namespace tosvar {

// System-wide key combinations, pressed while any program has the focus.
class HotkeyGrabbing {
public:
    enum class GrabResult { registered, takenByAnotherProgram, unknownKey };

    virtual ~HotkeyGrabbing() = default;
    // Claims the combination of a macOS virtual key code and a Carbon mask
    // under `id`; presses of it reach `onPressed(id)` once per press, key
    // repeat left out.
    virtual GrabResult grab(std::uint32_t keyCode, std::uint32_t carbonModifiers, std::uint32_t id) = 0;
    virtual void release(std::uint32_t id) = 0;
    virtual void setPressedHandler(std::function<void(std::uint32_t id)> onPressed) = 0;
};

} // namespace tosvar
