#include "InterruptedRecordings.h"

#include "CaptureSaveFolder.h"
#include "Log.h"
#include "RecordingAudioMixer.h"
#include "RecordingDestination.h"

#include <algorithm>
#include <chrono>

namespace tosvar::InterruptedRecordings {

std::filesystem::path folder(const std::filesystem::path& stateDirectory) { return stateDirectory / "Recordings in progress"; }

std::vector<std::filesystem::path> find(const std::filesystem::path& directory) {
    std::vector<std::pair<std::filesystem::file_time_type, std::filesystem::path>> found;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(directory, error)) {
        std::error_code ignored;
        if (entry.path().extension() != ".mov" || !entry.is_regular_file(ignored) || entry.file_size(ignored) == 0) continue;
        found.emplace_back(entry.last_write_time(ignored), entry.path());
    }
    std::sort(found.begin(), found.end());
    std::vector<std::filesystem::path> movies;
    for (auto& [time, path] : found) movies.push_back(std::move(path));
    return movies;
}

Expected<std::filesystem::path> recover(const std::filesystem::path& movie, MovieFileProcessing& processing, DefaultsStore& defaults,
                                        FileManager& files) {
    Expected<CaptureSaveFolder::Access> access = CaptureSaveFolder::captures().beginAccess(defaults, files);
    if (!access) return access.error();
    std::error_code error;
    const auto written = std::filesystem::last_write_time(movie, error);
    // libstdc++ 12 has no clock_cast: the file clock's distance from now, taken on the system clock.
    const auto when = error ? std::chrono::system_clock::now()
                            : std::chrono::system_clock::now() + std::chrono::duration_cast<std::chrono::system_clock::duration>(
                                                                      written - std::filesystem::file_time_type::clock::now());
    const std::filesystem::path destination = access->url / RecordingDestination::fileName(when, "mp4", RecordingTimeZone::current());
    const std::optional<Error> failed = MovieRemuxer::remuxToMP4(processing, movie, destination);
    if (access->stop) access->stop();
    if (failed) return Error{"cannot save the interrupted recording " + movie.string() + ": " + failed->message};
    std::filesystem::remove(movie, error);
    return destination;
}

std::vector<std::filesystem::path> offer(const std::vector<std::filesystem::path>& movies, AlertPresenting& alerts,
                                         MovieFileProcessing& processing, DefaultsStore& defaults, FileManager& files) {
    if (movies.empty()) return {};
    AlertRequest request;
    request.style = AlertStyle::informational;
    request.message = {"record.recovered.title", {}};
    request.informativeText = {"record.recovered.message", {std::to_string(movies.size())}};
    request.buttons = {{"record.recovered.keep", {}}, {"record.recovered.discard", {}}};
    const bool keep = alerts.run(request, nullptr).buttonIndex == 0;
    std::vector<std::filesystem::path> kept;
    for (const std::filesystem::path& movie : movies) {
        if (!keep) {
            std::error_code ignored;
            std::filesystem::remove(movie, ignored);
            continue;
        }
        Expected<std::filesystem::path> saved = recover(movie, processing, defaults, files);
        if (saved) kept.push_back(*saved);
        else logLine(saved.error().message);
    }
    logLine("interrupted recordings: " + std::to_string(movies.size()) + " found, " + std::to_string(kept.size()) + " kept");
    return kept;
}

} // namespace tosvar::InterruptedRecordings
