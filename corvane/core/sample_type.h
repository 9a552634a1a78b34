#pragma once

#include <cstdint>

namespace corvane {

/// Calls `action` with a value of the C++ type of a FITS BITPIX; unsigned integers when `isSigned` is false.
/// Returns false for bits that no type has.
template <class Action>
bool WithSampleType(int bits, bool isSigned, Action action)
{
    switch (bits) {
    case 8:
        return isSigned ? action(std::int8_t{}) : action(std::uint8_t{}), true;
    case 16:
        return isSigned ? action(std::int16_t{}) : action(std::uint16_t{}), true;
    case 32:
        return isSigned ? action(std::int32_t{}) : action(std::uint32_t{}), true;
    case -32:
        return action(float{}), true;
    case -64:
        return action(double{}), true;
    default:
        return false;
    }
}

} // namespace corvane
