#include "io/row_order.h"

#include "corvane/geometry/flip.h"
#include "io/metadata.h"
#include "io/sky.h"

namespace corvane::io {

bool RowsRunAgainst(const Header& a, const Header& b)
{
    const auto first = StatedRowOrder(a);
    const auto second = StatedRowOrder(b);
    return first && second && *first != *second;
}

void TurnUpsideDown(Frame& frame)
{
    constexpr int kVertical = 0;
    CImgFlip turned(frame.image);
    turned.Do(kVertical, &frame.image, 0);
    DescribeUpsideDown(frame.image.GetHeight(), frame, turned);
    frame.image.Swap(&turned);
}

void DescribeUpsideDown(int height, Frame& frame, CImage& record)
{
    CarryCoordinates({{1.0, 0.0, 0.0, -1.0}, 0.0, height - 1.0}, frame, record);
    frame.header.Set("ROWORDER", IsBottomUp(frame.header) ? "TOP-DOWN" : "BOTTOM-UP", "order of the rows in the image");
}

std::string TurnedNote(const std::string& file, int more, const std::string& partner, const Header& partnerHeader)
{
    const std::string order = IsBottomUp(partnerHeader) ? "TOP-DOWN" : "BOTTOM-UP";
    const std::string rows = more == 0 ? ": its rows are " : " and " + std::to_string(more) + " more: their rows are ";
    return file + rows + order + ", those of " + partner + " are " + RowOrder(partnerHeader) +
           (more == 0 ? "; it was turned upside down" : "; they were turned upside down");
}

} // namespace corvane::io
