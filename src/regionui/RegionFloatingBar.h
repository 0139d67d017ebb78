#pragma once

#include <QWidget>

#include <functional>
#include <optional>

namespace tosvar {

// A floating plate that carries a tool row over the frozen screen, with a
// grip at its left end to drag it elsewhere.
class RegionFloatingBar final : public QWidget {
public:
    RegionFloatingBar(QWidget* content, QWidget* parent);

    // The grip moved the bar by this much since the last call.
    std::function<void(QPointF delta)> onDrag;
    std::function<void()> onDragEnded;

protected:
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* grip_;
    std::optional<QPointF> lastGlobal_;
};

} // namespace tosvar
