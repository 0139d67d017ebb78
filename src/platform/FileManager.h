#pragma once

#include "DefaultsStore.h"
#include "Expected.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <vector>

namespace tosvar {

// A folder found again from a stored bookmark. `stale` says the bookmark
// should be made anew (the folder at that path is no longer the one it named).
struct ResolvedFolder {
    std::filesystem::path path;
    bool stale = false;
};

// What capture output asks of the file system. The product uses
// LocalFileManager; tests wrap it to make single operations fail.
class FileManager {
public:
    virtual ~FileManager() = default;

    virtual std::optional<Error> createDirectories(const std::filesystem::path& folder) = 0;
    // All or nothing: readers see the old file or the complete new one.
    virtual std::optional<Error> writeAtomically(const std::filesystem::path& file,
                                                 std::span<const std::uint8_t> bytes) = 0;
    virtual bool exists(const std::filesystem::path& path) const = 0;
    virtual std::optional<std::uint64_t> fileSize(const std::filesystem::path& file) const = 0;
    struct FileInfo {
        std::filesystem::path path;
        std::filesystem::file_time_type modified;
        std::uint64_t size = 0;
    };
    // The regular files directly inside `folder`, hidden ones left out;
    // an error when the folder cannot be read.
    virtual Expected<std::vector<FileInfo>> listFiles(const std::filesystem::path& folder) const = 0;
    // The user's Pictures folder, if the desktop names one.
    virtual std::optional<std::filesystem::path> picturesDirectory() const = 0;
    virtual std::filesystem::path homeDirectory() const = 0;

    // A stored reference to an existing folder: its path plus the identity of
    // the folder there (device and inode).
    virtual Expected<Bytes> makeFolderBookmark(const std::filesystem::path& folder) = 0;
    // Fails when no folder stands at the stored path, so a folder on an
    // unplugged drive is never recreated elsewhere under its name.
    virtual Expected<ResolvedFolder> resolveFolderBookmark(const Bytes& bookmark) const = 0;
};

} // namespace tosvar
