#pragma once

#include "corvane/platform/cstring.h"
#include "corvane/platform/export.h"

/// The application's settings: numbers by section and key, kept in one table of the process. Any thread may call.
class CORVANE_API CRegistry {
public:
    CRegistry();
    ~CRegistry();

    /// Stores the setting in `value`, or the default when there is none; returns non-zero when there is one.
    /// A fractional setting is cut towards zero and held within the range of int; not-a-number counts as absent.
    /// `flag` is accepted for callers that pass one and has no effect.
    static int Read(const CString& section, const CString& key, int defaultValue, int* value, int flag = 0);

    /// Stores the setting in `value`, or the default when there is none; returns non-zero when there is one.
    static int Read(const CString& section, const CString& key, double defaultValue, double* value);

    /// Sets or replaces a setting.
    static void Write(const CString& section, const CString& key, int value);

    /// Sets or replaces a setting.
    static void Write(const CString& section, const CString& key, double value);

private:
    CString path_;
};
