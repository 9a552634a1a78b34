#pragma once

#include <cstdint>

#include "corvane/core/progress_notice.h"
#include "corvane/core/walk.h"

namespace corvane {

/// Calls row(y, plane) for the first rows of each plane of `target`, which are made from `source`, on the workers where
/// there is enough to do. The window gets the messages of the progress channel, each row a step; either window or text
/// may be null.
template <class Row>
void ForNotedRows(const CImage& target, const CImage& source, int width, int height, HWND window, const char* text,
                  Row row)
{
    const int planes = target.GetPlanes();
    const RowBlocks blocks({0, 0, width, height}, planes);
    ProgressNotice notice(window, text, static_cast<std::uint64_t>(height) * static_cast<std::uint64_t>(planes));
    const auto body = [&](const RowBlock& block) {
        for (int y = block.first; y < block.end; ++y) {
            row(y, block.plane);
        }
    };
    ForRowBlocks(blocks, ThreadsOn(target, {&source}), body, [&](const RowBlock& block) {
        for (int y = block.first; y < block.end; ++y) {
            notice.Advance(1);
        }
    });
}

} // namespace corvane
