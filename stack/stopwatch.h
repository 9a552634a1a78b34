#pragma once

#include <chrono>
#include <vector>

#include "stack/stack.h"

namespace corvane::stack {

/// Keeps the times of the parts of the work.
class Stopwatch {
public:
    explicit Stopwatch(std::vector<Lap>& laps) : laps_(laps) {}

    /// Ends a part, and begins the next.
    void End(const char* part)
    {
        const auto now = std::chrono::steady_clock::now();
        laps_.push_back({part, std::chrono::duration<double>(now - start_).count()});
        start_ = now;
    }

private:
    std::vector<Lap>& laps_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

} // namespace corvane::stack
