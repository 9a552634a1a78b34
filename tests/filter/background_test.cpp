#include "tests/filter/plain_filter.h"

using namespace corvane::test;

namespace {

double PlainSmooth(const Spot& at, double level, int type, double weight)
{
    const bool colour = at.image.Colour();
    const double place = colour ? at.Brightness() : at.Value();
    const double fade = colour ? 16.0 : at.image.range[0] * 0.05;
    level = colour ? at.target.To256(level, 0) : level;
    const double faded = place > level - fade ? (1.0 - (place - (level - fade)) / fade) * weight : weight;
    return place > level ? at.Value() : PlainMean(at.Around(type), faded);
}

} // namespace

TEST(Background, AgreesWithThePlainForm)
{
    for (const int type : {0, 1, 2, 3}) {
        for (const double level : {150.0, 400.0, -40.0}) {
            SCOPED_TRACE(testing::Message() << "type " << type << ", level " << level);
            ExpectFilter([=](auto& f, auto... to) { f.BkgSmooth(level, type, 1.5, to...); },
                         [=](const Spot& at) { return PlainSmooth(at, level, type, 1.5); });
        }
    }
}
