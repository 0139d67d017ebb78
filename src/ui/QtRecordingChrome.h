#pragma once

#include "RecordingChrome.h"

#include <QPointer>
#include <QRect>
#include <QWidget>

#include <functional>
#include <string>

class QScreen;

namespace tosvar {

// The recording's chrome on Qt: a disc with the seconds left over the region
// before it starts; red corner brackets just outside the region, orange
// while paused; and a bar below the region (above it, or inside,
// when the screen has no room) with the time, pause, stop and cancel. The
// windows never take the focus and let the pointer through where they show
// nothing. Screen grabs on X11 see every window, so nothing stands inside
// a region smaller than the screen. Main thread; needs a QApplication.
class QtRecordingChrome final : public RecordingChrome {
public:
    // `mainGlobalFrame` turns screen points into Qt's global coordinates.
    QtRecordingChrome(std::function<Rect()> mainGlobalFrame, std::function<std::string(const std::string& key)> localize);
    ~QtRecordingChrome() override;

    void showCountdown(const Rect& region, int remaining) override;
    void showRecording(const Rect& region, Actions actions) override;
    void follow(const Rect& region) override;
    void setElapsed(double seconds) override;
    void setPaused(bool paused) override;
    void setAudioLevel(float level) override;
    void showExportProgress(double fraction) override;
    void close() override;

    // Where the bar of `size` stands for a region on a screen: below it by
    // 12, else above it by 12, else inside the screen's bottom, centred on
    // the region and kept 8 from the screen's sides (Qt coordinates).
    static QRect barFrame(const QRect& region, const QRect& screen, const QSize& size);

private:
    class Countdown;
    class Brackets;
    class Bar;
    class Progress;

    // The screen a region in Qt coordinates stands on: the one at its
    // centre, else the primary one.
    static const QScreen* screenShowing(const QRect& area);

    QRect globalRect(const Rect& region) const;

    std::function<Rect()> mainGlobalFrame_;
    std::function<std::string(const std::string&)> localize_;
    QPointer<Countdown> countdown_;
    QPointer<Brackets> brackets_;
    QPointer<Bar> bar_;
    QPointer<Progress> progress_;
};

} // namespace tosvar
