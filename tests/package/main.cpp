#include <cstdio>
#include <filesystem>

#include <corvane/corvane.h>

#include "io/frame.h"
#include "stack/stack.h"

// Inverts a sample, writes the image, and stacks the file alone: one call into each library of the package.
int main()
{
    CStlImage image(-32, 3, 2, 1, 1.0, 0.0, 1);
    image.SetPixelGrayRaw(2, 1, 55.0F, 0);
    CImgInvert inverted(image);
    inverted.Do(&image, nullptr, 0);
    corvane::io::Save("inverted.fits", inverted, {});

    corvane::stack::Options options;
    options.lights = {"inverted.fits"};
    const corvane::stack::Result result = corvane::stack::Stack(options);
    std::filesystem::remove("inverted.fits");

    const float sample = result.image.GetPixelGrayRaw(2, 1, 0);
    std::printf("the inverse of 55 is %g\n", sample);
    return sample == 200.0F ? 0 : 1;
}
