#include "corvane/core/run.h"

namespace corvane {

const char* Cancelled::what() const noexcept
{
    return "cancelled";
}

} // namespace corvane
