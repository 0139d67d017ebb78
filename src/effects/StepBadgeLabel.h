#pragma once

#include "TextMeasuring.h"

#include <string>

namespace tosvar {

// The labels of numbered steps.
namespace StepBadgeLabel {

// "" gives "1"; digits count up ("9" gives "10"); letters count like
// spreadsheet columns ("z" gives "aa", "Az" gives "Ba", "ZZ" gives "AAA");
// anything else repeats.
std::string next(const std::string& label);

// The font size at which `label` fits in a disc of radius `radius`: the
// radius itself, shrunk so the widest line and all lines together stay
// within 1.5 radii. `bold` measures in the badge's bold face.
double fittedFontSize(const TextMeasuring& bold, const std::string& label, double radius);

} // namespace StepBadgeLabel

} // namespace tosvar
