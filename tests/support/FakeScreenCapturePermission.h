#pragma once

#include "ScreenCapturePermission.h"

namespace tosvar {

// Screen capture granted or not as a test says; counts the guidance shown.
struct FakeScreenCapturePermission final : ScreenCapturePermission {
    bool granted = true;
    int guidance = 0;
    bool isGranted() const override { return granted; }
    void request() override {}
    void presentGuidance() override { ++guidance; }
};

} // namespace tosvar
