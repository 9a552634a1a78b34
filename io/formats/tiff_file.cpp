#include "io/formats/tiff_file.h"

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <new>
#include <utility>

#include <fcntl.h>

#include "corvane/core/error.h"
#include "corvane/core/memory_budget.h"

namespace corvane::io {
namespace {

constexpr std::uint64_t kMostBytes = std::uint64_t{1} << 30; // that libtiff may take for one strip, tile or tag

} // namespace

TIFFOpenOptions* TiffFile::MakeOptions(std::uint64_t mostBytes)
{
    TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
    if (options == nullptr) {
        throw std::bad_alloc();
    }
    TIFFOpenOptionsSetErrorHandlerExtR(options, &TiffFile::OnMessage, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options, &TiffFile::OnWarning, this);
    TIFFOpenOptionsSetMaxSingleMemAlloc(options, static_cast<tmsize_t>(mostBytes));
    return options;
}

TiffFile::TiffFile(const std::string& path) : path_(path)
{
    const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(
        MakeOptions(std::min(kMostBytes, MemoryBudget())), TIFFOpenOptionsFree);
    // Without 'm' a file that shrinks while it is read would be a bus error: it is not mapped into memory.
    tiff_ = TIFFOpenExt(path.c_str(), "rm", options.get());
    Check(tiff_ != nullptr, "cannot be opened as TIFF");
}

TiffFile::TiffFile(OutputFile& output, const std::string& mode) : path_(output.Path()), output_(&output)
{
    const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(MakeOptions(kMostBytes),
                                                                                   TIFFOpenOptionsFree);
    tiff_ = TIFFClientOpenExt(path_.c_str(), mode.c_str(), this, OnRead, OnWrite, OnSeek, OnClose, OnSize, nullptr,
                              nullptr, options.get());
    Check(tiff_ != nullptr, "cannot be written as TIFF");
}

TiffFile::~TiffFile()
{
    // Whoever writes has flushed; a file that failed half-way is not to be finished, which libtiff would try and crash.
    if (tiff_ != nullptr) {
        TIFFSetMode(tiff_, O_RDONLY);
        TIFFClose(tiff_);
    }
}

void TiffFile::Check(bool good, const std::string& action)
{
    if (failure_ != nullptr) {
        std::rethrow_exception(std::exchange(failure_, nullptr));
    }
    if (!good) {
        throw FileError(path_, message_[0] == '\0' ? action : action + ": " + message_.data());
    }
}

std::string TiffFile::Text(int tag) const
{
    const char* text = nullptr;
    return TIFFGetField(tiff_, static_cast<std::uint32_t>(tag), &text) == 1 && text != nullptr ? text : std::string();
}

int TiffFile::OnMessage(TIFF*, void* self, const char*, const char* format, va_list arguments)
{
    auto& message = static_cast<TiffFile*>(self)->message_;
    std::vsnprintf(message.data(), message.size(), format, arguments);
    return 1;
}

template <class F>
auto TiffFile::Guard(F action, decltype(action()) failed) -> decltype(action())
{
    try {
        return action();
    } catch (...) {
        failure_ = std::current_exception();
        return failed;
    }
}

tmsize_t TiffFile::OnRead(thandle_t self, void* bytes, tmsize_t count)
{
    auto* file = static_cast<TiffFile*>(self);
    return file->Guard(
        [=] { return static_cast<tmsize_t>(file->output_->Read(bytes, static_cast<std::size_t>(count))); }, 0);
}

tmsize_t TiffFile::OnWrite(thandle_t self, void* bytes, tmsize_t count)
{
    auto* file = static_cast<TiffFile*>(self);
    const auto write = [=] {
        if (bytes == nullptr) {
            throw std::bad_alloc(); // that libtiff did not notice
        }
        file->output_->Write(bytes, static_cast<std::size_t>(count));
        return count;
    };
    return file->Guard(write, 0);
}

toff_t TiffFile::OnSeek(thandle_t self, toff_t offset, int origin)
{
    auto* file = static_cast<TiffFile*>(self);
    return file->Guard([=] { return toff_t{file->output_->Seek(static_cast<std::int64_t>(offset), origin)}; },
                       static_cast<toff_t>(-1));
}

toff_t TiffFile::OnSize(thandle_t self)
{
    auto* file = static_cast<TiffFile*>(self);
    const auto size = [=] {
        const std::uint64_t at = file->output_->Seek(0, SEEK_CUR);
        const std::uint64_t end = file->output_->Seek(0, SEEK_END);
        file->output_->Seek(static_cast<std::int64_t>(at), SEEK_SET);
        return toff_t{end};
    };
    return file->Guard(size, 0);
}

} // namespace corvane::io
