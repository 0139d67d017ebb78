#include "CaptureComposition.h"

#include <algorithm>

namespace tosvar {

bool CaptureComposition::contains(std::optional<std::uint32_t> id) const {
    if (!id) return false;
    return std::any_of(layers_.begin(), layers_.end(), [&](const Layer& layer) { return layer.id == id; });
}

bool CaptureComposition::insert(Layer layer) {
    if (contains(layer.id)) return false;
    layers_.push_back(std::move(layer));
    std::stable_sort(layers_.begin(), layers_.end(), [](const Layer& a, const Layer& b) { return a.z > b.z; });
    return true;
}

bool CaptureComposition::remove(std::uint32_t id) {
    if (layers_.size() < 2 || !contains(id)) return false;
    std::erase_if(layers_, [&](const Layer& layer) { return layer.id == id; });
    return true;
}

bool CaptureComposition::hasRemovableWindows() const {
    return layers_.size() >= 2 && std::any_of(layers_.begin(), layers_.end(), [](const Layer& l) { return l.id.has_value(); });
}

std::vector<CaptureComposition::Layer> CaptureComposition::windowLayers() const {
    std::vector<Layer> windows;
    std::copy_if(layers_.begin(), layers_.end(), std::back_inserter(windows), [](const Layer& l) { return l.id.has_value(); });
    return windows;
}

Rect CaptureComposition::unionRect() const {
    std::vector<Rect> frames;
    for (const Layer& layer : layers_) frames.push_back(layer.frame);
    return WindowComposite::unionOf(frames);
}

std::vector<WindowComposite::Layer> CaptureComposition::renderLayers() const {
    std::vector<WindowComposite::Layer> rendered;
    rendered.reserve(layers_.size());
    for (const Layer& layer : layers_) rendered.push_back({layer.image, layer.frame});
    return rendered;
}

} // namespace tosvar
