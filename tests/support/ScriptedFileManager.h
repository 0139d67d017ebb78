#pragma once

#include "LocalFileManager.h"

#include <functional>
#include <string>

namespace tosvar {

// The real file system, with single operations made to fail on demand (a
// full disk, a bookmark that cannot be made) and a hook that sees each write.
class ScriptedFileManager final : public FileManager {
public:
    std::optional<Error> writeError;    // every write fails with this
    std::optional<Error> bookmarkError; // making a bookmark fails with this
    std::optional<std::filesystem::path> pictures;
    std::function<void(const std::filesystem::path&)> onWrite;

    std::optional<Error> createDirectories(const std::filesystem::path& folder) override {
        return real.createDirectories(folder);
    }
    std::optional<Error> writeAtomically(const std::filesystem::path& file,
                                         std::span<const std::uint8_t> bytes) override {
        if (onWrite) onWrite(file);
        if (writeError) return writeError;
        return real.writeAtomically(file, bytes);
    }
    bool exists(const std::filesystem::path& path) const override { return real.exists(path); }
    std::optional<std::uint64_t> fileSize(const std::filesystem::path& file) const override {
        return real.fileSize(file);
    }
    Expected<std::vector<FileInfo>> listFiles(const std::filesystem::path& folder) const override {
        return real.listFiles(folder);
    }
    std::optional<std::filesystem::path> picturesDirectory() const override {
        return pictures ? pictures : real.picturesDirectory();
    }
    std::filesystem::path homeDirectory() const override { return real.homeDirectory(); }
    Expected<Bytes> makeFolderBookmark(const std::filesystem::path& folder) override {
        if (bookmarkError) return *bookmarkError;
        return real.makeFolderBookmark(folder);
    }
    Expected<ResolvedFolder> resolveFolderBookmark(const Bytes& bookmark) const override {
        return real.resolveFolderBookmark(bookmark);
    }

private:
    LocalFileManager real;
};

} // namespace tosvar
