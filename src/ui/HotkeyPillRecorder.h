#pragma once

#include "HotkeyRecorder.h"

#include <QWidget>

#include <functional>
#include <memory>
#include <string>

class QLabel;
class QPushButton;
class QToolButton;

namespace tosvar {

class KeyTranslator;

// The shortcut pill of the settings page: shows a binding, records the next
// valid combination while active, and offers clear or reset beside it.
class HotkeyPillRecorder final : public QWidget {
public:
    using Localize = std::function<std::string(const std::string& key)>;

    HotkeyPillRecorder(HotkeyRecorderGroup& group, int id, std::optional<GlobalHotkeyBinding> binding,
                       std::optional<GlobalHotkeyBinding> defaultBinding,
                       std::function<void(std::optional<GlobalHotkeyBinding>)> onChange, Localize localize,
                       const KeyTranslator* translator, QWidget* parent = nullptr);
    ~HotkeyPillRecorder() override;

    const HotkeyRecorder& recorder() const { return *recorder_; }
    // Other pills of the page call this when one of them starts recording.
    void refresh();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void startRecording();
    void endRecording();

    std::unique_ptr<HotkeyRecorder> recorder_;
    Localize localize_;
    const KeyTranslator* translator_;
    QPushButton* pill_;
    QToolButton* trailing_;
    QLabel* error_;
};

} // namespace tosvar
