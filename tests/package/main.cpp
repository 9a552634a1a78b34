#include <cstdio>

#include <corvane/corvane.h>

int main()
{
    CStlImage image(-32, 3, 2, 1, 1.0, 0.0, 1);
    image.SetLevel(0, 0.0, 255.0);
    image.SetPixelGrayRaw(2, 1, 55.0F, 0);

    CImgInvert inverted(image);
    inverted.Do(&image, nullptr, 0);
    const float sample = inverted.GetPixelGrayRaw(2, 1, 0);
    std::printf("the inverse of 55 is %g\n", sample);
    return sample == 200.0F ? 0 : 1;
}
