#pragma once

#include "corvane/platform/array.h"
#include "corvane/platform/cstring.h"
#include "corvane/platform/export.h"

/// One extension of a FITS file, as its header describes it: where an image came from.
class CORVANE_API CFitsExtension {
public:
    /// Its place in the file: 0 is the primary header and data unit, 1 the first extension.
    int GetNumber() const { return number_; }
    void SetNumber(int number) { number_ = number; }
    /// EXTNAME, empty when it has none.
    const char* GetName() const { return name_; }
    void SetName(const char* name) { name_ = name; }
    /// EXTVER, which tells extensions of one name apart; 1 when it is not stated.
    int GetVersion() const { return version_; }
    void SetVersion(int version) { version_ = version; }

    /// @name The cards of its header, in order, each of 80 characters; END is not among them
    /// @{
    int GetCardCount() const { return cards_.GetSize(); }
    /// Card i, which must exist.
    const char* GetCard(int i) const { return cards_.GetAt(i); }
    void AddCard(const char* card) { cards_.Add(card); }
    /// The first card with a keyword, in capitals and at most 8 characters; null when there is none.
    const char* FindCard(const char* keyword) const;
    /// @}

private:
    int number_ = 0;
    CString name_;
    int version_ = 1;
    CArray<CString> cards_;
};
