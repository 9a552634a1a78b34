#include "corvane/platform/cstring.h"

#include <cstdarg>
#include <cstddef>
#include <cstdio>

#include "corvane/resources/string_table.h"

void CString::Format(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);

    std::string text;
    if (length > 0) {
        text.resize(static_cast<std::size_t>(length));
        std::vsnprintf(text.data(), text.size() + 1, format, again);
    }
    va_end(again);
    text_ = std::move(text);
}

int CString::LoadString(UINT id)
{
    const char* text = corvane::FindString(id);
    *this = CString(text);
    return text != nullptr;
}
