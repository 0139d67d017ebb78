#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace tosvar {

// A temporary home for one test: HOME and every XDG base directory point into
// a fresh folder, restored and removed when the object goes away.
class IsolatedEnvironment {
public:
    IsolatedEnvironment();
    ~IsolatedEnvironment();
    IsolatedEnvironment(const IsolatedEnvironment&) = delete;
    IsolatedEnvironment& operator=(const IsolatedEnvironment&) = delete;

    const std::filesystem::path& root() const { return root_; }

private:
    std::filesystem::path root_;
    std::map<std::string, std::optional<std::string>> saved_;
};

} // namespace tosvar
