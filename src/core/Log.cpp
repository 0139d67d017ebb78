#include "Log.h"

#include <cstdio>
#include <mutex>
#include <string>

namespace tosvar {

namespace {

std::mutex& sinkMutex() {
    static std::mutex mutex;
    return mutex;
}

LogSink& currentSink() {
    static LogSink sink;
    return sink;
}

} // namespace

void logLine(std::string_view line) {
    std::lock_guard lock(sinkMutex());
    if (const LogSink& sink = currentSink()) {
        sink(line);
        return;
    }
    std::string text = "[Vemla] ";
    text.append(line);
    text.push_back('\n');
    std::fwrite(text.data(), 1, text.size(), stderr);
}

void setLogSink(LogSink sink) {
    std::lock_guard lock(sinkMutex());
    currentSink() = std::move(sink);
}

} // namespace tosvar
