#pragma once

#include <QString>

#include <functional>
#include <memory>
#include <utility>

namespace Tests {

// What came back from one asynchronous call: how often each callback ran, the
// value or the error. Hand Success() / Failure() (or Done() for calls without a
// value) to the call, then wait for Calls() to reach one. A template, so its
// members stay in the header.
template <typename Value, typename ErrorType>
struct CallOutcome
{
    int successes = 0;
    int failures = 0;
    Value value{};
    std::shared_ptr<ErrorType> error;

    std::function<void(Value)> Success()
    {
        return [this](Value received) {
            ++successes;
            value = std::move(received);
        };
    }
    std::function<void()> Done()
    {
        return [this] {
            ++successes;
        };
    }
    std::function<void(std::shared_ptr<ErrorType>)> Failure()
    {
        return [this](std::shared_ptr<ErrorType> received) {
            ++failures;
            error = std::move(received);
        };
    }
    int Calls() const
    {
        return successes + failures;
    }
    // The error's own text, for a failure message.
    QString Describe() const
    {
        return error ? QString::fromStdString(error->ToString()) : QStringLiteral("no error");
    }
};

} // namespace Tests
