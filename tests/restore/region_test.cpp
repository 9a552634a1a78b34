#include "corvane/restore/region.h"

#include <functional>
#include <new>

#include "corvane/restore/lucy.h"
#include "corvane/restore/mem.h"
#include "corvane/restore/wiener.h"
#include "tests/restore/field.h"
#include "tests/support/failing_memory.h"

using namespace corvane;
using namespace corvane::test;

TEST(Region, CountsWorkBuffersAsInUseWhileARestorationRuns)
{
    const CStlImage source = StarFrame(100, 80, 1);
    CImgLucy lucy(source);
    CImgMem mem(source);
    CImgWiener wiener(source);
    CRect whole(0, 0, 100, 80);
    const std::pair<std::uint64_t, std::function<void(const corvane::Run&)>> cases[] = {
        {100 * 80 * 12, [&](const corvane::Run& run) { lucy.Do(1.2, 1.0, 6.0, 1, &whole, run); }}, // with two spectra
        {135 * 120 * 12, [&](const corvane::Run& run) { mem.Do(1.2, 9.0, 1, &whole, false, run); }},
        {128 * 128 * 3, [&](const corvane::Run& run) { wiener.Do(1.2, 0.1, &whole, run); }},
    };
    for (const auto& [floats, work] : cases) {
        const std::uint64_t before = MemoryInUse();
        std::uint64_t during = 0;
        bool isStopped = false;
        const corvane::Run run{.progress = [&](const Progress&) { during = MemoryInUse(); },
                               .cancelled = [&] { return isStopped; }};
        work(run);
        EXPECT_GE(during, before + floats * sizeof(float));
        EXPECT_EQ(MemoryInUse(), before);
        isStopped = true;
        try {
            work(run);
        } catch (const Cancelled&) {
        }
        EXPECT_EQ(MemoryInUse(), before);
        isStopped = false;
        try {
            const FailingMemory memory(6);
            work(run);
        } catch (const std::bad_alloc&) {
        }
        EXPECT_EQ(MemoryInUse(), before);
    }
}
