#include "io/formats/png_file.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <system_error>
#include <utility>

#include "corvane/core/error.h"
#include "corvane/core/memory_budget.h"

namespace corvane::io {
namespace {

constexpr unsigned kMostChunks = 32; // texts and the like; all together may take the memory budget, or 32 MiB

} // namespace

PngFile::PngFile(const std::string& path)
    : path_(path), file_(std::fopen(path.c_str(), "rb"), &std::fclose), reads_(true)
{
    if (file_ == nullptr) {
        throw FileError(path, "cannot be opened: " + std::generic_category().message(errno));
    }
    png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, &PngFile::OnError, &PngFile::OnWarning);
    info_ = png_ == nullptr ? nullptr : png_create_info_struct(png_);
    if (info_ == nullptr) {
        png_destroy_read_struct(&png_, &info_, nullptr);
        throw std::bad_alloc();
    }
    png_init_io(png_, file_.get());
    png_set_chunk_cache_max(png_, kMostChunks);
    png_set_chunk_malloc_max(png_, std::clamp<png_alloc_size_t>(MemoryBudget() / kMostChunks, 1 << 20, 8 << 20));
}

PngFile::PngFile(OutputFile& output)
    : PngFile(output.Path(), [&output](const void* bytes, std::size_t count) { output.Write(bytes, count); })
{}

PngFile::PngFile(std::string& bytes)
    : PngFile("picture",
              [&bytes](const void* more, std::size_t count) { bytes.append(static_cast<const char*>(more), count); })
{}

PngFile::PngFile(std::string path, std::function<void(const void* bytes, std::size_t count)> write)
    : path_(std::move(path)), write_(std::move(write)), reads_(false)
{
    png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, this, &PngFile::OnError, &PngFile::OnWarning);
    info_ = png_ == nullptr ? nullptr : png_create_info_struct(png_);
    if (info_ == nullptr) {
        png_destroy_write_struct(&png_, &info_);
        throw std::bad_alloc();
    }
    png_set_write_fn(png_, this, &PngFile::OnWrite, &PngFile::OnFlush);
}

PngFile::~PngFile()
{
    if (reads_) {
        png_destroy_read_struct(&png_, &info_, nullptr);
    } else {
        png_destroy_write_struct(&png_, &info_);
    }
}

void PngFile::OnError(png_structp png, png_const_charp message)
{
    auto* self = static_cast<PngFile*>(png_get_error_ptr(png));
    std::snprintf(self->message_, sizeof self->message_, "%s", message);
    png_longjmp(png, 1);
}

void PngFile::OnWrite(png_structp png, png_bytep bytes, png_size_t count)
{
    auto* self = static_cast<PngFile*>(png_get_io_ptr(png));
    try {
        self->write_(bytes, count);
    } catch (...) {
        self->failure_ = std::current_exception();
    }
    if (self->failure_ != nullptr) {
        png_error(png, "the file cannot be written");
    }
}

void PngFile::Fail(const char* what)
{
    if (failure_ != nullptr) {
        std::rethrow_exception(failure_);
    }
    throw FileError(path_, std::string(what) + ": " + message_);
}

void StartPng(PngFile& file, const PngLayout& layout, const std::string& description)
{
    std::string key = "Description";
    std::string text = description;
    png_text entry{};
    entry.compression = PNG_TEXT_COMPRESSION_zTXt;
    entry.key = key.data();
    entry.text = text.data();
    entry.text_length = text.size();
    file.Run("cannot be written as PNG", [&](png_structp png, png_infop info) {
        // Noise hardly compresses: the quickest setting costs a few per cent of size and saves most of the time.
        png_set_compression_level(png, 2);
        png_set_IHDR(png, info, static_cast<png_uint_32>(layout.width), static_cast<png_uint_32>(layout.height),
                     layout.bits, layout.planes == 3 ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_set_sRGB(png, info, PNG_sRGB_INTENT_PERCEPTUAL); // as every viewer takes a PNG that says nothing
        if (!text.empty()) {
            png_set_text(png, info, &entry, 1);
        }
        png_write_info(png, info);
    });
}

} // namespace corvane::io
