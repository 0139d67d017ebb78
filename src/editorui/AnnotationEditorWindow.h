#pragma once

#include "AnnotationCanvasView.h"
#include "AnnotationEditorServices.h"
#include "AnnotationEditorController.h"
#include "AnnotationToolbar.h"
#include "CaptureFileDragCoordinator.h"

#include <QWidget>

#include <filesystem>
#include <functional>
#include <memory>

namespace tosvar {

class AnnotationElementClipboard;
class Pasteboard;

// A stand-alone editing session over one image: toolbar above, canvas below,
// sized to the image within the screen. Ctrl+S hands the flattened image to
// `onSave`, Ctrl+C (with nothing selected) to `onCopy`; Escape or closing
// asks before unsaved changes are thrown away. Main thread only.
class AnnotationEditorWindow final : public QWidget {
public:
    using Services = AnnotationEditorServices;

    AnnotationEditorWindow(ImageBuffer image, double scale, const QString& title, Services services);
    ~AnnotationEditorWindow() override;

    std::function<void(Bytes png)> onSave;
    std::function<void(Bytes png)> onCopy;
    // The window closed, saved or not.
    std::function<void()> onClosed;

    AnnotationEditorController& controller() { return *controller_; }
    AnnotationCanvasView& canvas() { return *canvas_; }
    AnnotationToolbar& toolbar() { return *toolbar_; }
    bool hasUnsavedChanges() const;
    void save();
    void copy();
    // Drags the flattened image out as a file, for file managers, chats and editors.
    void dragOut();
    // Where a dragged image is written: a new folder of its own in the temporary folder.
    static std::optional<std::filesystem::path> writeDragFile(const Bytes& png, const std::string& name);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    // Flattens off the main thread and hands the PNG to `deliver`.
    void flatten(std::function<void(Bytes)> deliver);
    bool confirmDiscard();

    Services services_;
    CaptureFileDragCoordinator drag_{this};
    std::unique_ptr<AnnotationEditorController> controller_;
    AnnotationToolbar* toolbar_ = nullptr;
    AnnotationCanvasView* canvas_ = nullptr;
    AnnotationSnapshot saved_;
    bool closing_ = false;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

} // namespace tosvar
