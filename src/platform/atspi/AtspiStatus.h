#pragma once

#include <QString>

namespace tosvar {

// The session's switch for assistive technologies, and the address of the
// accessibility bus they talk over (both from org.a11y.Bus on the session bus).
namespace AtspiStatus {

inline constexpr int timeoutMilliseconds = 500;

bool isEnabled();
// Turns the switch on; whether it is on afterwards.
bool enable();
// Empty when no accessibility bus runs.
QString busAddress();

} // namespace AtspiStatus

} // namespace tosvar
