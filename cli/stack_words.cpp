#include "cli/stack_words.h"

#include <filesystem>

#include "io/frame.h"

namespace corvane::cli {

std::string StackWords::Stars() const
{
    const std::filesystem::path path(output.path);
    const std::string name = path.stem().string() + "_stars" + path.extension().string();
    return wantsBoth ? (path.parent_path() / name).string() : "";
}

std::vector<std::string> StackWords::Others() const
{
    return {preview, coverageMap, noiseMap, weightMap, rejectMap, lights.report, Stars(), savePlan};
}

void WantMaps(const StackWords& words, stack::Options& options)
{
    if (words.withMaps) {
        stack::WantAllMaps(options);
    }
    options.wantsCoverage |= !words.coverageMap.empty();
    options.wantsNoise |= !words.noiseMap.empty();
    options.wantsWeights |= !words.weightMap.empty();
    options.wantsRejected |= !words.rejectMap.empty();
}

void CheckFiles(const StackWords& words, const std::vector<std::string>& inputs,
                const std::vector<std::string>& registered)
{
    io::CheckSave(words.output.path, words.output.save);
    if (!words.preview.empty()) {
        io::CheckPicture(words.preview, words.picture.format);
    }
    if (words.withMaps && !io::HoldsExtensions(words.output.path)) {
        throw NameError(words.output.path, "its format holds one image; --with-maps takes FITS");
    }
    for (const Map& map : kMaps) {
        if (const std::string& file = words.*map.file; !file.empty()) {
            io::CheckSave(file, {});
        }
    }
    std::vector<std::string> others = words.Others();
    others.insert(others.end(), registered.begin(), registered.end());
    CheckOutputs(words.output, inputs, others);
}

} // namespace corvane::cli
