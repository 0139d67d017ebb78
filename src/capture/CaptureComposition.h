#pragma once

#include "WindowComposite.h"

#include <climits>
#include <cstdint>
#include <optional>
#include <vector>

namespace tosvar {

// The windows of a multi-window selection, as layers over an optional
// backdrop, kept back to front.
class CaptureComposition {
public:
    struct Layer {
        std::optional<std::uint32_t> id; // the window; none for the backdrop
        ImageBuffer image;
        Rect frame; // points, overlay coordinates
        int z = 0;  // smaller is nearer the front

        // Behind every window.
        static Layer backdrop(ImageBuffer image, Rect frame) { return {std::nullopt, std::move(image), frame, INT_MAX}; }
    };

    const std::vector<Layer>& layers() const { return layers_; }

    bool contains(std::optional<std::uint32_t> id) const;
    // False, changing nothing, when the window is already in.
    bool insert(Layer layer);
    // False with fewer than two layers or an unknown window.
    bool remove(std::uint32_t id);

    bool hasRemovableWindows() const;
    std::vector<Layer> windowLayers() const;
    Rect unionRect() const;
    std::vector<WindowComposite::Layer> renderLayers() const;

private:
    std::vector<Layer> layers_; // back to front
};

} // namespace tosvar
