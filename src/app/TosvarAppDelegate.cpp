#include "TosvarAppDelegate.h"

#include "BuildTarget.h"
#include "CaptureOutputPolicy.h"
#include "HotkeyRegistrationTable.h"
#include "InterruptedRecordings.h"
#include "LaunchDiagnostics.h"
#include "LiveAppSettings.h"
#include "LocalizationManager.h"
#include "Log.h"
#include "OwnPasteboard.h"
#include "QtPainterCanvas.h"
#include "QtScreenLayout.h"
#include "RecordingStatusItemStyle.h"
#include "ScreenshotToast.h"
#include "SiblingApp.h"
#include "StatusMenuView.h"
#include "WorkerPool.h"

#include <QApplication>
#include <QTimer>
#include <QCursor>
#include <QImageReader>


namespace tosvar {

namespace {

constexpr std::string_view notBuiltToastKey = "tosvar.toast.notBuilt";

} // namespace

TosvarAppDelegate::TosvarAppDelegate(AppPlatform& platform)
    : CaptureHost(platform.mainQueue), platform_(platform),
      recents_(platform.files, SettingsStore::standardDefaults()),
      onboarding_({platform.permissions, SettingsStore::standardDefaults(), platform.files,
                   [this] { return settingsStore_.load(); }}),
      launchAtLogin_(LaunchAtLoginController::standardAutostartFile(),
                     QCoreApplication::applicationFilePath().toStdString()) {
    platform_.onNotBuilt = [this](const std::string& feature) { notBuilt(feature); };
    platform_.onCaptureDelivered = [](const CaptureCardItem& item) {
        const std::string where = item.fileURL ? localize("tosvar.toast.saved", {item.fileURL->filename().string()})
                                               : localize("card.toast.copied");
        ScreenshotToast::show(QString::fromStdString(where), ScreenshotToast::captureSeconds);
    };
    QObject::connect(&statusMenu_, &QMenu::aboutToShow, &statusMenu_, [this] { rebuildStatusMenu(); });
}

TosvarAppDelegate::~TosvarAppDelegate() {
    platform_.onNotBuilt = nullptr;
    platform_.onCaptureDelivered = nullptr;
    warmUpTimer_.cancel();
}

void TosvarAppDelegate::applicationWillTerminate() { LaunchDiagnostics::willTerminate(); }

// MARK: launch

void TosvarAppDelegate::stage(std::string_view name) { LaunchDiagnostics::stage(std::string(name)); }

void TosvarAppDelegate::applySettings(const AppSettings& settings) {
    LiveAppSettings::shared().update(settings);
    LocalizationManager::shared().apply(settings.appLanguage);
}

FileCaptureSink& TosvarAppDelegate::sink() {
    if (!sink_)
        sink_ = std::make_unique<FileCaptureSink>(recents_, platform_.pasteboard, OwnPasteboardLedger::shared(),
                                                  SettingsStore::standardDefaults(), platform_.files,
                                                  [this](std::string_view key, double seconds) { showToast(key, seconds); });
    return *sink_;
}

void TosvarAppDelegate::buildCoordinator() {
    AppPlatform& p = platform_;
    coordinator_ = std::make_shared<CaptureCoordinator>(CaptureCoordinatorServices{
        .mainQueue = p.mainQueue,
        .sink = sink(),
        .defaults = SettingsStore::standardDefaults(),
        .settingsProvider = [] { return SettingsStore().load(); },
        .localize = [](std::string_view key) { return L(key); },
        .toast = [this](std::string_view key, double seconds) { showToast(key, seconds); },
        .runDetached = [](std::function<void()> work) { WorkerPool::shared().detach(std::move(work)); },
        .pasteboard = p.pasteboard,
        .ledger = OwnPasteboardLedger::shared(),
        .screens = p.screens,
        .workspace = p.workspace,
        .deletion = p.deletion,
        .region = *p.region,
        .recording = *p.recording,
        .audio = *p.audio,
        .audioHUD = p.audioHUD,
        .presentation = p.presentation,
        .scroll = p.scroll,
        .translation = p.translation,
        .pinned = p.stickers,
        .cards = p.cards,
        .dropShadow = p.dropShadow,
        .makeCountdown = unbuiltCountdowns([this](const std::string& feature) { notBuilt(feature); }),
        .textRecognition = p.cards,
        .screenCapturePermission = p.screenPermission,
        .fullScreen = p.fullScreen,
        .fileSaver = p.fileSaver,
        .thumbnailer = p.cards,
    });
    coordinator_->onRecordingStateChange = [this] {
        rebuildStatusMenu();
        updateStatusItemRecordingAppearance();
    };
    coordinator_->onRecordingTick = [this](double elapsed) {
        if (statusItem_)
            statusItem_->setToolTip(QString::fromStdString(BuildTarget::current().displayName() +
                                                           RecordingStatusItemStyle::title(elapsed)));
    };
    p.presentation.onStateChange = [this] { rebuildStatusMenu(); };
}

void TosvarAppDelegate::startCoordinator() { coordinator_->start(); }

void TosvarAppDelegate::readSiblingState() { siblingIsRunning_ = SiblingWatch::scan(); }

void TosvarAppDelegate::watchRecordedCaptures() {
    recents_.onRecorded = [this] {
        recents_.enforceRetentionLimit(settingsStore_.load().captureLibraryLimit, BuildTarget::current(),
                                       platform_.deletion);
    };
}

void TosvarAppDelegate::setupStatusItem() {
    statusItem_ = std::make_unique<QSystemTrayIcon>(StatusMenuView::statusItemIcon(false, false));
    statusItem_->setToolTip(QString::fromStdString(BuildTarget::current().displayName()));
    statusItem_->setContextMenu(&statusMenu_);
    QObject::connect(statusItem_.get(), &QSystemTrayIcon::activated, &statusMenu_,
                     [this](QSystemTrayIcon::ActivationReason reason) {
                         if (reason == QSystemTrayIcon::Trigger) statusItemClicked();
                     });
    rebuildStatusMenu();
    statusItem_->show();
}

void TosvarAppDelegate::registerHotKeys(const AppSettings& settings) {
    if (!platform_.hotkeyGrabber) return;
    if (!hotkeys_)
        hotkeys_ = std::make_unique<HotkeyRegistrar>(*platform_.hotkeyGrabber,
                                                     [this](HotkeyAction action) { hotkeyPressed(action); });
    hotkeyConflicts_ = hotkeys_->registerHotKeys(hotkeyRequests(settings));
    if (!hotkeyConflicts_.empty()) LaunchDiagnostics::log("hotkey", HotkeyRegistrar::conflictLogText(hotkeyConflicts_));
}

void TosvarAppDelegate::observeSibling() {
    siblingWatch_ = std::make_unique<SiblingWatch>([this](bool running) {
        if (running == siblingIsRunning_) return;
        siblingIsRunning_ = running;
        rebuildStatusMenu();
    });
}

void TosvarAppDelegate::loadRecents() { recents_.loadFromDisk(BuildTarget::current()); }

void TosvarAppDelegate::applyLaunchAtLogin(bool enabled) { launchAtLogin_.apply(enabled); }

void TosvarAppDelegate::scheduleCaptureWarmUp(double seconds) {
    warmer_ = std::make_unique<CaptureWarmer>(
        platform_.mainQueue, platform_.displays, platform_.screens,
        [this] { return platform_.screenPermission.isGranted(); },
        [](std::function<void()> work) { WorkerPool::shared().detach(std::move(work)); });
    warmUpTimer_ = platform_.mainQueue.after(seconds, [this] {
        warmer_->start();
        wakeWatch_ = std::make_unique<SystemWakeWatch>([this] { warmer_->warm("wake"); });
    });
}

bool TosvarAppDelegate::onboardingCompleted() { return TosvarOnboarding::isCompleted(SettingsStore::standardDefaults()); }

void TosvarAppDelegate::launchDidFinish() {
    // Gathered here on the main thread; written out by the diagnostics' own thread.
    std::vector<std::pair<std::string, std::string>> inventory{
        {"screenRecordingGranted", platform_.screenPermission.isGranted() ? "true" : "false"},
        {"globalHotkeys", platform_.hotkeyGrabber ? "X11 key grabs" : "none (no X server)"},
        {"localizationTable", LocalizationManager::shared().diagnosticDescription()},
    };
    std::string screens;
    for (const ScreenInfo& screen : platform_.screens.screens())
        screens += (screens.empty() ? "" : ", ") + std::to_string(int(screen.frame.width())) + "x" +
                   std::to_string(int(screen.frame.height())) + "@" + std::to_string(screen.backingScale).substr(0, 4);
    inventory.emplace_back("screens", screens);
    LaunchDiagnostics::launchDidFinish([inventory] { return inventory; });
    offerInterruptedRecordings();
}

// A recording the last run never finished is offered back once the launch is done.
void TosvarAppDelegate::offerInterruptedRecordings() {
    const std::vector<std::filesystem::path> movies = InterruptedRecordings::find(platform_.recordingsInProgress);
    if (movies.empty()) return;
    QTimer::singleShot(0, qApp, [this, movies] {
        for (const std::filesystem::path& kept : InterruptedRecordings::offer(movies, platform_.alerts, platform_.movieFiles,
                                                                              SettingsStore::standardDefaults(), platform_.files))
            sink().deliver(kept);
    });
}

// MARK: menu

void TosvarAppDelegate::rebuildStatusMenu() {
    StatusMenuState state;
    state.settings = settingsStore_.load();
    for (HotkeyAction action : hotkeyConflicts_) state.hotkeyConflicts.insert(std::string(rawValue(action)));
    state.translationAvailable = platform_.translation.isAvailable();
    if (coordinator_) {
        state.isRecording = coordinator_->isRecording();
        state.isRecordingAudio = coordinator_->audioRecordingState() != AudioRecordingController::State::idle;
        state.isPresenting = coordinator_->isPresenting();
    }
    recents_.pruneMissing();
    for (const RecentCaptures::Entry& entry : recents_.entries()) state.recentCaptures.push_back(entry.url);
    state.siblingIsRunning = siblingIsRunning_;
    state.siblingDisplayName = SiblingApp::displayName;
    StatusMenuView::fill(statusMenu_, StatusMenuModel::build(state), {localize, [](const GlobalHotkeyBinding& binding) { return StatusMenuView::shortcut(binding); }},
                         [this](StatusMenuAction action, const std::filesystem::path& file) { perform(action, file); });
}

void TosvarAppDelegate::updateStatusItemRecordingAppearance() {
    if (!statusItem_ || !coordinator_) return;
    const RecordingController::State recording = coordinator_->recordingState();
    const AudioRecordingController::State audio = coordinator_->audioRecordingState();
    const bool live = recording != RecordingController::State::idle || audio != AudioRecordingController::State::idle;
    const bool paused = recording == RecordingController::State::paused || audio == AudioRecordingController::State::paused;
    statusItem_->setIcon(StatusMenuView::statusItemIcon(live, paused));
    if (!live) statusItem_->setToolTip(QString::fromStdString(BuildTarget::current().displayName()));
}

void TosvarAppDelegate::perform(StatusMenuAction action, const std::filesystem::path& file) {
    switch (action) {
    case StatusMenuAction::none: return;
    case StatusMenuAction::captureScreenshot: captureScreenshotFromMenu(); return;
    case StatusMenuAction::captureFullScreen: captureFullScreenFromMenu(); return;
    case StatusMenuAction::delayedScreenshot: delayedScreenshotFromMenu(); return;
    case StatusMenuAction::scrollCapture: scrollCaptureFromMenu(); return;
    case StatusMenuAction::captureText: captureTextFromMenu(); return;
    case StatusMenuAction::translateRegion: translateRegionFromMenu(); return;
    case StatusMenuAction::toggleRecording: toggleRecordingFromMenu(); return;
    case StatusMenuAction::recordFullScreen: recordFullScreenFromMenu(); return;
    case StatusMenuAction::toggleAudioRecording: toggleAudioRecordingFromMenu(); return;
    case StatusMenuAction::togglePresentation: togglePresentationFromMenu(); return;
    case StatusMenuAction::pinFromClipboard: pinFromClipboard(); return;
    case StatusMenuAction::toggleAllStickers: toggleAllStickersFromMenu(); return;
    case StatusMenuAction::openLibrary: openLibrary(); return;
    case StatusMenuAction::openRecent: openRecent(file); return;
    case StatusMenuAction::revealCaptureFolder: revealCaptureFolder(); return;
    case StatusMenuAction::showOnboarding: showOnboarding(); return;
    case StatusMenuAction::openSettings: openSettings(); return;
    case StatusMenuAction::quit: quit(); return;
    }
}

void TosvarAppDelegate::captureScreenshotFromMenu() { coordinator_->captureRegion(menuCaptureDelay); }
void TosvarAppDelegate::captureFullScreenFromMenu() { coordinator_->captureFullScreen(menuCaptureDelay); }
void TosvarAppDelegate::delayedScreenshotFromMenu() { coordinator_->captureRegionAfterDelay(std::nullopt); }
void TosvarAppDelegate::scrollCaptureFromMenu() { coordinator_->captureScrolling(menuCaptureDelay); }
void TosvarAppDelegate::captureTextFromMenu() { coordinator_->captureText(menuCaptureDelay); }
void TosvarAppDelegate::translateRegionFromMenu() { coordinator_->translateRegion(menuCaptureDelay); }
void TosvarAppDelegate::toggleRecordingFromMenu() { coordinator_->toggleRecording(); }
void TosvarAppDelegate::recordFullScreenFromMenu() { coordinator_->recordFullScreen(); }
void TosvarAppDelegate::toggleAudioRecordingFromMenu() { coordinator_->toggleAudioRecording(); }
void TosvarAppDelegate::togglePresentationFromMenu() { coordinator_->togglePresentation(); }
void TosvarAppDelegate::pinFromClipboard() { notBuilt("stickers"); }
void TosvarAppDelegate::toggleAllStickersFromMenu() { notBuilt("stickers"); }
void TosvarAppDelegate::openLibrary() { notBuilt("the capture library"); }
void TosvarAppDelegate::openSettings() { notBuilt("the settings window"); }

void TosvarAppDelegate::openRecent(const std::filesystem::path& file) { platform_.workspace.open(file); }

void TosvarAppDelegate::revealCaptureFolder() {
    if (Expected<std::filesystem::path> folder = CaptureOutputPolicy::picturesFolder(BuildTarget::current(), platform_.files)) {
        platform_.workspace.reveal(*folder);
    } else {
        logLine("reveal capture folder: " + folder.error().message);
        platform_.workspace.beep();
    }
}

void TosvarAppDelegate::showOnboarding() {
    onboarding_.show([this] { openSettings(); });
}

void TosvarAppDelegate::quit() { QCoreApplication::quit(); }

void TosvarAppDelegate::statusItemClicked() {
    rebuildStatusMenu();
    statusMenu_.popup(QCursor::pos());
}

// MARK: hotkeys and the command line

void TosvarAppDelegate::hotkeyPressed(HotkeyAction action) {
    CaptureCoordinator& c = *coordinator_;
    switch (action) {
    case HotkeyAction::screenshot: c.captureRegion(); return;
    case HotkeyAction::captureText: c.captureText(); return;
    case HotkeyAction::translateRegion: c.translateRegion(); return;
    case HotkeyAction::recording: c.toggleRecording(); return;
    case HotkeyAction::scrollCapture: c.captureScrolling(); return;
    case HotkeyAction::delayedScreenshot: c.toggleDelayedCapture(); return;
    case HotkeyAction::audioRecording: c.toggleAudioRecording(); return;
    case HotkeyAction::audioRecordingPause: c.toggleAudioRecordingPause(); return;
    case HotkeyAction::recordingPause: c.toggleRecordingPause(); return;
    case HotkeyAction::presentation: c.togglePresentation(); return;
    case HotkeyAction::presentationAnnotate: platform_.presentation.toggleAnnotate(); return;
    }
}

ActionOutcome TosvarAppDelegate::perform(const CommandLineRequest& request) {
    notBuiltReached_ = false;
    const std::string& a = request.action;
    CaptureCoordinator& c = *coordinator_;
    if (a == "screenshot") c.captureRegion();
    else if (a == "screenshot-full") c.captureFullScreen();
    else if (a == "screenshot-delayed") c.captureRegionAfterDelay(request.seconds);
    else if (a == "scroll") c.captureScrolling();
    else if (a == "text") c.captureText();
    else if (a == "translate") c.translateRegion();
    else if (a == "record") c.toggleRecording();
    // A second call stops what the first began, as the hotkey does.
    else if (a == "record-full") RecordingController::isActive(c.recordingState()) ? c.toggleRecording() : c.recordFullScreen();
    else if (a == "record-audio") c.toggleAudioRecording();
    else if (a == "present") c.togglePresentation();
    else if (a == "pin-clipboard") pinFromClipboard();
    else if (a == "annotate") {
        if (std::optional<std::string> error = annotateFile(request.path)) return {ActionOutcome::Kind::failed, *error};
    }
    else if (a == "library") openLibrary();
    else if (a == "settings") openSettings();
    else if (a == "quit") QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    else return {ActionOutcome::Kind::failed, "unknown action \"" + a + "\""};
    if (notBuiltReached_)
        return {ActionOutcome::Kind::notBuilt, "the \"" + a + "\" action is not built into this version yet"};
    return {};
}

std::optional<std::string> TosvarAppDelegate::annotateFile(const std::filesystem::path& file) {
    QImageReader reader(QString::fromStdString(file.string()));
    reader.setAutoTransform(true);
    const QImage read = reader.read();
    if (read.isNull()) return "cannot open " + file.string() + ": " + reader.errorString().toStdString();
    const QString title = QString::fromStdString(L("annotation.window.title", file.filename().string()));
    auto* window = new AnnotationEditorWindow(imageFromQt(read), 1, title,
                                              {platform_.renderer, platform_.mainQueue, &SettingsStore::standardDefaults(), platform_.elementClipboard,
                                               platform_.pasteboard, WorkerPool::shared()});
    editors_.insert(window);
    window->onSave = [this](Bytes png) { sink().deliver(png, false); };
    window->onCopy = [this](Bytes png) {
        OwnPasteboard::writePNG(platform_.pasteboard, OwnPasteboardLedger::shared(), png);
        showToast("annotation.copied", ScreenshotToast::captureSeconds);
    };
    window->onClosed = [this, window] { editors_.erase(window); };
    window->show();
    window->raise();
    window->activateWindow();
    logLine("annotate: opened " + file.string());
    return std::nullopt;
}

void TosvarAppDelegate::notBuilt(const std::string& feature) {
    logLine(feature + " is not built into this version");
    showToast(notBuiltToastKey, ScreenshotToast::captureSeconds);
}

void TosvarAppDelegate::showToast(std::string_view key, double seconds) {
    if (key == notBuiltToastKey) notBuiltReached_ = true;
    ScreenshotToast::show(QString::fromStdString(L(key)), seconds);
}

} // namespace tosvar
