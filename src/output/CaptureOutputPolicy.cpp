#include "CaptureOutputPolicy.h"

#include "LocalTime.h"

namespace tosvar::CaptureOutputPolicy {

Expected<std::filesystem::path> picturesFolder(const BuildTarget& target, FileManager& files) {
    const std::filesystem::path folder =
        files.picturesDirectory().value_or(files.homeDirectory() / "Pictures") / target.captureFolderName();
    if (std::optional<Error> error = files.createDirectories(folder)) return *error;
    return folder;
}

std::string screenshotFilename(Clock::time_point at, const BuildTarget& target, const std::string& extension) {
    return target.displayName() + " Screenshot " + formatLocalTime(at, "%Y-%m-%d at %H.%M.%S") + "." + extension;
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
