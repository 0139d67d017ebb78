#include "HintPanelPainter.h"

#include "LocalizationManager.h"

#include <QFontMetricsF>

#include <algorithm>
#include <cmath>

namespace tosvar {

namespace {

constexpr double inset = 12, rowGap = 5, chipHeight = 24, chipGap = 6, keyPadX = 5, keyPadY = 2;

QFont font(double pixels, QFont::Weight weight) {
    QFont f;
    f.setPixelSize(static_cast<int>(std::lround(pixels)));
    f.setWeight(weight);
    return f;
}

QString q(const std::string& text) { return QString::fromStdString(text); }

} // namespace

HintPanelPainter::HintPanelPainter()
    : titleFont_(font(11, QFont::DemiBold)),
      rowFont_(font(11, QFont::Normal)),
      keyFont_(font(10.5, QFont::Medium)),
      footerFont_(font(9.5, QFont::Normal)),
      chipKeyFont_(font(9.5, QFont::DemiBold)) {}

void HintPanelPainter::apply(const HintPanel::Content& content) {
    if (content_ == content && !size_.isEmpty()) return;
    content_ = content;
    title_ = q(content.title);
    footer_ = q(L("hint.footer"));
    rows_.clear();
    for (const HintPanel::Row& row : content.rows) rows_.emplace_back(q(row.text), q(row.key));
    chips_.clear();
    const QFontMetricsF titleMetrics(titleFont_), rowMetrics(rowFont_), keyMetrics(keyFont_), footerMetrics(footerFont_), chipKeyMetrics(chipKeyFont_);
    double widest = std::max(titleMetrics.horizontalAdvance(title_), footerMetrics.horizontalAdvance(footer_));
    if (content.modes) {
        double chipsWidth = 0;
        for (const CaptureModeShortcut& shortcut : CaptureModeShortcuts::all()) {
            Chip chip{q(shortcut.keyLabel()), q(L(shortcut.titleKey)),
                      shortcut.target == CaptureModeTarget::overlay(*content.modes), 0};
            chip.width = 8 + chipKeyMetrics.horizontalAdvance(chip.key) + 5 + keyMetrics.horizontalAdvance(chip.title) + 8;
            chipsWidth += chip.width + (chips_.empty() ? 0 : chipGap);
            chips_.push_back(chip);
        }
        widest = std::max(widest, chipsWidth);
    }
    double rowsHeight = 0;
    for (const auto& [text, key] : rows_) {
        const double keyWidth = key.isEmpty() ? 0 : keyMetrics.horizontalAdvance(key) + 2 * keyPadX + 12;
        widest = std::max(widest, rowMetrics.horizontalAdvance(text) + keyWidth);
        rowsHeight += std::max(rowMetrics.height(), key.isEmpty() ? 0.0 : keyMetrics.height() + 2 * keyPadY);
    }
    if (!rows_.empty()) rowsHeight += rowGap * static_cast<double>(rows_.size() - 1);
    const double chipsBlock = chips_.empty() ? 7 : 31 + 17;
    size_ = QSizeF(std::ceil(widest + 2 * inset),
                   std::ceil(titleMetrics.height() + 20 + chipsBlock + rowsHeight + rowGap + footerMetrics.height() + 7));
}

void HintPanelPainter::paint(QPainter& painter, QPointF topLeft) const {
    if (size_.isEmpty()) return;
    painter.save();
    painter.translate(topLeft);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF bounds(QPointF(0, 0), size_);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 184));
    painter.drawRoundedRect(bounds, 10, 10);
    painter.setPen(QPen(QColor(255, 255, 255, 20), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(bounds.adjusted(0.5, 0.5, -0.5, -0.5), 9.5, 9.5);

    const QFontMetricsF titleMetrics(titleFont_), rowMetrics(rowFont_), keyMetrics(keyFont_), footerMetrics(footerFont_), chipKeyMetrics(chipKeyFont_);
    painter.setPen(Qt::white);
    painter.setFont(titleFont_);
    double y = 10;
    painter.drawText(QPointF(inset, y + titleMetrics.ascent()), title_);
    y += titleMetrics.height();

    if (!chips_.empty()) {
        y += 10;
        double x = inset;
        for (const Chip& chip : chips_) {
            const QRectF plate(x, y, chip.width, chipHeight);
            painter.setPen(Qt::NoPen);
            painter.setBrush(chip.current ? QColor(10, 132, 255) : QColor(255, 255, 255, 28));
            painter.drawRoundedRect(plate, 6, 6);
            painter.setPen(Qt::white);
            painter.setFont(chipKeyFont_);
            const double keyWidth = chipKeyMetrics.horizontalAdvance(chip.key);
            painter.drawText(QRectF(x + 8, y, keyWidth, chipHeight), Qt::AlignVCenter | Qt::AlignLeft, chip.key);
            painter.setFont(keyFont_);
            painter.drawText(QRectF(x + 8 + keyWidth + 5, y, chip.width - keyWidth - 21, chipHeight), Qt::AlignVCenter | Qt::AlignLeft, chip.title);
            x += chip.width + chipGap;
        }
        y += chipHeight + 9;
        painter.fillRect(QRectF(inset, y, size_.width() - 2 * inset, 1), QColor(255, 255, 255, 31));
        y += 1 + 8;
    } else {
        y += 7;
    }

    for (const auto& [text, key] : rows_) {
        const QSizeF plate(keyMetrics.horizontalAdvance(key) + 2 * keyPadX, keyMetrics.height() + 2 * keyPadY);
        const double height = std::max(rowMetrics.height(), key.isEmpty() ? 0.0 : plate.height());
        painter.setFont(rowFont_);
        painter.setPen(QColor(255, 255, 255, 230));
        painter.drawText(QRectF(inset, y, size_.width() - 2 * inset, height), Qt::AlignVCenter | Qt::AlignLeft, text);
        if (!key.isEmpty()) {
            const QRectF keycap(size_.width() - inset - plate.width(), y + (height - plate.height()) / 2, plate.width(), plate.height());
            painter.setPen(Qt::NoPen);
            painter.setBrush(QColor(255, 255, 255, 36));
            painter.drawRoundedRect(keycap, 4, 4);
            painter.setPen(Qt::white);
            painter.setFont(keyFont_);
            painter.drawText(QPointF(keycap.left() + keyPadX, keycap.bottom() - keyPadY - keyMetrics.descent()), key);
        }
        y += height + rowGap;
    }

    painter.setFont(footerFont_);
    painter.setPen(QColor(255, 255, 255, 140));
    painter.drawText(QPointF(inset, size_.height() - 8 - footerMetrics.descent()), footer_);
    painter.restore();
}

} // namespace tosvar
