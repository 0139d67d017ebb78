#pragma once

#include <string>
#include <utility>
#include <variant>

namespace tosvar {

// What went wrong, in words a log line or a dialog can show as they stand.
struct Error {
    std::string message;
    friend bool operator==(const Error&, const Error&) = default;
};

// A value or the error that kept it from being made.
template <typename T>
class Expected {
public:
    Expected(T value) : state_(std::move(value)) {}
    Expected(Error error) : state_(std::move(error)) {}

    bool ok() const { return std::holds_alternative<T>(state_); }
    explicit operator bool() const { return ok(); }

    T& value() & { return std::get<T>(state_); }
    const T& value() const& { return std::get<T>(state_); }
    T&& value() && { return std::get<T>(std::move(state_)); }
    T* operator->() { return &value(); }
    const T* operator->() const { return &value(); }
    T& operator*() & { return value(); }
    const T& operator*() const& { return value(); }

    T value_or(T fallback) const& { return ok() ? value() : std::move(fallback); }

    const Error& error() const { return std::get<Error>(state_); }

private:
    std::variant<T, Error> state_;
};

} // namespace tosvar
