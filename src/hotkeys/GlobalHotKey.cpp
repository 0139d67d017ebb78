#include "GlobalHotKey.h"

namespace tosvar {

std::unique_ptr<GlobalHotKey> GlobalHotKey::make(HotkeyGrabbing& grabber, GlobalHotkeyBinding binding, std::uint32_t id)
{
    if (grabber.grab(binding.keyCode, binding.carbonModifiers, id) != HotkeyGrabbing::GrabResult::registered)
        return nullptr;
    return std::unique_ptr<GlobalHotKey>(new GlobalHotKey(grabber, binding, id));
}

} // namespace tosvar
