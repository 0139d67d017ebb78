#pragma once

#include "ScreenCapturePermission.h"
#include "SystemPermissions.h"

namespace tosvar {

// Screen reading as the capture paths ask for it: the permission row, and the
// guidance alert whose first button opens the matching settings page.
class ScreenRecordingPermission final : public ScreenCapturePermission {
public:
    ScreenRecordingPermission(SystemPermissions& permissions, AlertPresenting& alerts)
        : permissions_(permissions), alerts_(alerts) {}

    bool isGranted() const override { return permissions_.isGranted(VemlaSystemPermission::screenRecording); }
    void request() override;
    void presentGuidance() override { presentGuidanceAlert(); }

    void presentGuidanceAlert();
    void openSettings() { permissions_.openSettings(VemlaSystemPermission::screenRecording); }

    static AlertRequest guidanceAlert();

private:
    SystemPermissions& permissions_;
    AlertPresenting& alerts_;
};

} // namespace tosvar
