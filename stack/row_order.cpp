#include "stack/row_order.h"

#include <algorithm>
#include <string>
#include <vector>

#include "io/metadata.h"
#include "io/row_order.h"

namespace corvane::stack {

namespace {

using Kinds = std::vector<FrameSet*>;

/// The frames of each kind, those that sets share once.
Kinds KindsOf(Plan& plan)
{
    Kinds kinds{&plan.lights};
    for (const CalibrationFrames& set : plan.sets) {
        for (const auto& frames : {set.bias, set.darks, set.flats, set.flatDarks}) {
            if (std::find(kinds.begin(), kinds.end(), frames.get()) == kinds.end()) {
                kinds.push_back(frames.get());
            }
        }
    }
    return kinds;
}

bool StatesOrder(const io::FrameReader& frame)
{
    return io::StatedRowOrder(frame.Info().header).has_value();
}

/// The frame whose order counts; null when none states one.
const io::FrameReader* FindModel(const Options& options, const Plan& plan, const Kinds& kinds)
{
    if (!plan.onto.IsEmpty() && StatesOrder(plan.onto.Reader(0))) {
        return &plan.onto.Reader(0);
    }
    const io::FrameReader& reference = plan.lights.Reader(ReferenceIndex(options));
    if (StatesOrder(reference)) {
        return &reference;
    }
    for (const FrameSet* frames : kinds) {
        for (int i = 0; i < frames->Count(); ++i) {
            if (StatesOrder(frames->Reader(i))) {
                return &frames->Reader(i);
            }
        }
    }
    return nullptr;
}

/// Returns how many were turned, and sets the first of them.
int Turn(const io::Header& model, FrameSet& frames, std::string& first)
{
    int turned = 0;
    for (int i = 0; i < frames.Count(); ++i) {
        if (io::RowsRunAgainst(model, frames.Info(i).header)) {
            first = turned == 0 ? frames.Path(i) : first;
            frames.TurnUpsideDown(i);
            ++turned;
        }
    }
    return turned;
}

} // namespace

void BringToOneOrder(const Options& options, Plan& plan)
{
    const Kinds kinds = KindsOf(plan);
    const io::FrameReader* const model = FindModel(options, plan, kinds);
    for (std::size_t i = 0; i < kinds.size() && model != nullptr; ++i) {
        std::string first;
        if (const int turned = Turn(model->Info().header, *kinds[i], first); turned > 0) {
            plan.notes.push_back(io::TurnedNote(first, turned - 1, model->Path(), model->Info().header));
        }
    }
}

} // namespace corvane::stack
