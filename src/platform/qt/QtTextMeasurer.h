#pragma once

#include "Expected.h"
#include "TextMeasuring.h"

#include <QPainterPath>
#include <QRawFont>

#include <string>

namespace tosvar {

// Measures annotation text with Qt's shaper in a face read straight from its
// font file, so the numbers do not depend on the desktop's font setup.
// Unhinted metrics scale linearly with size, so the face is loaded once at a
// large reference size and every answer is scaled from it. Characters the face
// lacks measure as its missing-glyph box; nothing falls back to other fonts.
// Needs a QGuiApplication; an instance belongs to the thread that uses it.
class QtTextMeasurer final : public TextMeasuring {
public:
    // Liberation Sans, whose advances match Helvetica's, from Debian's fonts-liberation2.
    static constexpr const char* defaultFontFile = "/usr/share/fonts/truetype/liberation2/LiberationSans-Regular.ttf";
    // Its bold face, standing for Helvetica-Bold.
    static constexpr const char* boldFontFile = "/usr/share/fonts/truetype/liberation2/LiberationSans-Bold.ttf";

    static Expected<QtTextMeasurer> load(const std::string& fontFile = defaultFontFile);
    // A measurer without a face: every size measures 0 and nothing is outlined.
    static QtTextMeasurer empty() { return QtTextMeasurer(QRawFont()); }

    FontLineMetrics metrics(double fontSize) const override;
    double lineWidth(std::string_view line, double fontSize) const override;
    // The glyph outlines of one line at `fontSize`, the baseline's start at
    // the origin, y down; laid out exactly as `lineWidth` measures it.
    QPainterPath outline(std::string_view line, double fontSize) const;

private:
    explicit QtTextMeasurer(QRawFont font) : font_(std::move(font)) {}

    QRawFont font_;
};

} // namespace tosvar
