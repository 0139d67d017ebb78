#pragma once

#include "FileManager.h"

namespace tosvar {

// The real file system. Bookmarks are JSON: {"path": ..., "device": ..., "inode": ...}.
// The Pictures folder comes from XDG_PICTURES_DIR in $XDG_CONFIG_HOME/user-dirs.dirs.
class LocalFileManager final : public FileManager {
public:
    std::optional<Error> createDirectories(const std::filesystem::path& folder) override;
    std::optional<Error> writeAtomically(const std::filesystem::path& file,
                                         std::span<const std::uint8_t> bytes) override;
    bool exists(const std::filesystem::path& path) const override;
    std::optional<std::uint64_t> fileSize(const std::filesystem::path& file) const override;
    Expected<std::vector<FileInfo>> listFiles(const std::filesystem::path& folder) const override;
    std::optional<std::filesystem::path> picturesDirectory() const override;
    std::filesystem::path homeDirectory() const override;
    Expected<Bytes> makeFolderBookmark(const std::filesystem::path& folder) override;
    Expected<ResolvedFolder> resolveFolderBookmark(const Bytes& bookmark) const override;
};

// The value of one variable of a user-dirs.dirs file ("$HOME/Pictures" style),
// expanded against `home`; none when the file does not set it or sets it to $HOME.
std::optional<std::filesystem::path> userDirectoryFromConfig(std::string_view fileText, std::string_view variable,
                                                             const std::filesystem::path& home);

} // namespace tosvar
