#pragma once

#include <string>

namespace tosvar {

// The labels of numbered steps.
namespace StepBadgeLabel {

// "" gives "1"; digits count up ("9" gives "10"); letters count like
// spreadsheet columns ("z" gives "aa", "Az" gives "Ba", "ZZ" gives "AAA");
// anything else repeats.
std::string next(const std::string& label);

} // namespace StepBadgeLabel

} // namespace tosvar
