#pragma once

#include <cstdint>

namespace corvane {

/// Calls `function` with a null pointer of the type in which samples are stored; returns `otherwise` for formats that
/// do not exist. 8-bit samples are always unsigned.
template <class Function, class Result>
Result WithSampleType(int bits, bool isSigned, Function function, Result otherwise)
{
    switch (bits) {
    case -64:
        return function(static_cast<double*>(nullptr));
    case -32:
        return function(static_cast<float*>(nullptr));
    case 8:
        return function(static_cast<std::uint8_t*>(nullptr));
    case 16:
        return isSigned ? function(static_cast<std::int16_t*>(nullptr))
                        : function(static_cast<std::uint16_t*>(nullptr));
    case 32:
        return isSigned ? function(static_cast<std::int32_t*>(nullptr))
                        : function(static_cast<std::uint32_t*>(nullptr));
    default:
        return otherwise;
    }
}

} // namespace corvane
