#pragma once

#include "HintPanel.h"

#include <QFont>
#include <QPainter>
#include <QSizeF>

#include <vector>

namespace tosvar {

// Draws the capture hint panel: a title, the mode chips when idle, rows of
// text with their keycaps at the right, and the footer, on a dark rounded
// plate. `apply` measures only when the content changed.
class HintPanelPainter {
public:
    HintPanelPainter();

    void apply(const HintPanel::Content& content);
    QSizeF size() const { return size_; }
    void paint(QPainter& painter, QPointF topLeft) const;

private:
    struct Chip {
        QString key, title;
        bool current = false;
        double width = 0;
    };

    QFont titleFont_, rowFont_, keyFont_, footerFont_, chipKeyFont_;
    std::optional<HintPanel::Content> content_;
    QString title_, footer_;
    std::vector<std::pair<QString, QString>> rows_;
    std::vector<Chip> chips_;
    QSizeF size_;
};

} // namespace tosvar
