#pragma once

#include "GlobalHotkeyBinding.h"

#include <functional>
#include <optional>
#include <string>

namespace tosvar {

// The recorders of one settings page share this, so only one records at a time.
struct HotkeyRecorderGroup {
    std::optional<int> activeRecorder;
};

// The logic of the shortcut pill: it shows a binding, records a new one from
// the next valid key press, and offers clear or reset.
class HotkeyRecorder {
public:
    enum class TrailingControl { none, clear, reset };

    HotkeyRecorder(HotkeyRecorderGroup& group, int id, std::optional<GlobalHotkeyBinding> binding,
                   std::optional<GlobalHotkeyBinding> defaultBinding,
                   std::function<void(std::optional<GlobalHotkeyBinding>)> onChange);

    const std::optional<GlobalHotkeyBinding>& binding() const { return binding_; }
    bool isRecording() const { return group_.activeRecorder == id_; }
    // The modifiers held so far while recording, as symbols ("⌘⇧").
    const std::string& preview() const { return preview_; }
    // "hotkey.needModifier" after a key that makes no binding; empty otherwise.
    const std::string& errorKey() const { return errorKey_; }
    TrailingControl trailingControl() const;

    void startRecording();
    void endRecording();
    // While recording, every key event goes here and is swallowed (true).
    bool handle(const KeyEvent& event);
    void clear() { store(std::nullopt); }
    void reset() { store(defaultBinding_); }

    // The recorder's symbols for the modifiers held: "⌘⌃⌥⇧" order.
    static std::string modifierSymbols(std::uint32_t modifierFlags);

private:
    void store(std::optional<GlobalHotkeyBinding> binding);

    HotkeyRecorderGroup& group_;
    int id_;
    std::optional<GlobalHotkeyBinding> binding_;
    std::optional<GlobalHotkeyBinding> defaultBinding_;
    std::function<void(std::optional<GlobalHotkeyBinding>)> onChange_;
    std::string preview_;
    std::string errorKey_;
};

} // namespace tosvar
