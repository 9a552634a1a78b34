// Construction, copying and display levels.

#include "corvane/core/stl_image.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>

#include "corvane/platform/messages.h"

CStlImage::CStlImage()
{
    Init();
}

CStlImage::CStlImage(int bits, int width, int height, int planes, double bscale, double bzero, int flag, HWND window,
                     const char* text)
    : CImage(bits, width, height, planes, bscale, bzero, flag, window, text)
{
    Init();
}

CStlImage::CStlImage(const CStlImage& source, HWND window, const char* text)
    : CImage(source, window, text), stdPt_{source.stdPt_[0], source.stdPt_[1]}, stdCtr_(source.stdCtr_),
      progressWindow_(source.progressWindow_)
{}

CStlImage::CStlImage(std::shared_ptr<CVmImage> samples) : CImage(std::move(samples))
{
    if (GetBytesPixel() != 4) {
        throw std::invalid_argument("samples of " + std::to_string(GetBytesPixel()) + " bytes; floats have 4");
    }
    Init();
}

CStlImage::~CStlImage() = default;

CStlImage CStlImage::Shared() const
{
    CStlImage shared;
    shared.TakePoints(*this);
    shared.ShareWith(*this);
    return shared;
}

CStlImage& CStlImage::operator=(const CStlImage& source)
{
    return CopyImage(source);
}

CStlImage& CStlImage::CopyImage(const CStlImage& source, HWND window, const char* text)
{
    TakePoints(source);
    CImage::CopyImage(source, window, text);
    return *this;
}

int CStlImage::Create(const CStlImage& source, HWND window, const char* text)
{
    TakePoints(source);
    return CImage::Create(source, window, text);
}

/// Takes what the working image adds to the record: the progress window and the reference points.
void CStlImage::TakePoints(const CStlImage& source)
{
    progressWindow_ = source.progressWindow_;
    std::copy_n(source.stdPt_, 2, stdPt_);
    stdCtr_ = source.stdCtr_;
}

void CStlImage::Swap(CStlImage* other)
{
    std::swap(progressWindow_, other->progressWindow_);
    std::swap(stdPt_, other->stdPt_);
    std::swap(stdCtr_, other->stdCtr_);
    CImage::Swap(other);
}

int CStlImage::AttachDIB(HDIB dib)
{
    return CImage::AttachDIB(dib) == 0 ? 0 : ChangeBits(-32, 1, 1, nullptr, nullptr);
}

void CStlImage::Init()
{
    progressWindow_ = corvane::platform::GetMainWindow();
    std::fill_n(minPixel_, 3, 0.0);
    std::fill_n(maxPixel_, 3, 0.0);
    InitStdPt();
}

void CStlImage::SetProgressHandle(HWND window)
{
    progressWindow_ = window;
}
