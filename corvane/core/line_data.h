#pragma once

#include <cstddef>
#include <memory>

#include "corvane/platform/export.h"

/// Two buffers for one line of n entries: a value (8 bytes) and a flag (4 bytes) each.
///
/// A copy shares the buffers of its source, so that a line can be handed on without moving its data:
/// exactly one of the two may be destroyed. The composite keeps its lines in a list of pointers and
/// destroys each once.
class CORVANE_API CLineData {
public:
    /// Allocates both buffers with the ordinary allocator; entries start undefined.
    explicit CLineData(int n)
        : CLineData(std::make_unique_for_overwrite<double[]>(Length(n)),
                    std::make_unique_for_overwrite<int[]>(Length(n)))
    {}
    CLineData(const CLineData&) = default;
    CLineData& operator=(const CLineData&) = default;
    ~CLineData()
    {
        delete[] values_;
        delete[] flags_;
    }

    /// @name The buffers
    /// @{
    double* Values() const { return values_; }
    int* Flags() const { return flags_; }
    /// @}

private:
    CLineData(std::unique_ptr<double[]> values, std::unique_ptr<int[]> flags)
        : values_(values.release()), flags_(flags.release())
    {}
    static std::size_t Length(int n) { return n > 0 ? static_cast<std::size_t>(n) : 0; }

    double* values_;
    int* flags_;
};
