#include "AnnotationEditorWindow.h"

#include "AnnotationWindowSizing.h"
#include "AtomicFile.h"
#include "LocalizationManager.h"
#include "Log.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

namespace tosvar {

namespace {

QString text(std::string_view key) { return QString::fromStdString(L(key)); }

} // namespace

AnnotationEditorWindow::AnnotationEditorWindow(ImageBuffer image, double scale, const QString& title, Services services)
    : services_(services) {
    const Size pixels{static_cast<double>(image.width()), static_cast<double>(image.height())};
    controller_ = std::make_unique<AnnotationEditorController>(AnnotationDocument(std::move(image), scale), services.renderer, services.queue,
                                                               services.defaults, AnnotationEditorController::Configuration{});
    saved_ = controller_->document().snapshot();
    setWindowTitle(title);
    setAttribute(Qt::WA_DeleteOnClose);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    toolbar_ = new AnnotationToolbar(*controller_, this);
    canvas_ = new AnnotationCanvasView(*controller_, services.clipboard, services.pasteboard, this);
    column->addWidget(toolbar_);
    column->addWidget(canvas_, 1);
    toolbar_->onCopy = [this] { copy(); };
    toolbar_->onSave = [this] { save(); };
    toolbar_->onDragOut = [this] { dragOut(); };
    canvas_->onConfirm = [this] { copy(); };

    const Size content = AnnotationWindowSizing::initialContentSize(pixels, scale);
    resize(std::max(static_cast<int>(content.width), toolbar_->sizeHint().width()),
           static_cast<int>(content.height) + toolbar_->sizeHint().height());
    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        const QRect area = screen->availableGeometry();
        move(area.center() - rect().center());
    }
    canvas_->setFocus();
}

AnnotationEditorWindow::~AnnotationEditorWindow() { *alive_ = false; }

bool AnnotationEditorWindow::hasUnsavedChanges() const {
    return controller_->document().snapshot() != saved_ || canvas_->isEditingText();
}

void AnnotationEditorWindow::flatten(std::function<void(Bytes)> deliver) {
    canvas_->commitTextEditing();
    const std::weak_ptr<bool> alive = alive_;
    controller_->flattenPNGInBackground(services_.pool, [alive, deliver = std::move(deliver)](std::optional<Bytes> png) {
        if (!png || alive.expired()) return;
        deliver(std::move(*png));
    });
}

void AnnotationEditorWindow::save() {
    const AnnotationSnapshot state = controller_->document().snapshot();
    flatten([this, state](Bytes png) {
        saved_ = state;
        if (onSave) onSave(std::move(png));
    });
}

void AnnotationEditorWindow::copy() {
    flatten([this](Bytes png) {
        if (onCopy) onCopy(std::move(png));
    });
}

std::optional<std::filesystem::path> AnnotationEditorWindow::writeDragFile(const Bytes& png, const std::string& name) {
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / ("tosvar-drag-" + Uuid::random().string());
    const std::filesystem::path file = folder / name;
    if (std::optional<Error> error = AtomicFile::write(file, png)) {
        logLine("[Editor] drag out: " + error->message);
        return std::nullopt;
    }
    return file;
}

void AnnotationEditorWindow::dragOut() {
    canvas_->commitTextEditing();
    const std::optional<Bytes> png = controller_->flattenPNG();
    if (!png) return;
    const std::optional<std::filesystem::path> file = writeDragFile(*png, "Annotated Image.png");
    if (!file) return;
    drag_.begin({*file}, canvas_->grab().toImage(), false);
}

bool AnnotationEditorWindow::confirmDiscard() {
    if (!hasUnsavedChanges()) return true;
    QMessageBox box(QMessageBox::Question, text("annotation.discard.title"), text("annotation.discard.message"), QMessageBox::NoButton, this);
    QPushButton* discard = box.addButton(text("annotation.discard.discard"), QMessageBox::DestructiveRole);
    box.addButton(text("annotation.discard.keepEditing"), QMessageBox::RejectRole);
    box.exec();
    return box.clickedButton() == static_cast<QAbstractButton*>(discard);
}

void AnnotationEditorWindow::keyPressEvent(QKeyEvent* event) {
    const bool command = event->modifiers() & Qt::ControlModifier;
    if (command && event->key() == Qt::Key_S) return save();
    if (command && event->key() == Qt::Key_C) return copy();
    if (!command && event->key() == Qt::Key_Escape) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

void AnnotationEditorWindow::closeEvent(QCloseEvent* event) {
    if (!closing_ && !confirmDiscard()) {
        event->ignore();
        return;
    }
    closing_ = true;
    if (onClosed) onClosed();
    event->accept();
}

} // namespace tosvar
