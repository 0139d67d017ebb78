#include "ScreenRecordingPermission.h"

#include "Log.h"

namespace tosvar {

void ScreenRecordingPermission::request()
{
    logLine("[Permissions] screen reading requested; granted=" + std::string(isGranted() ? "true" : "false"));
}

AlertRequest ScreenRecordingPermission::guidanceAlert()
{
    AlertRequest request;
    request.style = AlertStyle::warning;
    request.message = {"screenshot.permission.title", {}};
    request.informativeText = {"screenshot.permission.body", {}};
    request.buttons = {{"screenshot.permission.openSettings", {}}, {"annotation.cancel", {}}};
    return request;
}

void ScreenRecordingPermission::presentGuidanceAlert()
{
    if (alerts_.run(guidanceAlert(), nullptr).buttonIndex == 0)
        openSettings();
}

} // namespace tosvar
