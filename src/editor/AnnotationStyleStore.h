#pragma once

#include "AnnotationTool.h"
#include "DefaultsStore.h"
#include "Expected.h"
#include "RGBAColor.h"
#include "Size.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace tosvar {

// The editor's remembered tool settings, kept as one JSON text in the user's
// defaults so that every editor starts with the colour, widths and toggles the
// user last chose. A tool absent from a per-tool map, or a map left out
// altogether, takes the tool's own default.
struct AnnotationStyleStore {
    static constexpr int currentVersion = 4;
    static constexpr std::string_view defaultsKey = "annotationStyleDefaults";

    RGBAColor strokeColor;
    std::map<AnnotationTool, double> toolWidths;
    std::optional<std::map<AnnotationTool, bool>> toolDashed;
    std::optional<std::map<AnnotationTool, bool>> toolShadow;
    std::optional<std::map<AnnotationTool, bool>> toolOutline;
    std::optional<std::map<AnnotationTool, bool>> toolFill;
    std::optional<std::map<AnnotationTool, double>> toolOutlineWidth;
    std::optional<std::map<AnnotationTool, double>> toolShadowRadius;
    std::optional<std::map<AnnotationTool, Size>> toolShadowOffset;
    std::optional<std::map<AnnotationTool, double>> toolDashLength;
    double textFontSize = 0;
    double mosaicBlockSize = 0;
    double blurRadius = 0;
    std::optional<double> magnifierZoom;
    std::optional<double> watermarkAngle;
    std::optional<double> watermarkOpacity;
    std::optional<double> watermarkSpacing;
    std::optional<double> spotlightVeilOpacity;
    std::optional<std::map<AnnotationTool, double>> toolOpacity;
    std::optional<std::map<AnnotationTool, double>> toolFillOpacity;
    std::optional<int> version;

    // What a user who never changed anything gets: red, the default widths of
    // the drawing tools, and the default sizes and strengths of the effects.
    static AnnotationStyleStore defaults();

    // Compact JSON with the keys named as the fields and tools as their raw
    // names; absent fields are left out. Fails only on a number that is not
    // finite, which JSON cannot hold.
    Expected<std::string> encode() const;
    // Strict about what it needs: a missing required key ("strokeColor",
    // "toolWidths", "textFontSize", "mosaicBlockSize", "blurRadius") or any
    // key of the wrong type fails the whole record. Null counts as absent for
    // the optional keys. Map entries whose key names no tool are dropped.
    static Expected<AnnotationStyleStore> decode(std::string_view text);

    // The stored record, or `defaults()` when there is none or it does not
    // decode. Tools of the default width table missing from the stored widths
    // get their default width; nothing else is filled in.
    static AnnotationStyleStore load(const DefaultsStore& store);
    // Replaces the stored record. A record that cannot be encoded leaves the
    // stored one as it is.
    void save(DefaultsStore& store) const;

    friend bool operator==(const AnnotationStyleStore&, const AnnotationStyleStore&) = default;
};

} // namespace tosvar
