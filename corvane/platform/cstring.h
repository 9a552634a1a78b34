#pragma once

#include <string>
#include <utility>

#include "corvane/platform/export.h"
#include "corvane/platform/types.h"

#if defined(__GNUC__)
#define CORVANE_PRINTF(formatIndex, firstArgument) __attribute__((format(printf, formatIndex, firstArgument)))
#else
#define CORVANE_PRINTF(formatIndex, firstArgument)
#endif

/// A text of bytes, zero-terminated where it is read. A null pointer counts as the empty text everywhere.
class CORVANE_API CString {
public:
    CString() = default;
    CString(const char* text) : text_(text == nullptr ? "" : text) {}

    /// The text; valid until the string is changed or destroyed.
    const char* GetString() const { return text_.c_str(); }
    operator const char*() const { return text_.c_str(); }

    /// Length in bytes, without the terminating zero.
    int GetLength() const { return static_cast<int>(text_.size()); }
    bool IsEmpty() const { return text_.empty(); }
    void Empty() { text_.clear(); }

    CString& operator+=(const CString& tail)
    {
        text_ += tail.text_;
        return *this;
    }
    CString& operator+=(const char* tail) { return *this += CString(tail); }
    CString& operator+=(char tail)
    {
        text_ += tail;
        return *this;
    }

    /// Replaces the text by what printf would write. The arguments may point into the present text.
    void Format(const char* format, ...) CORVANE_PRINTF(2, 3);

    /// Replaces the text by entry `id` of the string table; returns zero and empties the text when there is none.
    int LoadString(UINT id);

    friend bool operator==(const CString& a, const CString& b) { return a.text_ == b.text_; }
    friend bool operator==(const CString& a, const char* b) { return a == CString(b); }

    friend CString operator+(CString head, const CString& tail) { return std::move(head += tail); }
    friend CString operator+(CString head, const char* tail) { return std::move(head += tail); }
    friend CString operator+(const char* head, const CString& tail) { return CString(head) + tail; }
    friend CString operator+(CString head, char tail) { return std::move(head += tail); }

private:
    std::string text_;
};
