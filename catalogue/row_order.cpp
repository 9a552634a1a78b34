#include "catalogue/row_order.h"

#include "io/row_order.h"

namespace corvane::catalogue {
namespace {

/// Points below the last row are left for the checks that refuse them.
void Turn(int height, std::vector<double>& points)
{
    for (std::size_t i = 1; i < points.size(); i += 2) {
        points[i] = points[i] < height ? height - 1 - points[i] : points[i];
    }
}

} // namespace

void BringToOrderOf(const io::Frame& image, io::Frame& frame, const Run& run, std::vector<double>* points)
{
    if (!io::RowsRunAgainst(image.header, frame.header)) {
        return;
    }
    run.TellNote(io::TurnedNote(frame.image.GetOrgFileName(), 0, image.image.GetOrgFileName(), image.header));
    io::TurnUpsideDown(frame);
    if (points != nullptr) {
        Turn(frame.image.GetHeight(), *points);
    }
}

} // namespace corvane::catalogue
