#include "cli/report.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>

#include "cli/report_page.h"
#include "cli/report_pictures.h"
#include "cli/table.h"
#include "corvane/core/error.h"
#include "corvane/core/text.h"
#include "io/output_file.h"
#include "stack/names.h"

namespace corvane::cli {
namespace {

using catalogue::Cell;
using catalogue::kWords;
using catalogue::Table;

constexpr std::array kEndings{".json", ".csv", ".html"};

std::string TransformOf(const stack::FrameReport& light)
{
    return stack::NameOf(stack::kTransformNames, std::optional(light.model));
}

Table TableOf(const stack::Registration& lights)
{
    Table table;
    table.columns = {{"file", kWords},
                     {"used", kWords},
                     {"reference", kWords},
                     {"dx", 3},
                     {"dy", 3},
                     {"angle", 4},
                     {"scale", 6},
                     {"residual", 3},
                     {"matched", 0},
                     {"stars", 0},
                     {"fwhm", 3},
                     {"background"},
                     {"noise"},
                     {"flux_ratio", 4},
                     {"weight", 4},
                     {"reason", kWords},
                     {"transform", kWords},
                     {"values", 0},
                     {"rejected_low", 0},
                     {"rejected_high", 0},
                     {"cosmic_hits", 0}};
    for (std::size_t i = 0; i < lights.frames.size(); ++i) {
        const stack::FrameReport& light = lights.frames[i];
        const auto count = [&](long long stack::RejectedValues::*which) {
            return light.rejected ? Cell(static_cast<double>((*light.rejected).*which)) : Cell();
        };
        table.rows.push_back({light.file,
                              light.used,
                              static_cast<int>(i) == lights.referenceLight,
                              light.dx,
                              light.dy,
                              light.angle,
                              light.scale,
                              light.residual,
                              static_cast<double>(light.matched),
                              static_cast<double>(light.stars),
                              light.fwhm,
                              light.background,
                              light.noise,
                              light.fluxRatio ? Cell(*light.fluxRatio) : Cell(),
                              light.weight,
                              light.reason,
                              TransformOf(light),
                              count(&stack::RejectedValues::values),
                              count(&stack::RejectedValues::low),
                              count(&stack::RejectedValues::high),
                              light.cosmicHits ? Cell(1.0 * *light.cosmicHits) : Cell()});
    }
    return table;
}

std::string ReportText(const std::string& path, const stack::Registration& lights, const io::Frame* stack,
                       const Run& run)
{
    if (path.ends_with(".html")) {
        return ReportPage(lights, stack == nullptr ? "" : DevelopedPicture(*stack, run));
    }
    const Table table = TableOf(lights);
    return path.ends_with(".csv") ? ToCsv(table) : ToText(ToJson(table));
}

std::string Formatted(const char* format, double value)
{
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

/// How a light is placed.
std::string PlaceText(const stack::Options& options, const stack::FrameReport& light)
{
    if (options.align == stack::AlignMethod::kNone) {
        return "used";
    }
    std::string text = "shift" + Formatted(" %+8.2f", light.dx) + Formatted(" %+8.2f", light.dy);
    if (options.align == stack::AlignMethod::kStars) {
        text += "  turn" + Formatted(" %+9.4f", light.angle);
        text += light.map ? "  " + TransformOf(light) + Formatted(" %.3f", light.residual) : "";
        text += light.scale == 1.0 ? "" : "  scale" + Formatted(" %.6f", light.scale);
        text += "  FWHM" + Formatted(" %5.2f", light.fwhm) + "  stars " + std::to_string(light.matched);
    }
    return text;
}

std::string TimesText(const stack::Registration& lights)
{
    std::string text;
    double total = 0.0;
    for (const stack::Lap& lap : lights.laps) {
        text += lap.name + Formatted(" %.1f s, ", lap.seconds);
        total += lap.seconds;
    }
    return text + Formatted("%.1f s in all\n", total);
}

} // namespace

void CheckReport(const std::string& path)
{
    if (std::none_of(kEndings.begin(), kEndings.end(), [&](const char* ending) { return path.ends_with(ending); })) {
        throw NameError(path, "is no name for a report; it must end with .json, .csv or .html");
    }
    io::OutputFile::Check(path);
}

void WriteReport(const std::string& path, const stack::Registration& lights, const io::Frame* stack, const Run& run)
{
    const std::string text = ReportText(path, lights, stack, run);
    io::OutputFile file(path);
    file.Write(text.data(), text.size());
    file.Commit();
}

std::string DepthText(const stack::Registration& lights)
{
    if (!lights.depth) {
        return "";
    }
    const auto& [light, ideal, stack] = *lights.depth;
    return Formatted("noise of the sky: %.4g in the stack", stack) + Formatted(", %.4g in a light", light) +
           Formatted(", %.4g in their best mean", ideal) + Formatted(" (%+.1f %%)\n", 100.0 * (stack / ideal - 1.0));
}

std::string LightsText(const stack::Options& options, const stack::Registration& lights, bool all)
{
    std::size_t width = 0;
    long used = 0;
    for (const stack::FrameReport& light : lights.frames) {
        width = std::max(width, light.file.size());
        used += light.used ? 1 : 0;
    }
    const auto count = static_cast<long>(lights.frames.size());
    std::string text = std::to_string(count) + (count == 1 ? " light, " : " lights, ") + std::to_string(used) +
                       " used, " + std::to_string(count - used) + " rejected\n";
    const bool isPlaced = options.align != stack::AlignMethod::kNone && count > 1;
    for (std::size_t i = 0; i < lights.frames.size(); ++i) {
        const stack::FrameReport& light = lights.frames[i];
        if (light.used && !isPlaced && !all) {
            continue;
        }
        text += "  " + light.file + std::string(width - light.file.size() + 2, ' ');
        text += light.used ? PlaceText(options, light) : "rejected: " + light.reason;
        text += isPlaced && static_cast<int>(i) == lights.referenceLight ? "  (reference)\n" : "\n";
    }
    return text + TimesText(lights);
}

} // namespace corvane::cli
