#include "QtAudioRecordingHUD.h"

#include "AudioRecordingHUDModel.h"

#include <QCursor>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>
#include <QToolButton>

#include <cmath>

namespace tosvar {

namespace {

namespace Model = AudioRecordingHUDModel;

// Where the bar stood when last closed, for the whole process.
std::optional<QPoint>& lastOrigin() {
    static std::optional<QPoint> origin;
    return origin;
}

class Meter final : public QWidget {
public:
    Meter() { setFixedSize(48, 6); }
    void setLevel(float level) {
        level_ = level;
        update();
    }
    float level() const { return level_; }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(255, 255, 255, 50));
        painter.drawRoundedRect(rect(), 3, 3);
        painter.setBrush(QColor(80, 210, 120));
        painter.drawRoundedRect(QRectF(0, 0, width() * std::clamp(level_, 0.0f, 1.0f), height()), 3, 3);
    }

private:
    float level_ = 0;
};

} // namespace

class QtAudioRecordingHUD::Bar final : public QWidget {
public:
    Bar(const std::function<std::string(const std::string&)>& localize, std::function<void()> onPause,
        std::function<void()> onStop, std::function<void()> onDiscard)
        : localize_(localize) {
        setWindowFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus);
        setAttribute(Qt::WA_TranslucentBackground);
        setAttribute(Qt::WA_ShowWithoutActivating);
        // The plate's width is the least it takes; words longer than icons widen it.
        setFixedHeight(static_cast<int>(Model::height));
        setMinimumWidth(static_cast<int>(Model::width));
        auto* layout = new QHBoxLayout(this);
        layout->setContentsMargins(12, 0, 8, 0);
        layout->setSpacing(8);
        time_ = new QLabel(QString::fromStdString(Model::timeText(0)));
        time_->setStyleSheet("color: white; font-weight: 600;");
        meter_ = new Meter();
        pause_ = button("audio.hud.pause", std::move(onPause));
        layout->addWidget(time_);
        layout->addWidget(meter_);
        layout->addStretch();
        layout->addWidget(pause_);
        layout->addWidget(button("audio.hud.stop", std::move(onStop)));
        layout->addWidget(button("audio.hud.discard", std::move(onDiscard)));
        adjustSize();
    }

    void setPaused(bool paused) {
        paused_ = paused;
        pause_->setText(text(paused ? "audio.hud.resume" : "audio.hud.pause"));
    }
    void setElapsed(double seconds) { time_->setText(QString::fromStdString(Model::timeText(seconds))); }
    void report(float level) { meter_->setLevel(Model::meterLevel(meter_->level(), level, paused_)); }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        QPainterPath plate;
        plate.addRoundedRect(QRectF(rect()), Model::cornerRadius, Model::cornerRadius);
        painter.fillPath(plate, QColor(30, 30, 32, 230));
    }
    // Dragged by its background.
    void mousePressEvent(QMouseEvent* event) override { grabOffset_ = event->globalPosition().toPoint() - pos(); }
    void mouseMoveEvent(QMouseEvent* event) override {
        if (event->buttons() & Qt::LeftButton) move(event->globalPosition().toPoint() - grabOffset_);
    }

private:
    QString text(const char* key) const { return QString::fromStdString(localize_(key)); }
    QToolButton* button(const char* key, std::function<void()> action) {
        auto* b = new QToolButton();
        b->setText(text(key));
        b->setFocusPolicy(Qt::NoFocus);
        b->setAutoRaise(true);
        b->setStyleSheet("color: white;");
        connect(b, &QToolButton::clicked, this, [action = std::move(action)] {
            if (action) action();
        });
        return b;
    }

    std::function<std::string(const std::string&)> localize_;
    QLabel* time_;
    Meter* meter_;
    QToolButton* pause_;
    bool paused_ = false;
    QPoint grabOffset_;
};

QtAudioRecordingHUD::QtAudioRecordingHUD(std::function<std::string(const std::string& key)> localize)
    : localize_(std::move(localize)) {}

QtAudioRecordingHUD::~QtAudioRecordingHUD() { delete bar_.data(); }

QRect QtAudioRecordingHUD::defaultFrame(const QRect& visibleFrame, const QSize& size) {
    const int x = visibleFrame.x() + (visibleFrame.width() - size.width()) / 2;
    const int bottom = visibleFrame.y() + visibleFrame.height() - static_cast<int>(Model::bottomOffset);
    return QRect(QPoint(x, bottom - size.height()), size);
}

void QtAudioRecordingHUD::show(std::function<void()> onPause, std::function<void()> onStop,
                               std::function<void()> onDiscard) {
    close();
    bar_ = new Bar(localize_, std::move(onPause), std::move(onStop), std::move(onDiscard));
    if (lastOrigin()) {
        bar_->move(*lastOrigin());
    } else {
        QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
        if (!screen) screen = QGuiApplication::primaryScreen();
        if (screen) bar_->setGeometry(defaultFrame(screen->availableGeometry(), bar_->size()));
    }
    bar_->show();
}

void QtAudioRecordingHUD::close() {
    if (!bar_) return;
    lastOrigin() = bar_->pos();
    bar_->deleteLater();
    bar_->hide();
    bar_ = nullptr;
}

void QtAudioRecordingHUD::setPaused(bool paused) {
    if (bar_) bar_->setPaused(paused);
}

void QtAudioRecordingHUD::setElapsed(double seconds) {
    if (bar_) bar_->setElapsed(seconds);
}

void QtAudioRecordingHUD::report(float level) {
    if (bar_) bar_->report(level);
}

QWidget* QtAudioRecordingHUD::window() const { return bar_.data(); }

} // namespace tosvar
