#include "AnnotationToolbar.h"

#include "LocalizationManager.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QSpinBox>
#include <QToolButton>

namespace tosvar {

namespace {

using T = AnnotationTool;

// A glyph per tool, from the symbols every Debian desktop's fonts carry.
QString glyph(T tool) {
    switch (tool) {
    case T::select: return QStringLiteral("↖");
    case T::arrow: return QStringLiteral("➚");
    case T::line: return QStringLiteral("╱");
    case T::rectangle: return QStringLiteral("▭");
    case T::ellipse: return QStringLiteral("◯");
    case T::freehand: return QStringLiteral("✎");
    case T::highlighter: return QStringLiteral("▬");
    case T::text: return QStringLiteral("T");
    case T::stepBadge: return QStringLiteral("①");
    case T::watermark: return QStringLiteral("W");
    case T::mosaic: return QStringLiteral("▦");
    case T::blur: return QStringLiteral("◍");
    case T::magnifier: return QStringLiteral("⊕");
    case T::spotlight: return QStringLiteral("◐");
    case T::crop: return QStringLiteral("✂");
    }
    return {};
}

QIcon swatch(const RGBAColor& c) {
    QPixmap pixmap(18, 18);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(0, 0, 0, 90), 1));
    painter.setBrush(QColor::fromRgbF(static_cast<float>(c.red), static_cast<float>(c.green), static_cast<float>(c.blue)));
    painter.drawEllipse(QRectF(1.5, 1.5, 15, 15));
    return QIcon(pixmap);
}

QToolButton* button(QWidget* parent, const QString& text, const QString& tip, bool checkable) {
    auto* b = new QToolButton(parent);
    b->setText(text);
    b->setToolTip(tip);
    b->setCheckable(checkable);
    b->setAutoRaise(true);
    b->setFocusPolicy(Qt::NoFocus);
    b->setMinimumSize(30, 30);
    return b;
}

QString text(std::string_view key) { return QString::fromStdString(L(key)); }

bool sizesText(T tool) { return tool == T::text || tool == T::stepBadge || tool == T::watermark; }

} // namespace

AnnotationToolbar::AnnotationToolbar(AnnotationEditorController& controller, Options options, QWidget* parent)
    : QWidget(parent), controller_(controller) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(8, 4, 8, 4);
    row->setSpacing(2);
    for (T tool : allAnnotationTools) {
        if (tool == T::crop && !options.crop) continue;
        const std::string name = "annotation.tool." + std::string(toolNameKey(tool));
        const std::string_view key = shortcutKey(tool);
        const QString tip = key.empty() ? text(name) : text(name) + QStringLiteral(" (%1)").arg(QString::fromLatin1(key.data(), static_cast<qsizetype>(key.size())).toUpper());
        QToolButton* b = button(this, glyph(tool), tip, true);
        QObject::connect(b, &QToolButton::clicked, this, [this, tool] { controller_.handleToolTap(tool); });
        tools_[tool] = b;
        row->addWidget(b);
    }
    row->addSpacing(10);
    for (const RGBAColor& c : {RGBAColor::Palette::red, RGBAColor::Palette::yellow, RGBAColor::Palette::green, RGBAColor::Palette::blue,
                               RGBAColor::Palette::white, RGBAColor::Palette::black}) {
        QToolButton* b = button(this, {}, text("annotation.colour"), true);
        b->setIcon(swatch(c));
        QObject::connect(b, &QToolButton::clicked, this, [this, c] { controller_.setStrokeColor(c); });
        colours_.emplace_back(c, b);
        row->addWidget(b);
    }
    row->addSpacing(10);
    size_ = new QSpinBox(this);
    size_->setRange(1, 200);
    size_->setToolTip(text("annotation.size"));
    size_->setFocusPolicy(Qt::ClickFocus);
    QObject::connect(size_, &QSpinBox::valueChanged, this, [this](int value) {
        if (refreshing_) return;
        const T tool = controller_.state().tool;
        if (sizesText(tool)) controller_.setTextFontSize(value);
        else if (tool == T::mosaic || tool == T::blur || tool == T::magnifier) controller_.setEffectIntensity(value);
        else controller_.setLineWidth(value);
    });
    row->addWidget(size_);
    dashed_ = button(this, QStringLiteral("┄"), text("annotation.dashed"), true);
    shadow_ = button(this, QStringLiteral("❏"), text("annotation.shadow"), true);
    outline_ = button(this, QStringLiteral("◌"), text("annotation.outline"), true);
    fill_ = button(this, QStringLiteral("■"), text("annotation.fill"), true);
    QObject::connect(dashed_, &QToolButton::clicked, this, [this](bool on) { controller_.setDashed(on); });
    QObject::connect(shadow_, &QToolButton::clicked, this, [this](bool on) { controller_.setShadow(on); });
    QObject::connect(outline_, &QToolButton::clicked, this, [this](bool on) { controller_.setOutline(on); });
    QObject::connect(fill_, &QToolButton::clicked, this, [this](bool on) { controller_.setFilled(on); });
    for (QToolButton* b : {dashed_, shadow_, outline_, fill_}) row->addWidget(b);
    row->addStretch(1);
    undo_ = button(this, QStringLiteral("↶"), text("annotation.undo"), false);
    redo_ = button(this, QStringLiteral("↷"), text("annotation.redo"), false);
    QToolButton* copy = button(this, text("annotation.copy"), text("annotation.copy.help"), false);
    QToolButton* save = button(this, text("annotation.save"), text("annotation.save.help"), false);
    QObject::connect(undo_, &QToolButton::clicked, this, [this] { controller_.performUndo(); });
    QObject::connect(redo_, &QToolButton::clicked, this, [this] { controller_.performRedo(); });
    QObject::connect(copy, &QToolButton::clicked, this, [this] {
        if (onCopy) onCopy();
    });
    QObject::connect(save, &QToolButton::clicked, this, [this] {
        if (onSave) onSave();
    });
    for (QToolButton* b : {undo_, redo_, copy, save}) row->addWidget(b);
    if (options.dragOut) {
        QToolButton* dragOut = button(this, QStringLiteral("⇱"), text("annotation.dragOut"), false);
        QObject::connect(dragOut, &QToolButton::pressed, this, [this] {
            if (onDragOut) onDragOut();
        });
        row->addWidget(dragOut);
    }
    if (options.record) {
        QToolButton* record = button(this, QStringLiteral("⏺"), text("annotation.record"), false);
        QObject::connect(record, &QToolButton::clicked, this, [this] {
            if (onSwitchToRecording) onSwitchToRecording();
        });
        row->addWidget(record);
    }
    if (options.cancel) {
        QToolButton* cancel = button(this, QStringLiteral("✕"), text("annotation.cancel"), false);
        QObject::connect(cancel, &QToolButton::clicked, this, [this] {
            if (onCancel) onCancel();
        });
        row->addWidget(cancel);
    }
    observer_ = controller_.addObserver([this] { refresh(); });
    refresh();
}

AnnotationToolbar::~AnnotationToolbar() { controller_.removeObserver(observer_); }

void AnnotationToolbar::refresh() {
    refreshing_ = true;
    const AnnotationEditorController::State& state = controller_.state();
    for (const auto& [tool, b] : tools_) b->setChecked(tool == state.tool);
    for (const auto& [c, b] : colours_)
        b->setChecked(std::abs(c.red - state.strokeColor.red) < 0.02 && std::abs(c.green - state.strokeColor.green) < 0.02 &&
                      std::abs(c.blue - state.strokeColor.blue) < 0.02);
    const T tool = state.tool;
    const bool effect = tool == T::mosaic || tool == T::blur || tool == T::magnifier;
    size_->setEnabled(tool != T::select && tool != T::crop && tool != T::spotlight);
    if (sizesText(tool)) size_->setValue(static_cast<int>(std::lround(state.textFontSize)));
    else if (effect) size_->setValue(static_cast<int>(std::lround(controller_.effectIntensity().value)));
    else size_->setValue(static_cast<int>(std::lround(state.lineWidth)));
    dashed_->setChecked(state.dashed);
    shadow_->setChecked(state.shadowEnabled);
    outline_->setChecked(state.outlineEnabled);
    fill_->setChecked(state.fillEnabled);
    fill_->setEnabled(tool == T::rectangle || tool == T::ellipse);
    undo_->setEnabled(state.canUndo);
    redo_->setEnabled(state.canRedo);
    refreshing_ = false;
}

} // namespace tosvar
