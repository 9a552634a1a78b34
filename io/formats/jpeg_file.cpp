#include "io/formats/jpeg_file.h"

#include <csetjmp>
#include <cstdio> // which jpeglib.h needs before it
#include <cstdlib>
#include <vector>

#include <jpeglib.h>

#include "corvane/core/error.h"
#include "io/formats/srgb_profile.h"

namespace corvane::io {
namespace {

/// libjpeg's structures, for writing. What it has to say comes as Error; nothing is printed.
///
/// libjpeg leaves by longjmp when it fails. `Run` is the one place where that ends: its action must not own anything
/// that needs a destructor.
class JpegWriter {
public:
    explicit JpegWriter(const std::string& path) : path_(path)
    {
        jpeg_.err = jpeg_std_error(&errors_);
        jpeg_.client_data = this;
        errors_.error_exit = &JpegWriter::OnError;
        errors_.output_message = [](j_common_ptr) {};
        Run([&] {
            jpeg_create_compress(&jpeg_);
            jpeg_mem_dest(&jpeg_, &bytes_, &count_);
        });
    }
    ~JpegWriter()
    {
        jpeg_destroy_compress(&jpeg_);
        std::free(bytes_);
    }
    JpegWriter(const JpegWriter&) = delete;
    JpegWriter& operator=(const JpegWriter&) = delete;

    template <class Action>
    void Run(Action&& action)
    {
        if (setjmp(jump_) != 0) {
            throw FileError(path_, std::string("cannot be written as JPEG: ") + message_);
        }
        action();
    }

    jpeg_compress_struct& Jpeg() { return jpeg_; }
    /// When it is finished.
    std::string Bytes() const { return {reinterpret_cast<const char*>(bytes_), count_}; }

private:
    [[noreturn]] static void OnError(j_common_ptr jpeg)
    {
        auto* const self = static_cast<JpegWriter*>(jpeg->client_data);
        (*jpeg->err->format_message)(jpeg, self->message_);
        std::longjmp(self->jump_, 1);
    }

    std::string path_;
    jpeg_compress_struct jpeg_{};
    jpeg_error_mgr errors_{};
    std::jmp_buf jump_{};
    char message_[JMSG_LENGTH_MAX] = "";
    unsigned char* bytes_ = nullptr;
    unsigned long count_ = 0;
};

} // namespace

std::string EncodeJpeg(const std::string& path, const JpegLayout& layout,
                       const std::function<void(int row, unsigned char* bytes)>& rowOf)
{
    JpegWriter writer(path);
    jpeg_compress_struct& jpeg = writer.Jpeg();
    writer.Run([&] {
        jpeg.image_width = static_cast<JDIMENSION>(layout.width);
        jpeg.image_height = static_cast<JDIMENSION>(layout.height);
        jpeg.input_components = layout.planes;
        jpeg.in_color_space = layout.planes == 3 ? JCS_RGB : JCS_GRAYSCALE;
        jpeg_set_defaults(&jpeg);
        jpeg_set_quality(&jpeg, layout.quality, TRUE);
        jpeg_start_compress(&jpeg, TRUE);
    });
    const std::string& profile = SrgbProfile(layout.planes);
    writer.Run([&] {
        jpeg_write_icc_profile(&jpeg, reinterpret_cast<const JOCTET*>(profile.data()),
                               static_cast<unsigned>(profile.size()));
    });
    std::vector<unsigned char> row(static_cast<std::size_t>(layout.width) * static_cast<std::size_t>(layout.planes));
    JSAMPROW rows[] = {row.data()};
    for (int y = 0; y < layout.height; ++y) {
        rowOf(y, row.data());
        writer.Run([&] { jpeg_write_scanlines(&jpeg, rows, 1); });
    }
    writer.Run([&] { jpeg_finish_compress(&jpeg); });
    return writer.Bytes();
}

} // namespace corvane::io
