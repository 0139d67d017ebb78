#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tosvar {

// What the program was asked on its command line: start (no argument), print
// help, or forward one action to the running instance.
struct CommandLineRequest {
    enum class Kind { start, help, action, invalid };
    Kind kind = Kind::start;
    std::string action;         // "screenshot", "screenshot-delayed", ...
    std::optional<int> seconds; // for "screenshot-delayed"
    std::string path;           // for "annotate": the image to open
    std::string error;          // for `invalid`

    static CommandLineRequest parse(const std::vector<std::string>& arguments);
    static std::string helpText();
    // Every action name, in the order help lists them.
    static const std::vector<std::string>& actions();
};

} // namespace tosvar
