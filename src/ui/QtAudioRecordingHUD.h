#pragma once

#include "AudioRecordingController.h"

#include <QPoint>
#include <QPointer>
#include <QRect>
#include <QWidget>

#include <functional>
#include <optional>
#include <string>

class QLabel;
class QToolButton;

namespace tosvar {

// The small floating bar of a sound recording: elapsed time, a level meter,
// pause or resume, stop and discard. It never takes the focus, stays above
// other windows and moves when dragged by its background; where it stood is
// remembered for the rest of the process. Main thread; needs a QApplication.
class QtAudioRecordingHUD final : public AudioRecordingHUD {
public:
    explicit QtAudioRecordingHUD(std::function<std::string(const std::string& key)> localize);
    ~QtAudioRecordingHUD() override;

    void show(std::function<void()> onPause, std::function<void()> onStop, std::function<void()> onDiscard) override;
    void close() override;
    void setPaused(bool paused) override;
    void setElapsed(double seconds) override;
    void report(float level) override;
    void storeFrameAndClose() override { close(); }

    // The bar on screen, if any.
    QWidget* window() const;

    // Where a bar of `size` first stands on a screen whose visible area is
    // `visibleFrame`: centred, 24 points above the bottom.
    static QRect defaultFrame(const QRect& visibleFrame, const QSize& size);

private:
    class Bar;
    std::function<std::string(const std::string&)> localize_;
    QPointer<Bar> bar_;
};

} // namespace tosvar
