#include "io/formats/samples.h"

#include <algorithm>

#include "io/error.h"

namespace corvane::io {
namespace {

void SurveyRow(const float* row, int width, const UndefinedTest& isUndefined, SampleSurvey& survey)
{
    for (int x = 0; x < width; ++x) {
        if (isUndefined(row[x])) {
            survey.undefined = true;
            continue;
        }
        survey.fractions |= std::nearbyint(row[x]) != row[x];
        survey.min = std::min(survey.min, row[x]);
        survey.max = std::max(survey.max, row[x]);
    }
}

} // namespace

SampleSurvey Survey(const CImage& image)
{
    SampleSurvey survey;
    const UndefinedTest isUndefined(image);
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        for (int y = 0; y < image.GetHeight(); ++y) {
            SurveyRow(RowOf(image, y, plane), image.GetWidth(), isUndefined, survey);
        }
    }
    return survey;
}

void RefuseUndefined(const std::string& path, const SampleSurvey& survey, const std::string& format)
{
    if (survey.undefined) {
        throw Error(path, format + " cannot hold undefined samples (NaN or blank), of which the image has some; " +
                              "fill them with the step fill, save as FITS or 32-bit float TIFF, or make a picture with "
                              "`corvane render`");
    }
}

} // namespace corvane::io
