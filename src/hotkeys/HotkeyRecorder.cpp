#include "HotkeyRecorder.h"

namespace tosvar {

namespace {
constexpr std::uint32_t escapeKeyCode = 53;
}

HotkeyRecorder::HotkeyRecorder(HotkeyRecorderGroup& group, int id, std::optional<GlobalHotkeyBinding> binding,
                               std::optional<GlobalHotkeyBinding> defaultBinding,
                               std::function<void(std::optional<GlobalHotkeyBinding>)> onChange)
    : group_(group), id_(id), binding_(binding), defaultBinding_(defaultBinding), onChange_(std::move(onChange))
{
}

HotkeyRecorder::TrailingControl HotkeyRecorder::trailingControl() const
{
    if (isRecording())
        return TrailingControl::none;
    if (defaultBinding_)
        return binding_ == defaultBinding_ ? TrailingControl::clear : TrailingControl::reset;
    return binding_ ? TrailingControl::clear : TrailingControl::none;
}

void HotkeyRecorder::startRecording()
{
    group_.activeRecorder = id_;
    preview_.clear();
    errorKey_.clear();
}

void HotkeyRecorder::endRecording()
{
    if (isRecording())
        group_.activeRecorder.reset();
    preview_.clear();
}

bool HotkeyRecorder::handle(const KeyEvent& event)
{
    if (!isRecording())
        return false;
    switch (event.type) {
    case KeyEvent::Type::flagsChanged: preview_ = modifierSymbols(event.modifierFlags); return true;
    case KeyEvent::Type::keyUp: return true;
    case KeyEvent::Type::keyDown: break;
    }
    if (event.keyCode == escapeKeyCode) {
        endRecording();
        return true;
    }
    const std::optional<GlobalHotkeyBinding> recorded = GlobalHotkeyBinding::fromEvent(event);
    if (!recorded) {
        errorKey_ = "hotkey.needModifier";
        return true;
    }
    errorKey_.clear();
    endRecording();
    store(recorded);
    return true;
}

void HotkeyRecorder::store(std::optional<GlobalHotkeyBinding> binding)
{
    binding_ = binding;
    if (onChange_)
        onChange_(binding_);
}

std::string HotkeyRecorder::modifierSymbols(std::uint32_t modifierFlags)
{
    std::string name = GlobalHotkeyBinding::displayName(0, GlobalHotkeyBinding::carbonModifiersFrom(modifierFlags));
    return name.substr(0, name.size() - GlobalHotkeyBinding::keyLabel(0).size());
}

} // namespace tosvar
