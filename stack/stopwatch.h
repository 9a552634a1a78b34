#pragma once

#include <chrono>
#include <vector>

#include "stack/stack.h"

namespace corvane::stack {

/// Keeps the times of the steps of the work.
class Stopwatch {
public:
    explicit Stopwatch(std::vector<Stage>& stages) : stages_(stages) {}

    /// Ends a step, and begins the next.
    void Lap(const char* stage)
    {
        const auto now = std::chrono::steady_clock::now();
        stages_.push_back({stage, std::chrono::duration<double>(now - start_).count()});
        start_ = now;
    }

private:
    std::vector<Stage>& stages_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

} // namespace corvane::stack
