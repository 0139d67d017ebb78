#include "CaptureSaveFolder.h"

#include "BuildTarget.h"
#include "Log.h"

namespace tosvar {

const CaptureSaveFolder& CaptureSaveFolder::captures() {
    static const CaptureSaveFolder folder{
        "capture", "capture.saveFolderBookmark", "capture.saveFolder", [](const FileManager& files) {
            const std::filesystem::path pictures =
                files.picturesDirectory().value_or(files.homeDirectory() / "Pictures");
            return pictures / BuildTarget::current().captureFolderName();
        }};
    return folder;
}

void CaptureSaveFolder::migrateLegacyPathIfNeeded(DefaultsStore& defaults, FileManager& files) const {
    const std::optional<std::string> legacy = defaults.string(legacyPathKey);
    if (!legacy || legacy->empty()) return;
    if (defaults.bytes(bookmarkKey)) {
        defaults.remove(legacyPathKey);
        return;
    }
    Expected<Bytes> bookmark = files.makeFolderBookmark(*legacy);
    if (!bookmark) {
        logLine("could not migrate " + legacyPathKey + " to a bookmark");
        return;
    }
    defaults.set(bookmarkKey, std::move(bookmark).value());
    defaults.remove(legacyPathKey);
}

bool CaptureSaveFolder::hasCustomFolder(DefaultsStore& defaults, FileManager& files) const {
    migrateLegacyPathIfNeeded(defaults, files);
    return defaults.bytes(bookmarkKey).has_value();
}

std::filesystem::path CaptureSaveFolder::configuredURL(DefaultsStore& defaults, FileManager& files) const {
    migrateLegacyPathIfNeeded(defaults, files);
    if (const auto bookmark = defaults.bytes(bookmarkKey)) {
        if (Expected<ResolvedFolder> resolved = files.resolveFolderBookmark(*bookmark)) return resolved->path;
    }
    return defaultFolder(files);
}

bool CaptureSaveFolder::setFolder(const std::filesystem::path& folder, DefaultsStore& defaults,
                                  FileManager& files) const {
    Expected<Bytes> bookmark = files.makeFolderBookmark(folder);
    if (!bookmark) {
        logLine("could not bookmark " + kind + " folder " + folder.string() + "; keeping previous choice");
        return false;
    }
    defaults.set(bookmarkKey, std::move(bookmark).value());
    defaults.remove(legacyPathKey);
    return true;
}

void CaptureSaveFolder::reset(DefaultsStore& defaults) const {
    defaults.remove(bookmarkKey);
    defaults.remove(legacyPathKey);
}

Expected<CaptureSaveFolder::Access> CaptureSaveFolder::beginAccess(DefaultsStore& defaults, FileManager& files) const {
    migrateLegacyPathIfNeeded(defaults, files);
    if (const auto bookmark = defaults.bytes(bookmarkKey)) {
        Expected<ResolvedFolder> resolved = files.resolveFolderBookmark(*bookmark);
        std::optional<Error> problem = resolved ? files.createDirectories(resolved->path) : resolved.error();
        if (!problem) {
            if (resolved->stale) {
                // A refresh that fails leaves the old bookmark; the save goes ahead.
                if (Expected<Bytes> fresh = files.makeFolderBookmark(resolved->path))
                    defaults.set(bookmarkKey, std::move(fresh).value());
            }
            return Access{resolved->path, [] {}};
        }
        // The stored choice stays: it comes back by itself once the folder does.
        const std::string path = resolved ? resolved->path.string() : "bookmarked folder";
        logLine("configured folder unusable (" + path + "): " + problem->message + "; falling back to the default");
    }
    const std::filesystem::path fallback = defaultFolder(files);
    if (std::optional<Error> error = files.createDirectories(fallback)) return *error;
    return Access{fallback, nullptr};
}

} // namespace tosvar
