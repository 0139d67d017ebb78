#pragma once

#include "AnnotationEditorController.h"

#include <QWidget>

#include <functional>
#include <map>

class QAbstractButton;
class QSpinBox;
class QToolButton;

namespace tosvar {

// The row of controls above the canvas: every tool with its key, the colours,
// the width (or text size) of the current tool, its switches, and undo,
// redo, copy and save. Laid out once; each change of the controller's state
// updates which tool is down and what the switches show.
class AnnotationToolbar final : public QWidget {
public:
    // Which of the optional controls a surface shows.
    struct Options {
        bool crop = true;    // the crop tool; a region is cropped by its own handles
        bool dragOut = true; // the handle that drags the image out as a file
        bool cancel = false; // a button that ends the surface without output
        bool record = false; // a button that records the region instead (`onSwitchToRecording`)
    };

    AnnotationToolbar(AnnotationEditorController& controller, QWidget* parent = nullptr) : AnnotationToolbar(controller, {}, parent) {}
    AnnotationToolbar(AnnotationEditorController& controller, Options options, QWidget* parent = nullptr);
    ~AnnotationToolbar() override;

    std::function<void()> onCopy;
    std::function<void()> onSave;
    // Pressed on the drag handle: the window starts dragging the image out.
    std::function<void()> onDragOut;
    std::function<void()> onCancel;
    // Set before the toolbar is shown: a button that records the surface's region instead.
    std::function<void()> onSwitchToRecording;

    QToolButton* toolButton(AnnotationTool tool) const { return tools_.at(tool); }

private:
    void refresh();

    AnnotationEditorController& controller_;
    int observer_ = 0;
    bool refreshing_ = false;
    std::map<AnnotationTool, QToolButton*> tools_;
    std::vector<std::pair<RGBAColor, QToolButton*>> colours_;
    QSpinBox* size_ = nullptr;
    QToolButton* dashed_ = nullptr;
    QToolButton* shadow_ = nullptr;
    QToolButton* outline_ = nullptr;
    QToolButton* fill_ = nullptr;
    QToolButton* undo_ = nullptr;
    QToolButton* redo_ = nullptr;
};

} // namespace tosvar
