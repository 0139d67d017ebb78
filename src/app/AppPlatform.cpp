#include "AppPlatform.h"

#include "BuildTarget.h"
#include "FfmpegMovieEncoder.h"
#include "InterruptedRecordings.h"
#include "LocalizationManager.h"
#include "Log.h"
#include "XdgPaths.h"
#include "OCRLanguagePreference.h"
#include "OwnPasteboard.h"
#include "ParallelFor.h"
#include "QtDrawingBackend.h"
#include "QtX11Sync.h"
#include "ScreenshotTextRecognition.h"
#include "ScreenshotToast.h"
#include "SettingsStore.h"
#include "WorkerPool.h"

#include <QApplication>
#include <unistd.h>

#include <cstdlib>

namespace tosvar {

std::string localize(const std::string& key, const std::vector<std::string>& arguments) {
    const std::vector<FormatArgument> values(arguments.begin(), arguments.end());
    return LocalizationManager::shared().string(key, values);
}

namespace {

const char* environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

} // namespace

AppPlatform::AppPlatform()
    : alerts([](const LocalizedText& text) { return localize(text.key, text.arguments); }),
      deletion(SettingsStore::standardDefaults(), alerts, trash),
      permissions(BuildTarget::current(), {permissionProbe, settingsPages, alerts}, environment("XDG_CURRENT_DESKTOP"),
                  SystemPermissions::forcedDenials(std::getenv("TOSVAR_DENY_PERMISSIONS"))),
      screenPermission(permissions, alerts),
      displays(std::make_shared<X11DisplayCapturer>(QtScreenLayout::mainGlobalFrame())),
      fullScreen(*displays, screens),
      keyboard(X11KeyboardConnection::open()),
      hotkeyGrabber(keyboard ? std::make_unique<X11HotkeyGrabber>(*keyboard) : nullptr),
      audio(std::make_shared<AudioRecorder>(AudioRecorderServices{
          .mainQueue = mainQueue,
          .runDetached = [](std::function<void()> work) { WorkerPool::shared().detach(std::move(work)); },
          .makeEngine = [this] { return std::make_shared<AudioCaptureEngine>(sound, openFfmpegMovieEncoder); },
          .processing = movieFiles,
          .defaults = SettingsStore::standardDefaults(),
          .files = files,
          .alerts = alerts,
          .temporaryDirectory = std::filesystem::temp_directory_path(),
      })),
      audioHUD([](const std::string& key) { return localize(key); }),
      renderer(QtDrawingBackend::shared(),
               [](int count, const std::function<void(int, int)>& body) {
                   parallelFor(WorkerPool::shared(), count, static_cast<int>(WorkerPool::shared().threadCount()) * 4, body);
               }),
      textRecognizer([] { return OCRLanguagePreference::languages(SettingsStore::standardDefaults()); }, WorkerPool::shared()),
      overlays({
          .windows = windowList,
          .mainGlobalFrame = [] { return QtScreenLayout::mainGlobalFrame(); },
          .ownPID = ::getpid(),
          .defaults = &SettingsStore::standardDefaults(),
          .copyText = [this](const std::string& text) { OwnPasteboard::write(pasteboard, OwnPasteboardLedger::shared(), text); },
          .elements = &accessibility,
          .snapToElements = [] { return SettingsStore().load().screenshotElementSnap; },
          .runDetached = [](std::function<void()> work) { WorkerPool::shared().detach(std::move(work)); },
          .captureWindow = [this](std::uint32_t windowID) { return displays->captureWindow(windowID); },
          .readText = [this](const ImageBuffer& image, double scale) {
              return ScreenshotTextRecognition::capturePlainText(textRecognizer, qrCodes, image, scale);
          },
          .editing = AnnotationEditorServices{renderer, mainQueue, &SettingsStore::standardDefaults(), elementClipboard, pasteboard,
                                              WorkerPool::shared()},
      }),
      region(RegionScreenshotSession::make({
          .displays = displays,
          .layout = screens,
          .windows = windowList,
          .overlays = overlays,
          .permission = screenPermission,
          .queue = mainQueue,
          .runDetached = [](std::function<void()> work) { WorkerPool::shared().detach(std::move(work)); },
          .beep = [] { QApplication::beep(); },
          .toast = [](std::string_view key, double seconds) { ScreenshotToast::show(QString::fromStdString(localize(std::string(key))), seconds); },
          .ownPID = ::getpid(),
          .grabsSeeOverlays = true, // X11 root grabs include our windows
          .hideChrome =
              [] {
                  ScreenshotToast::dismiss();
                  syncQtWithX11Server();
              },
      })),
      screenStreaming(QtScreenLayout::mainGlobalFrame(), screens.screens().empty() ? 1.0 : screens.screens().front().backingScale,
                      &windowList),
      recordingChrome([] { return QtScreenLayout::mainGlobalFrame(); }, [](const std::string& key) { return localize(key); }),
      recordingsInProgress(InterruptedRecordings::folder(XdgPaths::appStateDir())),
      recording(std::make_shared<ScreenRecorder>(ScreenRecorderServices{
          .mainQueue = mainQueue,
          .runDetached = [](std::function<void()> work) { WorkerPool::shared().detach(std::move(work)); },
          .makeEngine =
              [this](const AppSettings& settings) {
                  return CaptureEngine::make({mainQueue, [](std::function<void()> work) { WorkerPool::shared().detach(std::move(work)); },
                                              screenStreaming, sound, openFfmpegMovieEncoder, recordingsInProgress,
                                              ::getpid()},
                                             static_cast<int>(settings.recordingFPS), settings.recordingShowsCursor,
                                             settings.recordingCaptureSystemAudio, settings.recordingCaptureMic);
              },
          .processing = movieFiles,
          .defaults = SettingsStore::standardDefaults(),
          .files = files,
          .pool = WorkerPool::shared(),
          .settings = [] { return SettingsStore().load(); },
          // The region session in recording mode; what it picks is armed as a
          // screenshot session switched to recording would be.
          .pickTarget = [this] { region->pickRecordingRegion(region->onRecordingRequested); },
          .toast =
              [](const std::string& key, const std::vector<std::string>& arguments) {
                  ScreenshotToast::show(QString::fromStdString(localize(key, arguments)), ScreenshotToast::captureSeconds);
              },
          .beep = [] { QApplication::beep(); },
          .windowFrame = [this](std::uint32_t id) -> std::optional<Rect> {
              for (const WindowInfo& window : windowList.onScreenWindows())
                  if (window.id == id) return window.bounds;
              return std::nullopt;
          },
          .chrome = &recordingChrome,
      })),
      presentation(forwardNotBuilt()),
      scroll(forwardNotBuilt()),
      translation(forwardNotBuilt()),
      stickers(forwardNotBuilt()),
      cards([this](const CaptureCardItem& item) {
          if (onCaptureDelivered) onCaptureDelivered(item);
      }) {
    std::error_code error;
    std::filesystem::create_directories(recordingsInProgress, error);
    if (error) logLine("cannot make " + recordingsInProgress.string() + ": " + error.message());
}

NotBuiltNotice AppPlatform::forwardNotBuilt() {
    return [this](const std::string& feature) {
        if (onNotBuilt) onNotBuilt(feature);
    };
}

} // namespace tosvar
