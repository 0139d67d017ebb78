#pragma once

namespace tosvar {

class AnnotationElementClipboard;
class AnnotationRenderer;
class DefaultsStore;
class MainQueue;
class Pasteboard;
class WorkerPool;

// What every annotation surface (the editor window, a region edited in
// place) works with, shared by the whole application.
struct AnnotationEditorServices {
    const AnnotationRenderer& renderer;
    MainQueue& queue;
    DefaultsStore* defaults; // where tool defaults persist; none keeps them in memory
    AnnotationElementClipboard& clipboard;
    Pasteboard& pasteboard;
    WorkerPool& pool;
};

} // namespace tosvar
