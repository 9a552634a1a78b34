#include "stack/calibrate/master_store.h"

#include <filesystem>
#include <optional>
#include <system_error>

#include "corvane/core/ascii.h"
#include "corvane/core/error.h"
#include "io/frame.h"
#include "io/input_file.h"
#include "io/metadata.h"
#include "stack/digest.h"
#include "stack/options.h"

namespace corvane::stack {

namespace {

namespace fs = std::filesystem;

constexpr const char* kKeyCard = "MSTKEY";

/// All that samples of frames depend on, in words.
std::string OriginOf(const FrameSet& frames)
{
    std::string text;
    for (int i = 0; i < frames.Count(); ++i) {
        std::error_code ignored;
        const std::string file = io::SplitChoice(frames.Path(i)).file;
        text += FileKey(frames.Path(i)) + '\n' + std::to_string(fs::file_size(file, ignored)) + '\n' +
                std::to_string(fs::last_write_time(file, ignored).time_since_epoch().count()) + '\n' +
                io::StatedRowOrder(frames.Info(i).header).value_or("") + '\n';
    }
    return text;
}

std::string KeyOf(const MasterRecipe& recipe)
{
    return DigestOf(std::string("Corvane " CORVANE_VERSION "\n") + recipe.kind + '\n' + OriginOf(recipe.frames) +
                    recipe.takenOffKind + '\n' +
                    (recipe.takenOff == nullptr ? std::string() : OriginOf(*recipe.takenOff)));
}

/// "Master Dark", "Master Flat-Dark"
std::string TypeOf(std::string kind)
{
    for (std::size_t i = 0; i < kind.size(); ++i) {
        kind[i] = i == 0 || kind[i - 1] == '-' ? Upper(kind[i]) : kind[i];
    }
    return "Master " + kind;
}

io::Header HeaderOf(const MasterRecipe& recipe, const std::string& key)
{
    const FrameSet& frames = recipe.frames;
    io::Header header = frames.Info(0).header;
    header.Set("IMAGETYP", TypeOf(recipe.kind), "kind of frame");
    header.Set("NCOMBINE", frames.Count(), "number of frames combined");
    if (recipe.takenOff != nullptr) {
        header.Set("CALSTAT", recipe.takenOffKind == "bias" ? "B" : "D", "calibration: B bias, D dark");
    }
    header.Set(kKeyCard, key, "number for the files that it is made of");
    header.AddHistory("Corvane " CORVANE_VERSION ": " + recipe.kind + " median of " + std::to_string(frames.Count()) +
                      " from " + frames.Path(0));
    return header;
}

} // namespace

std::string MasterStore::PathOf(const MasterRecipe& recipe, const std::string& key) const
{
    return (fs::path(folder_) / ("master_" + recipe.kind + "_" + key + ".fits")).string();
}

std::shared_ptr<CStlImage> MasterStore::Find(const MasterRecipe& recipe) const
{
    if (!IsKept(recipe)) {
        return nullptr;
    }
    const std::string key = KeyOf(recipe);
    const std::string path = PathOf(recipe, key);
    std::error_code ignored;
    if (!fs::exists(path, ignored)) {
        return nullptr;
    }
    try {
        io::Frame frame = io::Load(path);
        const io::FrameReader& first = recipe.frames.Reader(0);
        if (frame.header.Text(kKeyCard) != key || frame.image.GetWidth() != first.Width() ||
            frame.image.GetHeight() != first.Height()) {
            return nullptr;
        }
        run_.TellFinding("master " + recipe.kind + ": nothing has changed since " + path + " was made");
        auto master = std::make_shared<CStlImage>();
        master->Swap(&frame.image);
        return master;
    } catch (const Error&) { // a damaged one is made again
        return nullptr;
    }
}

void MasterStore::Keep(const MasterRecipe& recipe, const CStlImage& master) const
{
    if (!IsKept(recipe) || master.IsBlankUsed() != 0) {
        return;
    }
    std::error_code error;
    fs::create_directories(folder_, error);
    if (error) {
        throw FileError(folder_, "cannot be made: " + error.message());
    }
    const std::string key = KeyOf(recipe);
    const std::string path = PathOf(recipe, key);
    io::Save(path, master, HeaderOf(recipe, key));
    run_.TellFinding("master " + recipe.kind + ": kept as " + path);
}

} // namespace corvane::stack
