#include "CaptureOutputPolicy.h"

#include <ctime>

namespace tosvar::CaptureOutputPolicy {

Expected<std::filesystem::path> picturesFolder(const BuildTarget& target, FileManager& files) {
    const std::filesystem::path folder =
        files.picturesDirectory().value_or(files.homeDirectory() / "Pictures") / target.captureFolderName();
    if (std::optional<Error> error = files.createDirectories(folder)) return *error;
    return folder;
}

std::string screenshotFilename(Clock::time_point at, const BuildTarget& target, const std::string& extension) {
    const std::time_t seconds = Clock::to_time_t(at);
    std::tm local{};
    localtime_r(&seconds, &local);
    char date[32];
    std::strftime(date, sizeof date, "%Y-%m-%d at %H.%M.%S", &local);
    return target.displayName() + " Screenshot " + date + "." + extension;
}

Expected<std::filesystem::path> writePNGToDisk(const Bytes& png, Clock::time_point at, const BuildTarget& target,
                                               DefaultsStore& defaults, FileManager& files) {
    Expected<Expected<std::filesystem::path>> written = withCaptureFolder(
        defaults, files, [&](const std::filesystem::path& folder) -> Expected<std::filesystem::path> {
            const std::filesystem::path file = folder / screenshotFilename(at, target, "png");
            if (std::optional<Error> error = files.writeAtomically(file, png)) return *error;
            return file;
        });
    if (!written) return written.error();
    return std::move(written).value();
}

} // namespace tosvar::CaptureOutputPolicy
