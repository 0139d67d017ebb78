#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tosvar {

// One argument of a localised text.
using FormatArgument = std::variant<std::string, std::int64_t, double>;

// Fills the placeholders of a localised text: %@ (any value as text), %d and
// %ld (integers), %.Nf (fixed decimals), %% (a percent sign), and the
// positional forms %1$@, %2$d, ... It can not misbehave: a missing argument
// gives nothing, a mistyped one is shown as well as it can be (a text for %d
// stands as it is, a number for %@ is written out), and an unknown
// placeholder stays in the text as written.
std::string formatText(std::string_view format, const std::vector<FormatArgument>& arguments);

} // namespace tosvar
