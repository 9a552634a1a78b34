// In place of files: frames made in memory, so that operations which read some run without any file format. Nothing is
// written.

#include <memory>
#include <utility>

#include "corvane/core/error.h"
#include "io/formats/cards.h"
#include "tests/variants/named_frame.h"

namespace corvane::io {
namespace {

/// Tells what a frame is; `Load` reads it.
class NamedFrame : public FrameReader {
public:
    explicit NamedFrame(FrameInfo info) : FrameReader(std::move(info)) {}
    void Close() override {}

private:
    void Read(int, int, int, float*) override { throw FileError(Path(), "is read as a whole"); }
};

} // namespace

void FrameReader::ReadRows(int plane, int firstRow, int rowCount, float* samples)
{
    Read(plane, firstRow, rowCount, samples);
}

std::unique_ptr<FrameReader> OpenFrame(const std::string& path, Cubes)
{
    return std::make_unique<NamedFrame>(
        FrameInfo{path, "", kFrameWidth, kFrameHeight, IsColourFrame(path) ? 3 : 1, -32, {}, {}});
}

Frame Load(const std::string& path)
{
    Frame frame = MakeNamedFrame(path);
    ReadCoordinates(frame.header, frame.image);
    return frame;
}

void CheckSave(const std::string& path, const SaveOptions&)
{
    throw FileError(path, "is not written here");
}

void Save(const std::string& path, const CStlImage&, const Header&, const SaveOptions& options,
          const std::vector<Extension>&)
{
    CheckSave(path, options);
}

} // namespace corvane::io
