#pragma once

#include <filesystem>
#include <vector>

namespace tosvar {

// The gate every access to a file outside the save folder passes through.
// This build needs no grant to reach the user's files, so access is a
// pass-through: the callers keep using it so a confined build (a sandboxed
// package) only has to fill it in.
namespace SecurityScopedFileAccess {

struct Handle {
    std::vector<std::filesystem::path> urls;
    void stop() const {}
};

inline Handle begin(std::vector<std::filesystem::path> urls) { return Handle{std::move(urls)}; }
inline void mint(const std::filesystem::path&) {}

} // namespace SecurityScopedFileAccess

} // namespace tosvar
