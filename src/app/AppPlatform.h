#pragma once

#include "AnnotationElementClipboard.h"
#include "AnnotationRenderer.h"
#include "AtspiAccessibleElements.h"
#include "TesseractTextRecognizer.h"
#include "ZXingQRCodeReader.h"
#include "AudioRecorder.h"
#include "CaptureDeletion.h"
#include "DisplayFullScreenCapture.h"
#include "FfmpegMovieFiles.h"
#include "LinuxPermissionProbe.h"
#include "LocalFileManager.h"
#include "PulseAudioCapture.h"
#include "QProcessSettingsPageOpener.h"
#include "QtAnnotationFileSaver.h"
#include "QtAlertPresenter.h"
#include "QtAudioRecordingHUD.h"
#include "QtMainQueue.h"
#include "QtPasteboard.h"
#include "QtRecordingChrome.h"
#include "QtRegionOverlayFactory.h"
#include "QtScreenLayout.h"
#include "QtWorkspace.h"
#include "RegionScreenshotSession.h"
#include "ScreenRecorder.h"
#include "ScreenRecordingPermission.h"
#include "ScreenshotDropShadow.h"
#include "SystemPermissions.h"
#include "UnbuiltFeatures.h"
#include "X11DisplayCapturer.h"
#include "X11HotkeyGrabber.h"
#include "X11KeyboardConnection.h"
#include "X11ScreenStreaming.h"
#include "X11WindowList.h"
#include "XdgFileTrash.h"

#include <memory>
#include <string>
#include <vector>

namespace tosvar {

// The localised text of `key` with its arguments, as the interface shows it.
std::string localize(const std::string& key, const std::vector<std::string>& arguments = {});

// The real platform under the application, one of each seam, built once on
// the main thread after the QApplication and kept for the life of the process.
// Without an X server (the offscreen platform) the display grabs fail and
// there are no global hotkeys; everything else works.
struct AppPlatform {
    AppPlatform();
    AppPlatform(const AppPlatform&) = delete;
    AppPlatform& operator=(const AppPlatform&) = delete;

    // Told the name of a feature this build does not have when a request
    // reaches it; set by the shell.
    NotBuiltNotice onNotBuilt;
    // Told of each delivered capture while there is no capture card; set by the shell.
    std::function<void(const CaptureCardItem&)> onCaptureDelivered;

    QtMainQueue mainQueue;
    LocalFileManager files;
    QtPasteboard pasteboard;
    QtScreenLayout screens;
    QtWorkspace workspace;
    XdgFileTrash trash;
    QtAlertPresenter alerts;
    CaptureDeletion deletion;
    LinuxPermissionProbe permissionProbe;
    QProcessSettingsPageOpener settingsPages;
    SystemPermissions permissions;
    ScreenRecordingPermission screenPermission;
    std::shared_ptr<X11DisplayCapturer> displays;
    DisplayFullScreenCapture fullScreen;
    std::unique_ptr<X11KeyboardConnection> keyboard; // none without an X server
    std::unique_ptr<X11HotkeyGrabber> hotkeyGrabber; // idem
    PulseAudioCapture sound;
    FfmpegMovieFiles movieFiles;
    std::shared_ptr<AudioRecorder> audio;
    QtAudioRecordingHUD audioHUD;

    X11WindowList windowList;
    AtspiAccessibleElements accessibility;
    AnnotationRenderer renderer;
    AnnotationElementClipboard elementClipboard;
    TesseractTextRecognizer textRecognizer;
    ZXingQRCodeReader qrCodes;
    QtRegionOverlayFactory overlays;
    std::shared_ptr<RegionScreenshotSession> region;
    X11ScreenStreaming screenStreaming;
    QtRecordingChrome recordingChrome;
    // Where screen recordings are written while they run; what a crash leaves is offered back.
    std::filesystem::path recordingsInProgress;
    std::shared_ptr<ScreenRecorder> recording;
    UnbuiltPresentation presentation;
    UnbuiltScrollCapture scroll;
    UnbuiltTranslation translation;
    UnbuiltStickers stickers;
    UnbuiltCaptureCards cards;
    ScreenshotDropShadow dropShadow;
    QtAnnotationFileSaver fileSaver;

private:
    NotBuiltNotice forwardNotBuilt();
};

} // namespace tosvar
