#pragma once

namespace tosvar {

// Whether this program may read the screen, and how to ask for it.
class ScreenCapturePermission {
public:
    virtual ~ScreenCapturePermission() = default;
    virtual bool isGranted() const = 0;
    virtual void request() = 0;
    virtual void presentGuidance() = 0;
};

} // namespace tosvar
