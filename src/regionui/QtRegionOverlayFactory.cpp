#include "QtRegionOverlayFactory.h"

#include "ElementChain.h"
#include "LastRegion.h"
#include "ScreenCoordinates.h"

namespace tosvar {

namespace {

constexpr const char* hintHiddenKey = "screenshot.hintPanelHidden";

} // namespace

std::unique_ptr<RegionOverlay> QtRegionOverlayFactory::make(const ScreenInfo& screen, const std::optional<CapturedDisplay>& frozen,
                                                            ScreenshotOverlayMode mode, RegionOverlayCallbacks callbacks) {
    const Rect main = services_.mainGlobalFrame();
    const Rect global = ScreenCoordinates::toGlobal(screen.frame, main);
    WindowPicking::ListingContext context{screen.frame, main.height(), {global}, services_.ownPID, {}};
    std::vector<PickableWindow> windows;
    for (PickableWindow window : WindowPicking::onScreenWindowRects(services_.windows.onScreenWindows(), context)) {
        // From screen points (y up) to this overlay's view (y down from its top).
        auto toView = [&](const Rect& r) { return Rect(r.minX() - screen.frame.minX(), screen.frame.maxY() - r.maxY(), r.width(), r.height()); };
        window.rect = toView(window.rect);
        window.fullRect = toView(window.fullRect);
        windows.push_back(window);
    }
    auto overlay = std::make_unique<QtRegionOverlay>(screen, global, frozen, mode, std::move(callbacks), std::move(windows));
    if (services_.defaults) {
        DefaultsStore& store = *services_.defaults;
        if (const std::optional<std::string> last = store.string(LastRegion::defaultsKey))
            overlay->selection().setLastRegion(LastRegion::inView(*last, screen.frame));
        overlay->selection().setLoupeZoom(RegionSelectionModel::loupeZoomFromStored(store.real("screenshot.loupeZoom")));
        overlay->onRegionCommitted = [&store](const Rect& rect) { store.set(LastRegion::defaultsKey, LastRegion::text(rect)); };
        overlay->onLoupeZoomChanged = [&store](int zoom) { store.set("screenshot.loupeZoom", static_cast<double>(zoom)); };
        overlay->hintHidden = [&store] { return store.boolean(hintHiddenKey).value_or(false); };
        overlay->onHintHiddenChanged = [&store](bool hidden) { store.set(hintHiddenKey, hidden); };
    }
    overlay->onCopyText = services_.copyText;
    if (services_.elements && services_.elements->isAvailable()) {
        overlay->elementsAt = [elements = services_.elements, global, bounds = Rect(0, 0, global.width(), global.height()),
                               picked = overlay.get()](Point at) -> QtRegionOverlay::ElementLookup {
            const PickableWindow* window = picked->model().windowAt(at);
            if (!window) return {};
            const std::vector<DetectedElement> chain =
                ElementDetection::elementChain(*elements, {at.x + global.minX(), at.y + global.minY()}, window->pid);
            // The levels big enough to show, each with its element.
            std::vector<Rect> rects;
            std::vector<AccessibleElements::Handle> handles;
            for (const DetectedElement& element : chain)
                for (const Rect& rect : ElementDetection::viewRects({element.frame}, [&](const Rect& r) { return r.offsetBy(-global.minX(), -global.minY()); }, bounds)) {
                    rects.push_back(rect);
                    handles.push_back(element.element);
                }
            const std::optional<std::string> rootRole = chain.empty() ? std::nullopt : elements->role(chain.back().element);
            const bool coarse = ElementDetection::isCoarse(rects, rootRole, window->rect);
            auto textOf = [elements, handles](std::size_t level) -> std::optional<std::string> {
                return level < handles.size() ? elements->text(handles[level]) : std::nullopt;
            };
            return {std::move(rects), coarse, window->pid, std::move(textOf)};
        };
        if (services_.runDetached)
            overlay->wakeProgram = [elements = services_.elements, run = services_.runDetached](std::int64_t pid) {
                run([elements, pid] { elements->enableAccessibility(pid); });
            };
    }
    overlay->snapToElements = services_.snapToElements && services_.snapToElements();
    overlay->captureWindow = services_.captureWindow;
    overlay->editorServices = services_.editing ? &*services_.editing : nullptr;
    overlay->settings = services_.defaults;
    overlay->readText = services_.readText;
    overlay->runDetached = services_.runDetached;
    return overlay;
}

} // namespace tosvar
