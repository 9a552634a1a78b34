#include "io/formats/inflate.h"

#include <limits>
#include <new>

#include <zlib.h>

#include "io/formats/damaged_data.h"

namespace corvane::io {
namespace {

constexpr std::size_t kInputBytes = std::size_t{64} << 10;
constexpr int kGzipHeader = 16; // zlib's flag for the header of gzip alone
constexpr int kAnyHeader = 32;

void Check(int status, const z_stream& stream)
{
    if (status == Z_MEM_ERROR) {
        throw std::bad_alloc();
    }
    if (status != Z_OK && status != Z_STREAM_END && status != Z_BUF_ERROR) {
        throw DamagedData(stream.msg != nullptr ? stream.msg : "the gzip data are damaged");
    }
}

} // namespace

/// zlib's own state, freed with the object.
class Inflater {
public:
    explicit Inflater(int header) { Check(inflateInit2(&stream, MAX_WBITS + header), stream); }
    ~Inflater() { inflateEnd(&stream); }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    /// zlib does not change its input, but its type does not say so.
    void SetInput(Bytes bytes)
    {
        stream.next_in = const_cast<unsigned char*>(bytes.data());
        stream.avail_in = static_cast<uInt>(bytes.size());
    }

    void SetOutput(MutableBytes bytes)
    {
        stream.next_out = bytes.data();
        stream.avail_out = static_cast<uInt>(bytes.size());
    }

    z_stream stream{};
};

struct GzipStream::State {
    Inflater inflater{kGzipHeader};
};

GzipStream::GzipStream(ByteSource& packed) : packed_(packed), input_(kInputBytes), state_(std::make_unique<State>()) {}

GzipStream::~GzipStream() = default;

void GzipStream::Refill()
{
    const std::size_t got = packed_.Read(read_, input_);
    if (got == 0) {
        throw DamagedData("the file ends within the gzip data");
    }
    read_ += got;
    state_->inflater.SetInput({input_.data(), got});
}

/// Members follow one another; bytes that begin none, as tapes and mails leave them, end the file.
bool GzipStream::BeginNextMember()
{
    z_stream& stream = state_->inflater.stream;
    if (stream.avail_in == 0) {
        const std::size_t got = packed_.Read(read_, input_);
        read_ += got;
        state_->inflater.SetInput({input_.data(), got});
    }
    return stream.avail_in > 0 && *stream.next_in == 0x1f && inflateReset(&stream) == Z_OK;
}

std::size_t GzipStream::Next(MutableBytes bytes)
{
    z_stream& stream = state_->inflater.stream;
    state_->inflater.SetOutput(bytes);
    while (stream.avail_out > 0 && !ended_) {
        if (stream.avail_in == 0) {
            Refill();
        }
        const int status = inflate(&stream, Z_NO_FLUSH);
        Check(status, stream);
        ended_ = status == Z_STREAM_END && !BeginNextMember();
    }
    return bytes.size() - stream.avail_out;
}

std::size_t Inflate(Bytes packed, MutableBytes bytes)
{
    constexpr std::size_t kMost = std::numeric_limits<uInt>::max();
    if (packed.size() > kMost || bytes.size() > kMost) {
        throw DamagedData("a tile is larger than gzip data can be");
    }
    Inflater inflater(kAnyHeader);
    inflater.SetInput(packed);
    inflater.SetOutput(bytes);
    const int status = inflate(&inflater.stream, Z_FINISH);
    Check(status, inflater.stream);
    if (status != Z_STREAM_END) {
        throw DamagedData(inflater.stream.avail_out == 0 ? "the gzip data hold more than the tile"
                                                         : "the gzip data end too early");
    }
    return bytes.size() - inflater.stream.avail_out;
}

} // namespace corvane::io
