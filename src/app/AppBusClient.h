#pragma once

#include "CommandLineRequest.h"
#include "Expected.h"

#include <optional>

namespace tosvar {

// Hands one command-line action to the running instance, starting one first
// when none runs. Used by `tosvar ACTION`; needs a Qt core application.
namespace AppBusClient {

bool isRunning();
// Starts `executable` with no argument and waits up to `timeoutSeconds` for it to claim the bus name.
std::optional<Error> launchAndWait(const std::string& executable, double timeoutSeconds);
// The action's outcome as the running instance reports it.
std::optional<Error> forward(const CommandLineRequest& request);

} // namespace AppBusClient

} // namespace tosvar
