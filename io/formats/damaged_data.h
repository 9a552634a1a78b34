#pragma once

#include <stdexcept>

namespace corvane::io {

/// Compressed data that cannot be what their writer made. what() is the reason alone; callers know the file.
class DamagedData : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace corvane::io
