#pragma once

#include <functional>
#include <string_view>

namespace tosvar {

// The one place unstructured log lines go. Until the launch diagnostics take
// over the sink, lines go to standard error with the product's prefix.
// Callable from any thread; the sink must be too.
using LogSink = std::function<void(std::string_view line)>;

void logLine(std::string_view line);
void setLogSink(LogSink sink);

} // namespace tosvar
