#pragma once

#include <QImage>
#include <QPointer>
#include <QWidget>

#include <filesystem>
#include <functional>
#include <vector>

namespace tosvar {

// Drags captures out of a view (a card, a library tile) as files that file
// managers, chats and editors accept. Main thread.
class CaptureFileDragCoordinator {
public:
    explicit CaptureFileDragCoordinator(QWidget* source) : source_(source) {}

    bool isDragging() const { return dragging_; }
    std::function<void()> onSessionBegan;
    // True when a target took the files.
    std::function<void(bool accepted)> onSessionEnded;

    // Does nothing while a drag runs, when the view is gone or hidden, or
    // unless the left button is held. With `carryWholeView` the view's own
    // picture travels under the pointer; otherwise `image` (or a generic
    // file picture), stacked once per file.
    void begin(const std::vector<std::filesystem::path>& urls, const QImage& image, bool carryWholeView);

private:
    QPointer<QWidget> source_;
    bool dragging_ = false;
};

} // namespace tosvar
