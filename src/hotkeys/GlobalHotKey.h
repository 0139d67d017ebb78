#pragma once

#include "GlobalHotkeyBinding.h"
#include "HotkeyGrabbing.h"

#include <cstdint>
#include <memory>

namespace tosvar {

// One system-wide key combination, held while the object lives.
class GlobalHotKey {
public:
    // None when the system refuses the combination.
    static std::unique_ptr<GlobalHotKey> make(HotkeyGrabbing& grabber, GlobalHotkeyBinding binding, std::uint32_t id);
    ~GlobalHotKey() { grabber_.release(id_); }
    GlobalHotKey(const GlobalHotKey&) = delete;
    GlobalHotKey& operator=(const GlobalHotKey&) = delete;

    std::uint32_t id() const { return id_; }
    GlobalHotkeyBinding binding() const { return binding_; }

private:
    GlobalHotKey(HotkeyGrabbing& grabber, GlobalHotkeyBinding binding, std::uint32_t id)
        : grabber_(grabber), binding_(binding), id_(id) {}

    HotkeyGrabbing& grabber_;
    GlobalHotkeyBinding binding_;
    std::uint32_t id_;
};

} // namespace tosvar
