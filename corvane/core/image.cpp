#include "corvane/core/image.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "corvane/core/noted_rows.h"
#include "corvane/platform/memory_exception.h"

namespace {

constexpr std::size_t kLeastLevels = 3;

void ResizeLevels(corvane::ImageRecord& record)
{
    const std::size_t count = std::max(kLeastLevels, static_cast<std::size_t>(std::max(record.planes, 0)));
    for (std::vector<double>* levels : {&record.levelMin, &record.levelMax, &record.levelRange,
                                        &record.orgDefaultLevelMin, &record.orgDefaultLevelMax}) {
        levels->resize(count, levels->front());
    }
}

std::shared_ptr<CVmImage> MakeStore(const corvane::ImageRecord& record, CVmImage::Contents contents)
{
    const int bytes = std::abs(record.bitsPixel) / 8;
    return std::make_shared<CVmImage>(record.width, record.height, record.planes, bytes, contents);
}

template <class T>
int Found(const std::optional<T>& keyword, T* value, T otherwise)
{
    *value = keyword.value_or(std::move(otherwise));
    return keyword.has_value() ? 1 : 0;
}

} // namespace

CImage::CImage() = default;

CImage::CImage(corvane::ImageRecord record, CVmImage::Contents contents)
    : store_(MakeStore(record, contents)), record_(std::move(record))
{}

CImage::CImage(int bits, int width, int height, int planes, double bscale, double bzero, int flag, HWND window,
               const char* text)
{
    const corvane::ProgressNotice notice(window, text, 0);
    record_.bitsPixel = bits;
    record_.width = planes < 1 ? 0 : std::max(width, 0);
    record_.height = planes < 1 ? 0 : std::max(height, 0);
    SetPlanes(std::max(planes, 0));
    record_.bscale = bscale;
    record_.bzero = bzero;
    record_.orgBitsPixel = bits;
    record_.orgPlanes = record_.planes;
    ResizeLevels(record_);
    store_ = MakeStore(record_, flag != 0 ? CVmImage::Contents::kZero : CVmImage::Contents::kUndefined);
}

CImage::CImage(const CImage& other, HWND window, const char* text)
    : store_(other.store_ == nullptr ? nullptr : std::make_shared<CVmImage>(*other.store_, window, text)),
      record_(other.record_)
{}

CImage::CImage(std::shared_ptr<CVmImage> samples) : store_(std::move(samples))
{
    if (store_ == nullptr) {
        return;
    }
    record_.bitsPixel = store_->GetBytesSample() == 4 ? -32 : store_->GetBytesSample() * 8;
    record_.width = store_->GetWidth();
    record_.height = store_->GetHeight();
    SetPlanes(store_->GetPlanes());
    record_.orgBitsPixel = record_.bitsPixel;
    record_.orgPlanes = record_.planes;
    ResizeLevels(record_);
}

CImage::CImage(CImage&& other) noexcept : store_(std::move(other.store_)), record_(std::move(other.record_))
{
    other.record_.width = 0;
    other.record_.height = 0;
    other.SetPlanes(0);
}

CImage& CImage::operator=(CImage&& other) noexcept
{
    CImage taken(std::move(other));
    CImage::Swap(&taken);
    return *this;
}

CImage::~CImage() = default;

CImage& CImage::operator=(const CImage& other)
{
    return CopyImage(other);
}

CImage& CImage::CopyImage(const CImage& other, HWND window, const char* text)
{
    if (this != &other) {
        CImage copy(other, window, text);
        CImage::Swap(&copy);
    }
    return *this;
}

int CImage::Create(const CImage& other, HWND window, const char* text)
{
    return corvane::OrNothing([&] {
        const corvane::ProgressNotice notice(window, text, 0);
        CImage created(other.record_, CVmImage::Contents::kZero);
        CImage::Swap(&created);
        return 1;
    });
}

int CImage::CreateCanvas(const CImage& other, int width, int height, HWND window, const char* text)
{
    if (width < 1 || height < 1) {
        return 0;
    }
    return corvane::OrNothing([&] {
        const corvane::ProgressNotice notice(window, text, 0);
        CImage canvas(other.Resized(width, height), CVmImage::Contents::kUndefined);
        CImage::Swap(&canvas);
        return 1;
    });
}

void CImage::Swap(CImage* other)
{
    std::swap(store_, other->store_);
    std::swap(record_, other->record_);
}

void CImage::ShareWith(const CImage& other)
{
    record_ = other.record_;
    store_ = other.store_;
}

/// The record with another size.
corvane::ImageRecord CImage::Resized(int width, int height) const
{
    corvane::ImageRecord record = record_;
    record.width = width;
    record.height = height;
    return record;
}

int CImage::ChangeSize(int width, int height, HWND window, const char* text)
{
    return width < 1 || height < 1 ? 0 : corvane::OrNothing([&] {
        CImage resized(Resized(width, height), CVmImage::Contents::kZero);
        CopyInto(resized, window, text);
        CImage::Swap(&resized);
        return 1;
    });
}

/// Copies the samples that lie in both.
void CImage::CopyInto(CImage& resized, HWND window, const char* text) const
{
    const int width = std::min(resized.GetWidth(), GetWidth());
    const int rows = store_ == nullptr ? 0 : std::max(std::min(resized.GetHeight(), GetHeight()), 0);
    const std::size_t bytes = static_cast<std::size_t>(width) * static_cast<std::size_t>(GetBytesPixel());
    corvane::ForNotedRows(resized, *this, width, rows, window, text, [&](int y, int plane) {
        std::memcpy(resized.GetImageAdr(0, y, plane), GetImageAdr(0, y, plane, 1), bytes);
    });
}

int CImage::ChangePlanes(int planes, HWND window, const char* text)
{
    return planes != 1 && planes != 3 ? 0 : corvane::OrNothing([&] {
        corvane::ImageRecord record = record_;
        record.planes = planes;
        ResizeLevels(record);
        CImage changed(std::move(record), CVmImage::Contents::kZero);
        changed.SetPlanes(planes); // and the dimension
        CopyPlanes(changed, window, text);
        CImage::Swap(&changed);
        return 1;
    });
}

/// Copies the planes, the first one also where this image has none, with its levels.
void CImage::CopyPlanes(CImage& changed, HWND window, const char* text) const
{
    const int planes = changed.GetPlanes();
    const int before = GetPlanes();
    const std::size_t bytes = static_cast<std::size_t>(GetWidth()) * static_cast<std::size_t>(GetBytesPixel());
    const auto sourceOf = [=](int plane) { return plane < before ? plane : 0; };
    for (int plane = 0; plane < planes; ++plane) {
        if (sourceOf(plane) != plane) {
            changed.SetLevel(plane, GetLevelMin(0), GetLevelMax(0));
            changed.SetOrgDefaultLevel(plane, GetOrgDefaultLevelMin(0), GetOrgDefaultLevelMax(0));
        }
    }
    const int rows = store_ == nullptr ? 0 : GetHeight();
    corvane::ForNotedRows(changed, *this, GetWidth(), rows, window, text, [&](int y, int plane) {
        std::memcpy(changed.GetImageAdr(0, y, plane), GetImageAdr(0, y, sourceOf(plane), 1), bytes);
    });
}

int CImage::SetLevel(int plane, double min, double max)
{
    if (plane < 0 || Index(plane) >= record_.levelMin.size()) {
        return 0;
    }
    record_.levelMin[Index(plane)] = min;
    record_.levelMax[Index(plane)] = max;
    record_.levelRange[Index(plane)] = max - min;
    return 1;
}

void CImage::SetOrgDefaultLevel(int plane, double min, double max)
{
    if (plane >= 0 && Index(plane) < record_.orgDefaultLevelMin.size()) {
        record_.orgDefaultLevelMin[Index(plane)] = min;
        record_.orgDefaultLevelMax[Index(plane)] = max;
    }
}

const corvane::AxisCoordinates* CImage::Axis(int axis) const
{
    const bool known = axis >= 0 && Index(axis) < record_.coordinates.axes.size();
    return known ? &record_.coordinates.axes[Index(axis)] : nullptr;
}

corvane::AxisCoordinates* CImage::Axis(int axis)
{
    return const_cast<corvane::AxisCoordinates*>(std::as_const(*this).Axis(axis));
}

int CImage::GetCRPix(int axis, double* value) const
{
    const auto* known = Axis(axis);
    return Found(known ? known->referencePixel : std::nullopt, value, 0.0);
}

void CImage::SetCRPix(int axis, double value)
{
    if (auto* known = Axis(axis)) {
        known->referencePixel = value;
    }
}

int CImage::GetCDelt(int axis, double* value) const
{
    const auto* known = Axis(axis);
    return Found(known ? known->increment : std::nullopt, value, 1.0);
}

void CImage::SetCDelt(int axis, double value)
{
    if (auto* known = Axis(axis)) {
        known->increment = value;
    }
}

int CImage::GetCRVal(int axis, double* value) const
{
    const auto* known = Axis(axis);
    return Found(known ? known->referenceValue : std::nullopt, value, 0.0);
}

void CImage::SetCRVal(int axis, double value)
{
    if (auto* known = Axis(axis)) {
        known->referenceValue = value;
    }
}

int CImage::GetCType(int axis, CString* type) const
{
    const auto* known = Axis(axis);
    return Found(known ? known->type : std::nullopt, type, CString());
}

int CImage::GetCUnit(int axis, CString* unit) const
{
    const auto* known = Axis(axis);
    return Found(known ? known->unit : std::nullopt, unit, CString());
}

void CImage::SetCUnit(int axis, const CString& unit)
{
    if (auto* known = Axis(axis)) {
        known->unit = unit;
    }
}

void CImage::SetType(const CString& type, int axis)
{
    if (auto* known = Axis(axis)) {
        known->type = type;
    }
}

int CImage::GetLTMtx(tagMATRIX2_2* matrix) const
{
    *matrix = record_.coordinates.matrix;
    return record_.coordinates.matrixKind;
}

void CImage::SetLTMtx(tagMATRIX2_2* matrix, int kind)
{
    record_.coordinates.matrix = kind == corvane::kNoTransform ? tagMATRIX2_2{1.0, 0.0, 0.0, 1.0} : *matrix;
    record_.coordinates.matrixKind = kind;
}

int CImage::IsWCS() const
{
    const auto& axes = record_.coordinates.axes;
    return std::all_of(axes.begin(), axes.begin() + 2,
                       [](const auto& axis) { return axis.type.has_value() && axis.referenceValue.has_value(); });
}

int CImage::GetDispAxis(int* axis) const
{
    return Found(record_.coordinates.dispersionAxis, axis, 0);
}
