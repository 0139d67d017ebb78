#include "HotkeyPillRecorder.h"

#include "QtKeyEvents.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

namespace tosvar {

HotkeyPillRecorder::HotkeyPillRecorder(HotkeyRecorderGroup& group, int id, std::optional<GlobalHotkeyBinding> binding,
                                       std::optional<GlobalHotkeyBinding> defaultBinding,
                                       std::function<void(std::optional<GlobalHotkeyBinding>)> onChange,
                                       Localize localize, const KeyTranslator* translator, QWidget* parent)
    : QWidget(parent)
    , recorder_(std::make_unique<HotkeyRecorder>(group, id, binding, defaultBinding, std::move(onChange)))
    , localize_(std::move(localize))
    , translator_(translator)
    , pill_(new QPushButton(this))
    , trailing_(new QToolButton(this))
    , error_(new QLabel(this))
{
    pill_->setToolTip(QString::fromStdString(localize_("hotkey.clickToEdit")));
    pill_->setMinimumWidth(120);
    pill_->setStyleSheet("QPushButton { border-radius: 11px; padding: 3px 12px; }");
    pill_->installEventFilter(this);
    trailing_->setAutoRaise(true);
    error_->setStyleSheet("color: #c0392b;");

    auto* row = new QHBoxLayout;
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(pill_);
    row->addWidget(trailing_);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addLayout(row);
    column->addWidget(error_);

    connect(pill_, &QPushButton::clicked, this, [this] { startRecording(); });
    connect(trailing_, &QToolButton::clicked, this, [this] {
        if (recorder_->trailingControl() == HotkeyRecorder::TrailingControl::clear)
            recorder_->clear();
        else
            recorder_->reset();
        refresh();
    });
    refresh();
}

HotkeyPillRecorder::~HotkeyPillRecorder()
{
    endRecording();
}

void HotkeyPillRecorder::refresh()
{
    const HotkeyRecorder& model = *recorder_;
    if (model.isRecording()) {
        const std::string preview = model.preview();
        pill_->setText(QString::fromStdString(preview.empty() ? localize_("hotkey.recording.short") : preview));
    } else {
        pill_->setText(QString::fromStdString(settingsDisplayName(model.binding(), localize_("hotkey.notSet"))));
        if (pill_ == QWidget::keyboardGrabber())
            pill_->releaseKeyboard();
    }
    error_->setText(model.errorKey().empty() ? QString() : QString::fromStdString(localize_(model.errorKey())));
    error_->setVisible(!model.errorKey().empty());
    switch (model.trailingControl()) {
    case HotkeyRecorder::TrailingControl::none: trailing_->hide(); break;
    case HotkeyRecorder::TrailingControl::clear:
        trailing_->setIcon(style()->standardIcon(QStyle::SP_LineEditClearButton));
        trailing_->setToolTip(QString::fromStdString(localize_("hotkey.clear")));
        trailing_->show();
        break;
    case HotkeyRecorder::TrailingControl::reset:
        trailing_->setIcon(style()->standardIcon(QStyle::SP_BrowserReload));
        trailing_->setToolTip(QString::fromStdString(localize_("hotkey.reset")));
        trailing_->show();
        break;
    }
}

void HotkeyPillRecorder::startRecording()
{
    recorder_->startRecording();
    pill_->setFocus();
    pill_->grabKeyboard(); // keys come here, not to whatever they would trigger
    refresh();
}

void HotkeyPillRecorder::endRecording()
{
    recorder_->endRecording();
    if (pill_ == QWidget::keyboardGrabber())
        pill_->releaseKeyboard();
}

bool HotkeyPillRecorder::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == pill_ && event->type() == QEvent::FocusOut && recorder_->isRecording()) {
        endRecording();
        refresh();
        return false;
    }
    if (watched != pill_ || !recorder_->isRecording())
        return false;
    if (event->type() != QEvent::KeyPress && event->type() != QEvent::KeyRelease)
        return false;
    const std::optional<KeyEvent> key = keyEventFromQt(*static_cast<QKeyEvent*>(event), translator_);
    if (key)
        recorder_->handle(*key);
    refresh();
    return true; // every key is swallowed while recording
}

} // namespace tosvar
