#pragma once

#include <csetjmp>
#include <cstdio>
#include <exception>
#include <functional>
#include <memory>
#include <string>

#include <png.h>

#include "io/output_file.h"

namespace corvane::io {

/// libpng's structures, for reading a file or writing one. What libpng has to say comes as Error; nothing is printed.
///
/// libpng leaves by longjmp when it fails. `Run` is the one place where that ends: its action must not own anything
/// that needs a destructor.
class PngFile {
public:
    explicit PngFile(const std::string& path);
    explicit PngFile(OutputFile& output);
    /// Appends what is written to `bytes`.
    explicit PngFile(std::string& bytes);
    ~PngFile();
    PngFile(const PngFile&) = delete;
    PngFile& operator=(const PngFile&) = delete;

    png_structp Png() const { return png_; }
    png_infop Info() const { return info_; }

    /// Calls action(png, info); throws Error with `what` and libpng's reason when it fails.
    template <class Action>
    void Run(const char* what, Action&& action)
    {
        if (setjmp(png_jmpbuf(png_)) != 0) {
            Fail(what);
        }
        action(png_, info_);
    }

private:
    PngFile(std::string path, std::function<void(const void* bytes, std::size_t count)> write);
    [[noreturn]] static void OnError(png_structp png, png_const_charp message);
    static void OnWarning(png_structp, png_const_charp) {}
    static void OnWrite(png_structp png, png_bytep bytes, png_size_t count);
    static void OnFlush(png_structp) {}
    [[noreturn]] void Fail(const char* what);

    std::string path_;
    char message_[256] = "";
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_{nullptr, &std::fclose};
    std::function<void(const void* bytes, std::size_t count)> write_{};
    std::exception_ptr failure_; ///< of writing, kept while libpng's own frames are on the stack
    bool reads_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
};

/// What a PNG holds.
struct PngLayout {
    int width = 0;
    int height = 0;
    int planes = 1;
    int bits = 8; ///< 8 or 16
    bool interlaced = false;

    std::size_t RowSamples() const { return static_cast<std::size_t>(width) * static_cast<std::size_t>(planes); }
    bool operator==(const PngLayout&) const = default;
};

/// Writes the start of a PNG with a description, empty for none.
void StartPng(PngFile& file, const PngLayout& layout, const std::string& description);

} // namespace corvane::io
