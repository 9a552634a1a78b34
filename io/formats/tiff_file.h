#pragma once

#include <array>
#include <cstdint>
#include <exception>
#include <string>

#include <tiffio.h>

#include "io/output_file.h"

namespace corvane::io {

/// An open TIFF file. What libtiff has to say comes as Error, warnings are dropped; nothing is printed.
class TiffFile {
public:
    explicit TiffFile(const std::string& path);            ///< Opens a file to read it.
    TiffFile(OutputFile& output, const std::string& mode); ///< Writes into an output file.
    ~TiffFile();
    TiffFile(const TiffFile&) = delete;
    TiffFile& operator=(const TiffFile&) = delete;

    TIFF* Get() const { return tiff_; }
    /// Throws Error with libtiff's last message unless `good`; an error of the output file goes before.
    void Check(bool good, const std::string& action);
    /// The value of a tag that is a number, with its default.
    template <class T>
    T Number(int tag) const
    {
        T value = 0;
        TIFFGetFieldDefaulted(tiff_, static_cast<std::uint32_t>(tag), &value);
        return value;
    }
    /// Sets a tag of a file being written. Without memory for it the file is given up unclosed: libtiff 4.5 would free
    /// what it could not allocate.
    template <class... Values>
    void Set(int tag, Values... values)
    {
        if (TIFFSetField(tiff_, static_cast<std::uint32_t>(tag), values...) != 1) {
            tiff_ = nullptr;
            Check(false, "cannot be written");
        }
    }
    /// The value of a tag that is a text; empty when there is none.
    std::string Text(int tag) const;

private:
    static int OnMessage(TIFF* tiff, void* self, const char* module, const char* format, va_list arguments);
    static int OnWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }
    static tmsize_t OnRead(thandle_t self, void* bytes, tmsize_t count);
    static tmsize_t OnWrite(thandle_t self, void* bytes, tmsize_t count);
    static toff_t OnSeek(thandle_t self, toff_t offset, int origin);
    static int OnClose(thandle_t) { return 0; }
    static toff_t OnSize(thandle_t self);
    template <class F>
    auto Guard(F action, decltype(action()) failed) -> decltype(action());
    TIFFOpenOptions* MakeOptions(std::uint64_t mostBytes);

    std::string path_;
    std::array<char, 512> message_{}; ///< no string: it is written while libtiff's own frames are on the stack
    OutputFile* output_ = nullptr;
    std::exception_ptr failure_; ///< of the output file, kept while libtiff's own frames are on the stack
    TIFF* tiff_ = nullptr;
};

} // namespace corvane::io
