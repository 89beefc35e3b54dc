#pragma once

#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace daywyn {

// A failure that the user may see: one whole English sentence, or a system
// reason to be appended to one.
struct Error {
    std::string message;
    bool operator==(const Error&) const = default;
};

// A value or an Error, for loaders and decoders (GCC 12 has no std::expected).
template <typename T>
class [[nodiscard]] Result {
public:
    Result(T value)
        : state_(std::in_place_index<0>, std::move(value)) {}
    Result(Error error)
        : state_(std::in_place_index<1>, std::move(error)) {}

    static Result failure(std::string message) { return Result(Error{std::move(message)}); }

    bool ok() const { return state_.index() == 0; }
    explicit operator bool() const { return ok(); }

    const T& value() const& { return std::get<0>(state_); }
    T& value() & { return std::get<0>(state_); }
    T&& value() && { return std::get<0>(std::move(state_)); }
    const T* operator->() const { return &std::get<0>(state_); }
    const T& operator*() const& { return std::get<0>(state_); }

    const std::string& error() const { return std::get<1>(state_).message; }

private:
    std::variant<T, Error> state_;
};

// Success or an Error, for operations that produce nothing.
template <>
class [[nodiscard]] Result<void> {
public:
    Result() = default;
    Result(Error error)
        : error_(std::move(error.message)) {}

    static Result failure(std::string message) { return Result(Error{std::move(message)}); }

    bool ok() const { return !error_.has_value(); }
    explicit operator bool() const { return ok(); }
    const std::string& error() const { return *error_; }

private:
    std::optional<std::string> error_;
};

using Status = Result<void>;

} // namespace daywyn
