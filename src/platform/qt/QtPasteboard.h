#pragma once

#include "Pasteboard.h"

#include <QObject>

class QClipboard;

namespace tosvar {

// The desktop clipboard through QClipboard. Our own change counter stands
// for the system's: it grows with every write of ours and with every change
// another program makes. On X11 the application serves the clipboard, so what
// we write stays available for as long as the application runs.
// Needs a QGuiApplication; main thread only.
class QtPasteboard final : public Pasteboard {
public:
    QtPasteboard();
    ~QtPasteboard() override;

    std::int64_t changeCount() const override { return changeCount_; }
    std::int64_t write(const PasteboardContent& content) override;
    bool isGeneral() const override { return true; }
    std::optional<Bytes> readImagePNG() const override;

private:
    QClipboard* clipboard_;
    QObject context_;
    std::int64_t changeCount_ = 0;
    bool writing_ = false;
};

} // namespace tosvar
