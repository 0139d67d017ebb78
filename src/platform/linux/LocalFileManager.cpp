#include "LocalFileManager.h"

#include "AtomicFile.h"
#include "FileContents.h"
#include "XdgPaths.h"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <cstring>
#include <sys/stat.h>

namespace tosvar {

namespace {

std::string quoted(const std::filesystem::path& p) { return "\"" + p.string() + "\""; }

} // namespace

std::optional<Error> LocalFileManager::createDirectories(const std::filesystem::path& folder) {
    std::error_code ec;
    std::filesystem::create_directories(folder, ec);
    if (ec) return Error{"cannot create folder " + quoted(folder) + ": " + ec.message()};
    if (!std::filesystem::is_directory(folder, ec)) return Error{quoted(folder) + " is not a folder"};
    return std::nullopt;
}

std::optional<Error> LocalFileManager::writeAtomically(const std::filesystem::path& file,
                                                       std::span<const std::uint8_t> bytes) {
    return AtomicFile::write(file, bytes);
}

bool LocalFileManager::exists(const std::filesystem::path& path) const {
    std::error_code ec;
    return std::filesystem::exists(path, ec);
}

std::optional<std::uint64_t> LocalFileManager::fileSize(const std::filesystem::path& file) const {
    std::error_code ec;
    const auto size = std::filesystem::file_size(file, ec);
    if (ec) return std::nullopt;
    return size;
}

Expected<std::vector<FileManager::FileInfo>> LocalFileManager::listFiles(const std::filesystem::path& folder) const {
    std::error_code ec;
    std::filesystem::directory_iterator it(folder, ec);
    if (ec) return Error{"cannot list " + quoted(folder) + ": " + ec.message()};
    std::vector<FileInfo> files;
    for (; it != std::filesystem::directory_iterator(); it.increment(ec)) {
        if (ec) return Error{"cannot list " + quoted(folder) + ": " + ec.message()};
        const auto& entry = *it;
        if (entry.path().filename().string().starts_with(".")) continue;
        std::error_code entryError;
        if (!entry.is_regular_file(entryError)) continue;
        FileInfo info{entry.path(), entry.last_write_time(entryError), 0};
        if (entryError) info.modified = std::filesystem::file_time_type::min();
        info.size = entry.file_size(entryError);
        if (entryError) info.size = 0;
        files.push_back(std::move(info));
    }
    return files;
}

std::optional<std::filesystem::path> userDirectoryFromConfig(std::string_view text, std::string_view variable,
                                                             const std::filesystem::path& home) {
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string_view::npos) end = text.size();
        std::string_view line = text.substr(start, end - start);
        start = end + 1;
        if (!line.starts_with(variable) || line.substr(variable.size()).find('=') != 0) continue;
        std::string_view value = line.substr(variable.size() + 1);
        if (value.size() < 2 || value.front() != '"' || value.back() != '"') return std::nullopt;
        value = value.substr(1, value.size() - 2);
        std::filesystem::path path;
        if (value.starts_with("$HOME")) {
            std::string_view rest = value.substr(5);
            if (rest.empty() || rest == "/") return std::nullopt; // the home folder itself means "disabled"
            path = home / std::filesystem::path(rest.substr(rest.front() == '/' ? 1 : 0));
        } else if (value.starts_with("/")) {
            path = value;
        } else {
            return std::nullopt;
        }
        return path;
    }
    return std::nullopt;
}

std::optional<std::filesystem::path> LocalFileManager::picturesDirectory() const {
    Expected<std::string> text = readFileText(XdgPaths::configHome() / "user-dirs.dirs");
    if (!text) return std::nullopt;
    return userDirectoryFromConfig(*text, "XDG_PICTURES_DIR", homeDirectory());
}

std::filesystem::path LocalFileManager::homeDirectory() const { return XdgPaths::home(); }

Expected<Bytes> LocalFileManager::makeFolderBookmark(const std::filesystem::path& folder) {
    struct stat info {};
    if (::stat(folder.c_str(), &info) != 0)
        return Error{"cannot bookmark " + quoted(folder) + ": " + std::strerror(errno)};
    if (!S_ISDIR(info.st_mode)) return Error{"cannot bookmark " + quoted(folder) + ": not a folder"};
    const nlohmann::json record{{"path", std::filesystem::absolute(folder).lexically_normal().string()},
                                {"device", static_cast<std::uint64_t>(info.st_dev)},
                                {"inode", static_cast<std::uint64_t>(info.st_ino)}};
    const std::string text = record.dump();
    return Bytes(text.begin(), text.end());
}

Expected<ResolvedFolder> LocalFileManager::resolveFolderBookmark(const Bytes& bookmark) const {
    const nlohmann::json record = nlohmann::json::parse(bookmark.begin(), bookmark.end(), nullptr, false);
    if (record.is_discarded() || !record.is_object() || !record.contains("path") || !record["path"].is_string() ||
        !record.value("device", nlohmann::json()).is_number_unsigned() ||
        !record.value("inode", nlohmann::json()).is_number_unsigned())
        return Error{"the stored folder bookmark is unreadable"};
    const std::filesystem::path path = record["path"].get<std::string>();
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0)
        return Error{"the bookmarked folder " + quoted(path) + " is not reachable: " + std::strerror(errno)};
    if (!S_ISDIR(info.st_mode)) return Error{"the bookmarked folder " + quoted(path) + " is not a folder"};
    const bool sameFolder = record["device"].get<std::uint64_t>() == static_cast<std::uint64_t>(info.st_dev) &&
                            record["inode"].get<std::uint64_t>() == static_cast<std::uint64_t>(info.st_ino);
    return ResolvedFolder{path, !sameFolder};
}

} // namespace tosvar
