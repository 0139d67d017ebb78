#pragma once

#include "RegionAnnotatingModel.h"

#include <QWidget>

namespace tosvar {

// The committed region's border, its eight handles and the corner-radius
// grip, drawn over the canvas across the whole overlay. It takes no pointer
// events: the overlay decides what a press on the chrome does. While a
// press hides the chrome only the border is drawn, with guides through the
// edges a handle moves.
class RegionChromeView final : public QWidget {
public:
    RegionChromeView(const RegionAnnotatingModel& model, QWidget* parent);

    // The windows of a multi-window region, outlined with their remove badges while Ctrl is held.
    void setWindowOutlines(std::vector<Rect> windows);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const RegionAnnotatingModel& model_;
    std::vector<Rect> windowOutlines_;
};

} // namespace tosvar
