#include "ScreenshotToast.h"

#include <QApplication>
#include <QCursor>
#include <QPainter>
#include <QPainterPath>
#include <QPointer>
#include <QPropertyAnimation>
#include <QScreen>
#include <QSequentialAnimationGroup>
#include <QWidget>

namespace tosvar::ScreenshotToast {

namespace {

class ToastWindow final : public QWidget {
public:
    explicit ToastWindow(const QString& text) : text_(text) {
        setWindowFlags(Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                       Qt::WindowDoesNotAcceptFocus);
        setAttribute(Qt::WA_TranslucentBackground);
        setAttribute(Qt::WA_ShowWithoutActivating);
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setAttribute(Qt::WA_DeleteOnClose);
        QFont font = this->font();
        font.setPointSizeF(font.pointSizeF() + 1);
        font.setWeight(QFont::Medium);
        setFont(font);
        const QFontMetrics metrics(font);
        resize(metrics.horizontalAdvance(text_) + 2 * horizontalPadding, metrics.height() + 2 * verticalPadding);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        QPainterPath plate;
        plate.addRoundedRect(QRectF(rect()), cornerRadius, cornerRadius);
        painter.fillPath(plate, QColor(30, 30, 32, 225));
        painter.setPen(Qt::white);
        painter.drawText(rect(), Qt::AlignCenter, text_);
    }

private:
    static constexpr int horizontalPadding = 18;
    static constexpr int verticalPadding = 10;
    QString text_;
};

QPointer<ToastWindow>& current() {
    static QPointer<ToastWindow> window;
    return window;
}

} // namespace

QRect frame(const QRect& visibleFrame, const QSize& size) {
    const int x = visibleFrame.x() + (visibleFrame.width() - size.width()) / 2;
    const int bottom = visibleFrame.y() + visibleFrame.height() - bottomOffset;
    return QRect(QPoint(x, bottom - size.height()), size);
}

void dismiss() {
    if (current()) current()->close();
}

void show(const QString& text, double seconds) {
    dismiss();
    auto* window = new ToastWindow(text);
    current() = window;

    QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
    if (!screen) screen = QGuiApplication::primaryScreen();
    if (screen) window->setGeometry(frame(screen->availableGeometry(), window->size()));
    window->setWindowOpacity(0);
    window->show();

    const int fadeMs = static_cast<int>(fadeSeconds * 1000);
    auto* sequence = new QSequentialAnimationGroup(window);
    auto* fadeIn = new QPropertyAnimation(window, "windowOpacity");
    fadeIn->setDuration(fadeMs);
    fadeIn->setEndValue(1.0);
    sequence->addAnimation(fadeIn);
    sequence->addPause(std::max(0, static_cast<int>(seconds * 1000)));
    auto* fadeOut = new QPropertyAnimation(window, "windowOpacity");
    fadeOut->setDuration(fadeMs);
    fadeOut->setEndValue(0.0);
    sequence->addAnimation(fadeOut);
    QObject::connect(sequence, &QAbstractAnimation::finished, window, &QWidget::close);
    sequence->start();
}

} // namespace tosvar::ScreenshotToast
