#pragma once

#include "Expected.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string_view>

namespace tosvar {

// Writes a file so that readers see either the old contents or the complete
// new ones: bytes go to a hidden temporary beside the target, are flushed to
// disk, and replace the target by rename on `commit`. A writer destroyed
// without a commit removes its temporary and leaves the target untouched.
class AtomicFile {
public:
    explicit AtomicFile(std::filesystem::path target);
    ~AtomicFile();
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    // Creates the temporary (and missing parent folders).
    std::optional<Error> open();
    bool write(const std::uint8_t* bytes, std::size_t count);
    std::optional<Error> commit();

    const std::filesystem::path& target() const { return target_; }

    // The whole dance for bytes already in memory.
    static std::optional<Error> write(const std::filesystem::path& target, std::span<const std::uint8_t> bytes);
    static std::optional<Error> write(const std::filesystem::path& target, std::string_view text);

private:
    std::filesystem::path target_;
    std::filesystem::path temporary_;
    int fd_ = -1;
    int writeErrno_ = 0;
};

} // namespace tosvar
