#include "StatusMenuView.h"

#include <QPainter>
#include <QPainterPath>

namespace tosvar::StatusMenuView {

namespace {

constexpr std::uint32_t commandFlag = 0x100000;
constexpr std::uint32_t controlFlag = 0x40000;
constexpr std::uint32_t optionFlag = 0x80000;
constexpr std::uint32_t shiftFlag = 0x20000;

QString titleOf(const StatusMenuRow& row, const StatusMenuPresentation& presentation) {
    if (row.titleKey.empty()) return QString::fromStdString(row.literalTitle);
    std::string title = presentation.localize(row.titleKey, row.titleArguments);
    if (row.conflicted) title = presentation.localize("tosvar.menu.conflicted", {title});
    return QString::fromStdString(title);
}

QPixmap drawIcon(int size, bool live, bool paused) {
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    const qreal unit = size / 18.0;
    QPen pen(QColor(235, 235, 235), 1.6 * unit, Qt::SolidLine, Qt::RoundCap);
    p.setPen(pen);
    // Four corner brackets of a viewfinder.
    const qreal a = 2.5 * unit, b = 15.5 * unit, arm = 4 * unit;
    for (const auto& [x, y, dx, dy] : {std::tuple{a, a, 1, 1}, {b, a, -1, 1}, {a, b, 1, -1}, {b, b, -1, -1}}) {
        p.drawLine(QPointF(x, y), QPointF(x + dx * arm, y));
        p.drawLine(QPointF(x, y), QPointF(x, y + dy * arm));
    }
    const QPointF centre(9 * unit, 9 * unit);
    if (live && paused) {
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(255, 190, 40));
        p.drawRect(QRectF(6.2 * unit, 5.5 * unit, 2 * unit, 7 * unit));
        p.drawRect(QRectF(9.8 * unit, 5.5 * unit, 2 * unit, 7 * unit));
    } else if (live) {
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(240, 60, 50));
        p.drawEllipse(centre, 3.6 * unit, 3.6 * unit);
    } else {
        p.drawEllipse(centre, 2.8 * unit, 2.8 * unit);
    }
    return pixmap;
}

} // namespace

QKeySequence shortcut(const MenuKeyEquivalent& key) {
    int modifiers = 0;
    if (key.modifierFlags & commandFlag) modifiers |= Qt::CTRL;
    if (key.modifierFlags & controlFlag) modifiers |= Qt::META;
    if (key.modifierFlags & optionFlag) modifiers |= Qt::ALT;
    if (key.modifierFlags & shiftFlag) modifiers |= Qt::SHIFT;
    const QKeySequence keyOnly(QString::fromStdString(key.key).toUpper());
    if (keyOnly.isEmpty()) return {};
    return QKeySequence(keyOnly[0].key() | static_cast<Qt::KeyboardModifiers>(modifiers));
}

QKeySequence shortcut(const GlobalHotkeyBinding& binding) {
    return shortcut(MenuKeyEquivalent{binding.menuKeyEquivalent(), binding.menuKeyEquivalentModifierMask()});
}

void fill(QMenu& menu, const std::vector<StatusMenuRow>& rows, const StatusMenuPresentation& presentation,
          const ActionHandler& onAction) {
    menu.clear();
    for (const StatusMenuRow& row : rows) {
        switch (row.kind) {
        case StatusMenuRow::Kind::separator: menu.addSeparator(); break;
        case StatusMenuRow::Kind::submenu: {
            QMenu* submenu = menu.addMenu(titleOf(row, presentation));
            fill(*submenu, row.submenu, presentation, onAction);
            break;
        }
        case StatusMenuRow::Kind::item: {
            QAction* action = menu.addAction(titleOf(row, presentation));
            action->setEnabled(row.enabled);
            if (row.checked) {
                action->setCheckable(true);
                action->setChecked(true);
            }
            if (row.hotkey && presentation.shortcut) action->setShortcut(presentation.shortcut(*row.hotkey));
            if (row.keyEquivalent) action->setShortcut(shortcut(*row.keyEquivalent));
            action->setShortcutVisibleInContextMenu(true);
            if (row.action != StatusMenuAction::none) {
                QObject::connect(action, &QAction::triggered, &menu,
                                 [onAction, kind = row.action, file = row.representedFile] { onAction(kind, file); });
            }
            break;
        }
        }
    }
}

QIcon statusItemIcon(bool live, bool paused) {
    QIcon icon;
    for (int size : {16, 18, 22, 24, 32, 36, 44, 48}) icon.addPixmap(drawIcon(size, live, paused));
    return icon;
}

} // namespace tosvar::StatusMenuView
