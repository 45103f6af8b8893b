// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_RESULT_H
#define VOXTREL_RESULT_H

#include <stdexcept>
#include <string>
#include <utility>
#include <variant>

#include "voxtrel/Status.h"

namespace voxtrel {

/// Why something was not done, in words that say what to do.
struct Error {
    Status status = Status::Ok;
    std::string message;
};

/// Thrown by `Result::value` when there is none.
class Failure : public std::runtime_error {
public:
    explicit Failure(const Error& error)
        : std::runtime_error(error.message), mStatus(error.status) {}
    Status status() const noexcept { return mStatus; }

private:
    Status mStatus;
};

/// A value, or why there is none.
template <typename Value>
class [[nodiscard]] Result {
public:
    Result(Value value) : mContent(std::move(value)) {}  // NOLINT(google-explicit-constructor)
    Result(Error error) : mContent(std::move(error)) {}  // NOLINT(google-explicit-constructor)

    explicit operator bool() const noexcept { return mContent.index() == 0; }

    /// Throws Failure if there is none.
    Value& value() & { return require(), std::get<0>(mContent); }
    const Value& value() const& { return require(), std::get<0>(mContent); }
    Value&& value() && { return require(), std::get<0>(std::move(mContent)); }
    Value& operator*() & { return value(); }
    const Value& operator*() const& { return value(); }
    Value&& operator*() && { return std::move(*this).value(); }
    Value* operator->() { return &value(); }
    const Value* operator->() const { return &value(); }

    Status status() const noexcept { return *this ? Status::Ok : std::get<1>(mContent).status; }

    /// Never null; empty when there is a value.
    const char* message() const noexcept {
        return *this ? "" : std::get<1>(mContent).message.c_str();
    }

    /// `Ok` and an empty text when there is a value.
    Error error() const { return *this ? Error{} : std::get<1>(mContent); }

private:
    void require() const {
        if (!*this) {
            throw Failure(std::get<1>(mContent));
        }
    }

    std::variant<Value, Error> mContent;
};

/// Done, or why not.
template <>
class [[nodiscard]] Result<void> {
public:
    Result() = default;
    Result(Error error) : mError(std::move(error)) {}  // NOLINT(google-explicit-constructor)

    explicit operator bool() const noexcept { return mError.status == Status::Ok; }

    /// Throws Failure if it was not done.
    void value() const {
        if (!*this) {
            throw Failure(mError);
        }
    }

    Status status() const noexcept { return mError.status; }

    /// Never null; empty when it was done.
    const char* message() const noexcept { return mError.message.c_str(); }
    const Error& error() const noexcept { return mError; }

private:
    Error mError;
};

}  // namespace voxtrel

#endif
