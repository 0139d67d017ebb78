#include "IsolatedEnvironment.h"

#include <cstdlib>
#include <stdexcept>

namespace tosvar {

IsolatedEnvironment::IsolatedEnvironment() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tosvar-test-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) throw std::runtime_error("cannot create a temporary folder");
    root_ = pattern;
    const std::pair<const char*, const char*> variables[] = {
        {"HOME", "home"},          {"XDG_CONFIG_HOME", "config"}, {"XDG_STATE_HOME", "state"},
        {"XDG_DATA_HOME", "data"}, {"XDG_CACHE_HOME", "cache"},
    };
    for (const auto& [name, folder] : variables) {
        const char* old = std::getenv(name);
        saved_[name] = old ? std::optional<std::string>(old) : std::nullopt;
        std::filesystem::create_directories(root_ / folder);
        ::setenv(name, (root_ / folder).c_str(), 1);
    }
}

IsolatedEnvironment::~IsolatedEnvironment() {
    for (const auto& [name, value] : saved_) {
        if (value) {
            ::setenv(name.c_str(), value->c_str(), 1);
        } else {
            ::unsetenv(name.c_str());
        }
    }
    std::error_code ec;
    std::filesystem::remove_all(root_, ec);
}

} // namespace tosvar
