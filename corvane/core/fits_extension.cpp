#include "corvane/core/fits_extension.h"

#include <string_view>

const char* CFitsExtension::FindCard(const char* keyword) const
{
    constexpr std::size_t kKeywordLength = 8;
    for (int i = 0; i < GetCardCount(); ++i) {
        const std::string_view field = std::string_view(GetCard(i)).substr(0, kKeywordLength);
        if (field.substr(0, field.find_first_of(" =")) == keyword) { // some programs put the '=' too far to the left
            return GetCard(i);
        }
    }
    return nullptr;
}
