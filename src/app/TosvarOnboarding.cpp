#include "TosvarOnboarding.h"

#include "AppPlatform.h"
#include "BuildTarget.h"
#include "CaptureSaveFolderPicker.h"
#include "StatusMenuView.h"

#include <QApplication>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

namespace tosvar {

namespace {

QString text(const std::string& key, const std::vector<std::string>& arguments = {}) {
    return QString::fromStdString(localize(key, arguments));
}

QLabel* sectionTitle(const std::string& key, QWidget* parent) {
    auto* label = new QLabel(text(key), parent);
    QFont font = label->font();
    font.setBold(true);
    font.setPointSizeF(font.pointSizeF() * 1.15);
    label->setFont(font);
    return label;
}

QLabel* wrapped(const QString& words, QWidget* parent) {
    auto* label = new QLabel(words, parent);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    return label;
}

QLabel* iconLabel(std::string_view iconName, QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setPixmap(QIcon::fromTheme(QString::fromLatin1(iconName.data(), static_cast<int>(iconName.size()))).pixmap(20, 20));
    label->setFixedWidth(24);
    return label;
}

// The five shortcuts the welcome names, with their titles.
std::vector<std::pair<QString, std::optional<GlobalHotkeyBinding>>> welcomeShortcuts(const AppSettings& settings) {
    return {
        {text("menu.screenshot"), settings.screenshotHotkey},
        {text("menu.record"), settings.recordingHotkey},
        {text("menu.recordAudio"), settings.audioRecordingHotkey},
        {text("shortcut.recordingPause"), settings.recordingPauseHotkey},
        {text("menu.screenshotDelayed", {std::to_string(settings.screenshotDelaySeconds)}),
         settings.delayedScreenshotHotkey},
    };
}

} // namespace

TosvarOnboarding::TosvarOnboarding(Dependencies dependencies) : d_(std::move(dependencies)) {}

TosvarOnboarding::~TosvarOnboarding() = default;

bool TosvarOnboarding::isCompleted(const DefaultsStore& defaults) {
    return defaults.boolean(completedKey).value_or(false);
}

void TosvarOnboarding::show(std::function<void()> onOpenSettings) {
    onOpenSettings_ = std::move(onOpenSettings);
    if (!window_) build();
    refreshPermissions();
    window_->show();
    window_->raise();
    window_->activateWindow();
}

void TosvarOnboarding::build() {
    window_ = std::make_unique<QWidget>(nullptr, Qt::Window);
    QWidget& window = *window_;
    window.setObjectName(QStringLiteral("tosvarOnboarding"));
    window.setWindowTitle(text("onboarding.title"));
    window.setFixedSize(width, height);
    if (const QScreen* screen = QGuiApplication::primaryScreen())
        window.move(screen->availableGeometry().center() - QPoint(width / 2, height / 2));

    auto* layout = new QVBoxLayout(&window);
    layout->setContentsMargins(28, 24, 28, 20);
    layout->setSpacing(10);
    auto* heading = new QLabel(text("onboarding.title"), &window);
    QFont headingFont = heading->font();
    headingFont.setBold(true);
    headingFont.setPointSizeF(headingFont.pointSizeF() * 1.6);
    heading->setFont(headingFont);
    layout->addWidget(heading);

    layout->addWidget(sectionTitle("onboarding.permissions", &window));
    permissionRows_ = new QWidget(&window);
    new QGridLayout(permissionRows_);
    permissionRows_->layout()->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(permissionRows_);
    auto* note = wrapped(text("permission.relaunchNote"), &window);
    note->setEnabled(false);
    layout->addWidget(note);

    layout->addWidget(sectionTitle("onboarding.shortcuts", &window));
    auto* shortcuts = new QGridLayout;
    int row = 0;
    for (const auto& [title, binding] : welcomeShortcuts(d_.settings())) {
        shortcuts->addWidget(new QLabel(title, &window), row, 0);
        auto* keys = new QLabel(binding ? StatusMenuView::shortcut(*binding).toString(QKeySequence::NativeText)
                                        : text("onboarding.noShortcut"),
                                &window);
        keys->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        shortcuts->addWidget(keys, row++, 1);
    }
    layout->addLayout(shortcuts);
    auto* openShortcuts = new QPushButton(text("onboarding.openShortcuts"), &window);
    openShortcuts->setObjectName(QStringLiteral("openShortcuts"));
    openShortcuts->setFlat(true);
    QObject::connect(openShortcuts, &QPushButton::clicked, &window, [this] { leave(true); });
    layout->addWidget(openShortcuts, 0, Qt::AlignLeft);

    layout->addWidget(sectionTitle("onboarding.files", &window));
    layout->addWidget(wrapped(text("onboarding.files.desc"), &window));
    layout->addWidget(new CaptureSaveFolderPicker(d_.defaults, d_.files, &window));

    layout->addStretch(1);
    auto* done = new QPushButton(text("onboarding.done"), &window);
    done->setObjectName(QStringLiteral("done"));
    done->setDefault(true);
    QObject::connect(done, &QPushButton::clicked, &window, [this] { leave(false); });
    layout->addWidget(done, 0, Qt::AlignRight);

    // Permissions granted in the desktop's settings show once we are back.
    QObject::connect(qApp, &QGuiApplication::applicationStateChanged, &window, [this](Qt::ApplicationState state) {
        if (state == Qt::ApplicationActive) refreshPermissions();
    });
}

void TosvarOnboarding::refreshPermissions() {
    if (!permissionRows_) return;
    auto* grid = static_cast<QGridLayout*>(permissionRows_->layout());
    while (QLayoutItem* item = grid->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    int row = 0;
    for (const SystemPermissions::Row& entry : d_.permissions.snapshot()) {
        grid->addWidget(iconLabel(permissionIconName(entry.permission), permissionRows_), row, 0);
        grid->addWidget(new QLabel(text(permissionTitleKey(entry.permission)), permissionRows_), row, 1);
        if (entry.isGranted) {
            auto* granted = new QLabel(QStringLiteral("✓ ") + text("onboarding.granted"), permissionRows_);
            granted->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
            grid->addWidget(granted, row, 2);
        } else {
            auto* grant = new QPushButton(text("permission.grant"), permissionRows_);
            grant->setObjectName(QString::fromLatin1(permissionName(entry.permission).data()));
            QObject::connect(grant, &QPushButton::clicked, permissionRows_, [this, permission = entry.permission] {
                d_.permissions.requestAccessAndOpenSettings(permission);
                QMetaObject::invokeMethod(permissionRows_, [this] { refreshPermissions(); }, Qt::QueuedConnection);
            });
            grid->addWidget(grant, row, 2, Qt::AlignRight);
        }
        ++row;
    }
    grid->setColumnStretch(1, 1);
}

void TosvarOnboarding::leave(bool openSettings) {
    d_.defaults.set(completedKey, true);
    window_->hide();
    if (openSettings && onOpenSettings_) onOpenSettings_();
}

} // namespace tosvar
