#pragma once

#include "DefaultsStore.h"
#include "Expected.h"
#include "FileManager.h"

#include <filesystem>
#include <functional>
#include <string>

namespace tosvar {

// A folder the user may choose. The choice is stored as a bookmark (the
// folder's path and identity), never as a bare path; a path stored by older
// versions is migrated to a bookmark on first use. When the chosen folder
// cannot be used (an unplugged drive) output falls back to the default folder
// without forgetting the choice, which takes effect again once it is back.
struct CaptureSaveFolder {
    std::string kind; // named in log lines
    std::string bookmarkKey;
    std::string legacyPathKey;
    std::function<std::filesystem::path(const FileManager&)> defaultFolder;

    // The folder for captures: "capture.saveFolderBookmark", "capture.saveFolder",
    // default <Pictures>/Tosvar.
    static const CaptureSaveFolder& captures();

    // A folder in use; `stop` (when set) ends the use.
    struct Access {
        std::filesystem::path url;
        std::function<void()> stop;
    };

    bool hasCustomFolder(DefaultsStore& defaults, FileManager& files) const;
    // The folder to show in settings: the resolved choice, else the default. Creates nothing.
    std::filesystem::path configuredURL(DefaultsStore& defaults, FileManager& files) const;
    bool setFolder(const std::filesystem::path& folder, DefaultsStore& defaults, FileManager& files) const;
    void reset(DefaultsStore& defaults) const;
    // The chosen folder if usable, else the default one, created as needed.
    Expected<Access> beginAccess(DefaultsStore& defaults, FileManager& files) const;

    template <typename Body>
    auto withFolder(DefaultsStore& defaults, FileManager& files, Body&& body) const
        -> Expected<decltype(body(std::filesystem::path()))> {
        Expected<Access> access = beginAccess(defaults, files);
        if (!access) return access.error();
        auto result = body(access->url);
        if (access->stop) access->stop();
        return result;
    }

private:
    void migrateLegacyPathIfNeeded(DefaultsStore& defaults, FileManager& files) const;
};

} // namespace tosvar
