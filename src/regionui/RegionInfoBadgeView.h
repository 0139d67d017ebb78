#pragma once

#include <QWidget>

#include <functional>
#include <optional>

namespace tosvar {

// The badge of a committed region: its size, and the shadow switch. A click
// on the switch flips it; a drag of 4 points or more moves the badge, and
// its release hands the badge's centre back so the host can pick a corner.
class RegionInfoBadgeView final : public QWidget {
public:
    explicit RegionInfoBadgeView(QWidget* parent);

    void setSizeText(const QString& text);
    // No label hides the switch.
    void setToggle(std::optional<QString> label, bool on);
    bool shadowOn() const { return shadowOn_; }

    std::function<void(bool on)> onToggle;
    // The badge's new top-left corner in the parent while it is dragged.
    std::function<void(QPointF topLeft)> onDragMoved;
    std::function<void(QPointF centre)> onDragEnded;

    static constexpr double dragThreshold = 4;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    void resizeToContent();

    QString sizeText_;
    std::optional<QString> toggleLabel_;
    bool shadowOn_ = false;
    bool toggleHovered_ = false;
    std::optional<QPointF> dragStart_;
    QPointF dragStartTopLeft_;
    bool dragging_ = false;
};

} // namespace tosvar
