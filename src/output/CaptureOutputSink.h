#pragma once

#include "CaptureDelivery.h"

#include <functional>

namespace tosvar {

// Where every finished capture goes. Main thread only.
class CaptureOutputSink {
public:
    virtual ~CaptureOutputSink() = default;

    std::function<void(const CaptureDelivery&)> onDelivered;
    virtual const std::optional<std::filesystem::path>& lastWrittenURL() const = 0;

    // Serves the clipboard first (when asked), then writes the file.
    virtual void deliver(const Bytes& png, bool copyToClipboard = true) = 0;
    // A movie, GIF or sound file already written into the save folder.
    virtual void deliver(const std::filesystem::path& mediaFile) = 0;
};

} // namespace tosvar
