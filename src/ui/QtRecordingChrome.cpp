#include "QtRecordingChrome.h"

#include "RecordingDestination.h"
#include "ScreenCoordinates.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPainterPathStroker>
#include <QProgressBar>
#include <QScreen>
#include <QToolButton>

#include <algorithm>
#include <cmath>
#include <optional>

namespace tosvar {

namespace {

constexpr Qt::WindowFlags overlayFlags =
    Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::Tool | Qt::WindowDoesNotAcceptFocus | Qt::X11BypassWindowManagerHint;

// Without a compositor X11 has no see-through windows: each window is cut to
// the shape it draws (a shape mask), so nothing around it is covered.
void makeOverlay(QWidget& window, bool passesThePointer) {
    window.setAttribute(Qt::WA_ShowWithoutActivating);
    window.setAttribute(Qt::WA_TransparentForMouseEvents, passesThePointer);
}

QRegion regionOf(const QPainterPath& path) { return QRegion(path.toFillPolygon().toPolygon()); }

} // namespace

// The disc with the seconds left.
class QtRecordingChrome::Countdown final : public QWidget {
public:
    Countdown() : QWidget(nullptr, overlayFlags | Qt::WindowTransparentForInput) {
        makeOverlay(*this, true);
        resize(152, 152);
        QPainterPath disc;
        disc.addEllipse(QRectF(27, 27, 98, 101));
        setMask(regionOf(disc));
    }
    void setRemaining(int remaining) {
        remaining_ = remaining;
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.fillRect(rect(), QColor(20, 20, 22));
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(32, 32, 34));
        painter.drawEllipse(QRectF(28, 28, 96, 96));
        QFont digits = font();
        digits.setPixelSize(44);
        digits.setWeight(QFont::DemiBold);
        digits.setStyleHint(QFont::Monospace);
        painter.setFont(digits);
        painter.setPen(Qt::white);
        painter.drawText(QRectF(28, 28, 96, 96), Qt::AlignCenter, QString::number(remaining_));
    }

private:
    int remaining_ = 0;
};

// Red corner brackets around the region, orange while paused. They hold
// still: the screen stream follows the display's damage, whose bounding box
// around four breathing corners would be the whole region, a frame each
// time they changed.
class QtRecordingChrome::Brackets final : public QWidget {
public:
    Brackets() : QWidget(nullptr, overlayFlags | Qt::WindowTransparentForInput) { makeOverlay(*this, true); }
    void setPaused(bool paused) {
        paused_ = paused;
        update(mask());
    }

protected:
    // The corner brackets, inset 6 in the window, arms of a quarter of the shorter side up to 36.
    QPainterPath brackets() const {
        const QRectF box = QRectF(rect()).adjusted(6, 6, -6, -6);
        const double arm = std::min(0.25 * std::min(box.width(), box.height()), 36.0);
        QPainterPath path;
        for (const auto& [corner, dx, dy] : {std::tuple{box.topLeft(), 1, 1}, std::tuple{box.topRight(), -1, 1},
                                            std::tuple{box.bottomLeft(), 1, -1}, std::tuple{box.bottomRight(), -1, -1}}) {
            path.moveTo(corner + QPointF(dx * arm, 0));
            path.lineTo(corner);
            path.lineTo(corner + QPointF(0, dy * arm));
        }
        return path;
    }
    void resizeEvent(QResizeEvent*) override {
        QPainterPathStroker stroke;
        stroke.setWidth(4);
        stroke.setCapStyle(Qt::RoundCap);
        setMask(regionOf(stroke.createStroke(brackets())));
    }
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.fillRect(rect(), paused_ ? QColor(255, 149, 0) : QColor(255, 59, 48));
    }

private:
    bool paused_ = false;
};

// The bar with the time and the buttons.
class QtRecordingChrome::Bar final : public QWidget {
public:
    Bar(const std::function<std::string(const std::string&)>& localize, Actions actions)
        : QWidget(nullptr, overlayFlags), actions_(std::move(actions)), localize_(localize) {
        makeOverlay(*this, false);
        setAutoFillBackground(true);
        auto* row = new QHBoxLayout(this);
        row->setContentsMargins(14, 6, 10, 6);
        row->setSpacing(6);
        if (actions_.move) {
            // The grip drags the recorded region; the bar follows it.
            grip_ = new QLabel(QStringLiteral("⠿"), this);
            grip_->setCursor(Qt::OpenHandCursor);
            grip_->setToolTip(text("record.move.hint"));
            grip_->installEventFilter(this);
            row->addWidget(grip_);
            row->setContentsMargins(8, 6, 10, 6);
        }
        dot_ = new QLabel(QStringLiteral("●"), this);
        time_ = new QLabel(QStringLiteral("0:00"), this);
        QFont digits = time_->font();
        digits.setStyleHint(QFont::Monospace);
        digits.setFamily(QStringLiteral("DejaVu Sans Mono"));
        time_->setFont(digits);
        pause_ = button(text("record.bar.pause"), [this] { actions_.togglePause(); });
        QToolButton* stop = button(text("record.bar.stop"), [this] { actions_.stop(); });
        QToolButton* cancel = button(text("record.bar.cancel"), [this] { actions_.cancel(); });
        row->addWidget(dot_);
        row->addWidget(time_);
        if (actions_.showsAudioMeter) {
            meter_ = new QProgressBar(this);
            meter_->setRange(0, 100);
            meter_->setTextVisible(false);
            meter_->setFixedSize(48, 6);
            meter_->setToolTip(text("record.bar.audioLevel"));
            row->addWidget(meter_);
        }
        for (QWidget* w : std::initializer_list<QWidget*>{pause_, stop, cancel}) row->addWidget(w);
        setPaused(false);
        adjustSize();
    }
    void setElapsed(double seconds) { time_->setText(QString::fromStdString(RecordingDestination::durationString(seconds))); }
    void setAudioLevel(float level) {
        if (meter_) meter_->setValue(static_cast<int>(std::clamp(level, 0.0f, 1.0f) * 100));
    }
    void setPaused(bool paused) {
        pause_->setText(text(paused ? "record.bar.resume" : "record.bar.pause"));
        dot_->setStyleSheet(paused ? QStringLiteral("color: rgb(255,149,0)") : QStringLiteral("color: rgb(255,59,48)"));
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched != grip_) return false;
        auto* mouse = static_cast<QMouseEvent*>(event);
        switch (event->type()) {
        case QEvent::MouseButtonPress:
            dragStart_ = mouse->globalPosition();
            actions_.moveBegan();
            return true;
        case QEvent::MouseMove:
            if (dragStart_) actions_.move({mouse->globalPosition().x() - dragStart_->x(), mouse->globalPosition().y() - dragStart_->y()});
            return true;
        case QEvent::MouseButtonRelease:
            dragStart_.reset();
            return true;
        default: return false;
        }
    }
    void resizeEvent(QResizeEvent*) override {
        QPainterPath plate;
        plate.addRoundedRect(QRectF(rect()), 10, 10);
        setMask(regionOf(plate));
    }

private:
    QString text(const std::string& key) const { return QString::fromStdString(localize_(key)); }
    QToolButton* button(const QString& label, std::function<void()> action) {
        auto* b = new QToolButton(this);
        b->setText(label);
        b->setAutoRaise(true);
        b->setFocusPolicy(Qt::NoFocus);
        connect(b, &QToolButton::clicked, this, [action = std::move(action)] {
            if (action) action();
        });
        return b;
    }

    Actions actions_;
    std::function<std::string(const std::string&)> localize_;
    QLabel* grip_ = nullptr;
    QProgressBar* meter_ = nullptr;
    QLabel* dot_;
    QLabel* time_;
    QToolButton* pause_;
    std::optional<QPointF> dragStart_;
};

// How far the GIF has come, at the bottom of the screen.
class QtRecordingChrome::Progress final : public QWidget {
public:
    explicit Progress(QString base) : QWidget(nullptr, overlayFlags | Qt::WindowTransparentForInput), base_(std::move(base)) {
        makeOverlay(*this, true);
        setAutoFillBackground(true);
        auto* row = new QHBoxLayout(this);
        row->setContentsMargins(14, 8, 14, 8);
        label_ = new QLabel(this);
        QFont digits = label_->font();
        digits.setFamily(QStringLiteral("DejaVu Sans Mono"));
        label_->setFont(digits);
        row->addWidget(label_);
        update(0);
    }
    void update(double fraction) {
        label_->setText(base_ + QStringLiteral(" %1%").arg(static_cast<int>(fraction * 100)));
        adjustSize();
    }

protected:
    void resizeEvent(QResizeEvent*) override {
        QPainterPath plate;
        plate.addRoundedRect(QRectF(rect()), 8, 8);
        setMask(regionOf(plate));
    }

private:
    QString base_;
    QLabel* label_;
};

QtRecordingChrome::QtRecordingChrome(std::function<Rect()> mainGlobalFrame, std::function<std::string(const std::string&)> localize)
    : mainGlobalFrame_(std::move(mainGlobalFrame)), localize_(std::move(localize)) {}

QtRecordingChrome::~QtRecordingChrome() { close(); }

QRect QtRecordingChrome::globalRect(const Rect& region) const {
    const Rect global = ScreenCoordinates::toGlobal(region, mainGlobalFrame_());
    return QRectF(global.minX(), global.minY(), global.width(), global.height()).toAlignedRect();
}

const QScreen* QtRecordingChrome::screenShowing(const QRect& area) {
    const QScreen* screen = QGuiApplication::screenAt(area.center());
    return screen ? screen : QGuiApplication::primaryScreen();
}

QRect QtRecordingChrome::barFrame(const QRect& region, const QRect& screen, const QSize& size) {
    const int x = std::clamp(region.center().x() - size.width() / 2, screen.left() + 8, std::max(screen.left() + 8, screen.right() - 8 - size.width()));
    int y = region.bottom() + 12;
    if (y + size.height() > screen.bottom() - 8) y = region.top() - 12 - size.height();
    if (y < screen.top() + 8) y = screen.bottom() - 8 - size.height() - 48;
    return {QPoint(x, y), size};
}

void QtRecordingChrome::showCountdown(const Rect& region, int remaining) {
    if (remaining <= 0) {
        if (countdown_) countdown_->deleteLater();
        return;
    }
    if (!countdown_) countdown_ = new Countdown();
    countdown_->setRemaining(remaining);
    countdown_->move(globalRect(region).center() - QPoint(76, 76));
    countdown_->show();
}

void QtRecordingChrome::showRecording(const Rect& region, Actions actions) {
    if (countdown_) countdown_->deleteLater();
    const QRect area = globalRect(region);
    const QScreen* screen = screenShowing(area);
    // Brackets stand just outside the region; round a whole screen there is no outside.
    if (!screen || !area.contains(screen->geometry())) {
        if (!brackets_) brackets_ = new Brackets();
        brackets_->setGeometry(area.adjusted(-12, -12, 12, 12));
        brackets_->show();
    }
    if (bar_) bar_->deleteLater();
    bar_ = new Bar(localize_, std::move(actions));
    const QRect frame = barFrame(area, screen ? screen->geometry() : area, bar_->sizeHint());
    // A screen grab sees the bar: where it would stand in the recording, the
    // tray, the hotkey and the command line stop it instead.
    if (frame.intersects(area)) {
        bar_->deleteLater();
        return;
    }
    bar_->setGeometry(frame);
    bar_->show();
}

void QtRecordingChrome::follow(const Rect& region) {
    const QRect area = globalRect(region);
    if (brackets_) brackets_->setGeometry(area.adjusted(-12, -12, 12, 12));
    if (!bar_) return;
    const QScreen* screen = screenShowing(area);
    bar_->setGeometry(barFrame(area, screen ? screen->geometry() : area, bar_->size()));
}

void QtRecordingChrome::setElapsed(double seconds) {
    if (bar_) bar_->setElapsed(seconds);
}

void QtRecordingChrome::setAudioLevel(float level) {
    if (bar_) bar_->setAudioLevel(level);
}

void QtRecordingChrome::setPaused(bool paused) {
    if (bar_) bar_->setPaused(paused);
    if (brackets_) brackets_->setPaused(paused);
}

void QtRecordingChrome::showExportProgress(double fraction) {
    if (fraction >= 1) {
        if (progress_) progress_->deleteLater();
        return;
    }
    if (!progress_) progress_ = new Progress(QString::fromStdString(localize_("record.toast.gifExporting")));
    progress_->update(fraction);
    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        const QRect area = screen->availableGeometry();
        progress_->move(area.center().x() - progress_->width() / 2, area.bottom() - 80 - progress_->height());
    }
    progress_->show();
}

void QtRecordingChrome::close() {
    for (QWidget* window : std::initializer_list<QWidget*>{countdown_, brackets_, bar_})
        if (window) window->deleteLater();
}

} // namespace tosvar
