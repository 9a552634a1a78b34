// A night of small frames of which one has whatever bytes: its role and the way of stacking come from the first two.

#include "corvane/core/error.h"
#include "corvane/core/memory_budget.h"
#include "stack/stack.h"
#include "tests/fuzz/scratch.h"
#include "tests/fuzz/target.h"
#include "tests/support/images.h"

namespace {

using namespace corvane;

constexpr int kWidth = 40;
constexpr int kHeight = 36;

/// A sky with stars, moved by dx.
CStlImage Sky(int dx)
{
    test::Random random(static_cast<std::uint64_t>(dx) + 1);
    return test::Make(kWidth, kHeight, 1, [&](int x, int y, int) {
        double sample = 300.0 + random.Between(-2.0, 2.0);
        for (int star = 0; star < 12; ++star) {
            const double far = (x - 3 - star * 29 % 34 - dx) * (x - 3 - star * 29 % 34 - dx) +
                               (y - 3 - star * 17 % 30) * (y - 3 - star * 17 % 30);
            sample += far < 20.0 ? 4000.0 / (star + 1) / (1.0 + far * far) : 0.0;
        }
        return sample;
    });
}

std::string File(const CStlImage& image, int bits)
{
    io::Header header;
    header.Set("EXPTIME", 60);
    header.Set("BAYERPAT", "RGGB");
    return test::FileOf(image, header, ".fits", bits);
}

stack::Options Asked(unsigned char how)
{
    using namespace stack;
    constexpr CombineMethod kMethods[] = {CombineMethod::kMedian, CombineMethod::kClippedMedian,
                                          CombineMethod::kClippedMean};
    constexpr AlignMethod kAligns[] = {AlignMethod::kNone, AlignMethod::kShift, AlignMethod::kStars};
    Options options;
    options.method = kMethods[how % 3];
    options.align = kAligns[how / 3 % 3];
    options.mosaic = how / 9 % 2 != 0 ? MosaicUse::kKeep : MosaicUse::kAuto;
    options.cosmetic = how / 18 % 2 != 0;
    options.cosmic = how / 36 % 2 != 0;
    options.size = 16;
    options.search = 8;
    options.wantsCoverage = true;
    return options;
}

} // namespace

std::vector<std::string> Seeds()
{
    std::vector<std::string> seeds;
    const std::string frames[] = {File(Sky(3), 16), File(Sky(2), -32)};
    for (int role = 0; role < 5; ++role) {
        for (const int how : {0, 3 + role, 6 + role, 30}) {
            seeds.push_back({static_cast<char>(role), static_cast<char>(how)});
            seeds.back() += frames[how % 2];
        }
    }
    return seeds;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2) {
        return 0;
    }
    static const std::string kLights[] = {File(Sky(0), -32), File(Sky(1), -32)};
    SetMemoryBudget(64 << 20);
    const test::ScratchFile first("-1.fits", kLights[0]);
    const test::ScratchFile second("-2.fits", kLights[1]);
    const test::ScratchFile odd("-3.fits", {reinterpret_cast<const char*>(data + 2), size - 2});
    stack::Options options = Asked(data[1]);
    options.lights = {first.Path(), second.Path()};
    std::vector<std::string>* const roles[] = {&options.lights, &options.bias, &options.darks, &options.flats,
                                               &options.flatDarks};
    roles[data[0] % std::size(roles)]->push_back(odd.Path());
    try {
        stack::Stack(options);
    } catch (const Error&) { // what a user is told
    } catch (const std::bad_alloc&) {
    }
    return 0;
}
