#include "catalogue/background.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "catalogue/image_beside.h"
#include "corvane/core/blank.h"
#include "corvane/core/error.h"
#include "corvane/core/text.h"
#include "corvane/core/walk.h"

namespace corvane::catalogue {
namespace {

stars::SkyForm FormOf(const std::string& model)
{
    return model == "mesh"         ? stars::SkyForm::kMesh
           : model == "polynomial" ? stars::SkyForm::kPolynomial
                                   : stars::SkyForm::kSpline;
}

/// Takes a model off a row, or divides by it, and brings its median back; blanks stay.
void FlattenRow(const double* sky, double median, bool divides, const BlankTest& isBlank, float* row, int count)
{
    for (int x = 0; x < count; ++x) {
        const double v = row[x];
        const double flat = divides ? v / sky[x] * median : v - sky[x] + median;
        row[x] = isBlank(v) ? row[x] : static_cast<float>(flat);
    }
}

/// Calls visit(row, sky, model) for each row of an image's planes and what the models of these say of it.
template <class Visit>
void WalkModels(CStlImage& image, const std::vector<stars::SkyModel>& models, const char* text, const Run& run,
                Visit visit)
{
    const RowBlocks blocks(WorkingArea(image, nullptr), image.GetPlanes());
    Stage stage(run, text, image.GetHeight() * image.GetPlanes());
    WalkBlocks(blocks, image, {}, stage, 1, [&](const RowBlock& block) {
        const stars::SkyModel& model = models[static_cast<std::size_t>(block.plane)];
        std::vector<double> sky(static_cast<std::size_t>(image.GetWidth()));
        for (int y = block.first; y < block.end; ++y) {
            model.FillRow(y, sky.data());
            visit(image.GetImageAdr(0, y, block.plane), sky, model);
        }
    });
}

void SaveModel(const std::string& path, const std::vector<stars::SkyModel>& models, const io::Frame& frame,
               const Run& run)
{
    CStlImage image = EmptyLike(frame.image);
    WalkModels(image, models, "Drawing the sky...", run,
               [](float* row, const std::vector<double>& sky, const stars::SkyModel&) {
                   std::transform(sky.begin(), sky.end(), row, [](double v) { return static_cast<float>(v); });
               });
    SaveBeside(path, image, frame);
}

void RunBackground(io::Frame& frame, const Arguments& arguments, const Run& run)
{
    const bool divides = arguments.Text("mode") == "divide";
    const std::optional<int> degree = arguments.Has("degree") ? std::optional(arguments.Whole("degree")) : std::nullopt;
    const std::vector<stars::SkyModel> models = MeasureSkies(frame.image, FormOf(arguments.Text("model")), degree, run);
    for (const stars::SkyModel& model : models) {
        if (divides && model.Least() <= 0.0) {
            throw arguments.Refusal("mode",
                                    "must be subtract, since the sky goes down to " + NumberText(model.Least()));
        }
    }
    if (arguments.Has("model-file")) {
        SaveModel(arguments.Text("model-file"), models, frame, run);
    }
    const BlankTest isBlank(frame.image);
    const int width = frame.image.GetWidth();
    WalkModels(frame.image, models, "Flattening the sky...", run,
               [&](float* row, const std::vector<double>& sky, const stars::SkyModel& model) {
                   FlattenRow(sky.data(), model.Median(), divides, isBlank, row, width);
               });
}

} // namespace

std::vector<stars::SkyModel> MeasureSkies(const CStlImage& image, stars::SkyForm form, std::optional<int> degree,
                                          const Run& run)
{
    Stage stage(run, "Measuring the sky...", image.GetPlanes());
    std::vector<stars::SkyModel> models;
    Run silent;
    silent.threads = run.threads;
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        std::optional<stars::SkyModel> model = stars::FitSkyModel(image, plane, form, degree, silent);
        if (!model) {
            throw InputError("image", "has a plane without any sky to measure");
        }
        models.push_back(std::move(*model));
        stage.Step();
    }
    return models;
}

Operation Background()
{
    return {
        .name = "background",
        .summary = "take gradients out of the sky",
        .help =
            "Measures the sky of each plane, takes it off or divides it out, and brings its median back. Stars are "
            "clipped off in cells of the frame, and cells that stand above their surroundings, as nebulae and galaxies "
            "make them, are left out: those more than 3 standard deviations of the darker ones from the model, or "
            "about which half of the cells are more than 0.75 above it, round after round. A polynomial is told by the "
            "rest of the frame and keeps the light of a nebula that fills half of it. Where one fades slowly and "
            "leaves no sky alone, its light is told from the sky by the way it fades. Spline follows what is "
            "left as well, and mesh all that is wider than a hundred pixels, nebulae too. Subtract what light adds, as "
            "the moon or a town; divide out what a flat should have. Cells of one value are no sky.",
        .parameters = {ChoiceParameter("mode", "what is done with the model", {"subtract", "divide"}, "subtract"),
                       ChoiceParameter("model", "what the sky is made of", {"polynomial", "spline", "mesh"},
                                       "polynomial"),
                       WholeParameter("degree",
                                      "of the polynomial, also below the spline; a lower one where the sky is hidden",
                                      "", {1, stars::SkyPolynomial::kMostDegree}, "the lowest that the sky needs"),
                       {.name = "model-file",
                        .kind = Kind::Output,
                        .summary = "an image to write: the sky that was taken off or divided out",
                        .whenAbsent = "none is written"}},
        .footprint = Always(kWholeImage),
        .run = RunBackground};
}

} // namespace corvane::catalogue
