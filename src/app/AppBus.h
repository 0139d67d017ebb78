#pragma once

#include <optional>
#include <string_view>
#include <vector>

// How a running instance is reached on the session bus: it owns the
// application's well-known name and serves one method per action there.
namespace tosvar::AppBus {

inline constexpr const char* objectPath = "/app/vemla/tosvar";
inline constexpr const char* interfaceName = "app.vemla.tosvar.Actions";
// Errors a method answers with.
inline constexpr const char* notBuiltError = "app.vemla.tosvar.Error.NotBuilt";
inline constexpr const char* failedError = "app.vemla.tosvar.Error.Failed";

// What a method takes besides its name.
enum class Argument {
    none,
    seconds, // one int32: seconds, or -1 for the settings' delay
    path,    // one string: an absolute file path
};

struct Method {
    const char* action; // the command-line word
    const char* member; // the bus method
    Argument argument;
};

const std::vector<Method>& methods();
std::optional<Method> forAction(std::string_view action);
std::optional<Method> forMember(std::string_view member);

} // namespace tosvar::AppBus
