#include "catalogue/image_beside.h"

#include "catalogue/colour_header.h"

namespace corvane::catalogue {

CStlImage EmptyLike(const CStlImage& image)
{
    CStlImage empty(-32, image.GetWidth(), image.GetHeight(), image.GetPlanes(), 1.0, 0.0, 1);
    empty.SetCoordinates(image.GetCoordinates());
    return empty;
}

void SaveBeside(const std::string& path, const CStlImage& image, const io::Frame& frame, int bits)
{
    io::Header header = frame.header;
    DropExtremes(header);
    io::Save(path, image, header, {.bits = bits});
}

} // namespace corvane::catalogue
