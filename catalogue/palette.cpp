// Colour images mixed of frames through narrow filters.

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "catalogue/colour_header.h"
#include "catalogue/frame_balance.h"
#include "catalogue/mix_matrix.h"
#include "catalogue/operations.h"
#include "catalogue/registration.h"
#include "catalogue/undefined.h"
#include "corvane/colour/plane_mix.h"
#include "corvane/core/error.h"
#include "corvane/platform/memory_exception.h"

namespace corvane::catalogue {
namespace {

void CheckColumns(const MixMatrix& matrix, const std::string& palette, std::size_t lines)
{
    const std::size_t columns = matrix.front().size();
    if (columns != lines) {
        throw InputError("lines", "is one of " + std::to_string(lines) + (lines == 1 ? " image" : " images") +
                                      "; the palette " + palette + " mixes " + std::to_string(columns));
    }
}

/// Frames that are not to be matched must lie on one grid as they are.
void CheckOneSize(const std::vector<io::Frame>& frames)
{
    const CStlImage& first = frames[0].image;
    for (const io::Frame& frame : frames) {
        if (frame.image.GetWidth() != first.GetWidth() || frame.image.GetHeight() != first.GetHeight()) {
            throw FileError(frame.image.GetOrgFileName(), std::string("has another size than ") +
                                                              first.GetOrgFileName() +
                                                              "; align = stars brings both onto one grid");
        }
    }
}

/// Gives a plane the levels of its mix, which a negative part turns over.
void MixLevels(const std::vector<WeightedPlane>& mix, int plane, CStlImage& result)
{
    double low = 0.0;
    double high = 0.0;
    for (const WeightedPlane& of : mix) {
        const double ends[] = {of.weight * of.image->GetLevelMin(0), of.weight * of.image->GetLevelMax(0)};
        low += std::min(ends[0], ends[1]);
        high += std::max(ends[0], ends[1]);
    }
    if (low < high) {
        result.SetLevel(plane, low, high);
    }
}

CStlImage Mixed(const std::vector<io::Frame>& frames, const MixMatrix& matrix, const Run& run)
{
    CStlImage result;
    if (result.Create(frames[0].image) == 0 || result.ToColor() == 0) {
        AfxThrowMemoryException();
    }
    Stage stage(run, "Mixing colours...", result.GetHeight() * result.GetPlanes());
    for (int plane = 0; plane < result.GetPlanes(); ++plane) {
        std::vector<WeightedPlane> mix;
        for (std::size_t i = 0; i < frames.size(); ++i) {
            mix.push_back({&frames[i].image, 0, matrix[static_cast<std::size_t>(plane)][i]});
        }
        MixPlanes(mix, 0.0, result, plane, stage);
        MixLevels(mix, plane, result);
    }
    result.SetOwnLevel(HaveOwnLevels(frames) ? 1 : 0);
    return result;
}

Outputs RunPalette(Inputs& inputs, const Arguments& arguments, const Run& run)
{
    std::vector<io::Frame> frames = std::move(inputs["lines"]);
    const std::string& palette = arguments.Text("palette");
    const MixMatrix matrix = ReadMixMatrix(palette);
    CheckColumns(matrix, palette, frames.size());
    const Registration registration = RegistrationBy(arguments.Text("align"), frames.size());
    if (registration.align == "none") {
        CheckOneSize(frames);
    }
    const std::vector<int> planes(frames.size(), 0);
    const std::vector<Fit> fits = FitFrames(frames, planes, registration, run);
    std::for_each(frames.begin(), frames.end(), MarkUndefined);
    Balance(frames, planes, fits, arguments.Text("balance"), run);
    const std::vector<double> outside{1.0 * arguments.Whole("outside")};
    for (std::size_t i = 1; i < frames.size(); ++i) {
        BringOnto(frames[0], frames[i], fits[i], registration.frames[i], outside, run);
    }
    CStlImage result = Mixed(frames, matrix, run);
    DescribeColour(frames, fits);
    frames[0].header.AddHistory("palette: " + MatrixText(matrix));
    frames[0].image = std::move(result);
    Outputs outputs;
    outputs.emplace("image", std::move(frames[0]));
    outputs.emplace("fits", TableOf(fits));
    return outputs;
}

Parameter MatrixParameter()
{
    return {.name = "palette",
            .kind = Kind::Matrix,
            .summary = "what part of each frame goes into red, green and blue",
            .choices = PaletteNames(),
            .isWord = true};
}

std::string PaletteHelp()
{
    return "Each sample of red, green and blue is the sum of those of the frames, each times a number. The palettes, "
           "with a number for each frame in its order: " +
           PalettesText() +
           ". FILE is a text file of such numbers: three lines, for red, green and blue, with a number for each frame; "
           "# begins a comment. The result has the size and header of the first frame, onto which the others are "
           "brought by their stars. The usual balance is light, since oxygen and sulphur shine fainter than hydrogen "
           "and all would be green without." +
           std::string(kBalanceHelp) +
           " Take gradients of the sky out of the frames first, with the step background. What is undefined in a frame "
           "that has a part in a colour is undefined there.";
}

} // namespace

std::vector<Operation> PaletteOperations()
{
    return {
        {.name = "palette",
         .summary = "make a colour image of frames through narrow filters",
         .help = PaletteHelp(),
         .inputs = {{.name = "lines",
                     .summary = "the frames: Ha, OIII and SII, or those that the matrix is for",
                     .planes = Planes::Mono,
                     .count = Count::Several}},
         .parameters = {MatrixParameter(), StarsOrNone("the first"), BalanceParameter("light"),
                        WholeParameter("outside", "the value of samples outside of a frame", "counts", kAnyNumber, 0)},
         .outputs = {Output{},
                     {.name = "fits",
                      .kind = OutputKind::Table,
                      .summary = "where each frame lies on the first: dx, dy, angle, scale; and by how many stars "
                                 "it is known"}},
         .skies = Skies::Balanced,
         .run = RunPalette}};
}

} // namespace corvane::catalogue
