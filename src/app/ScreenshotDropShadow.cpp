#include "ScreenshotDropShadow.h"

#include "DropShadowDecorator.h"

namespace tosvar {

std::optional<Bytes> ScreenshotDropShadow::decoratePNG(const Bytes& png, double scale) const {
    return DropShadowDecorator::decoratePNG(png, scale, DropShadowDecorator::Style::screenshot());
}

} // namespace tosvar
