#include "stack/sort/find_frames.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <system_error>
#include <utility>

#include "corvane/core/ascii.h"
#include "corvane/core/error.h"
#include "corvane/platform/workers.h"

namespace corvane::stack {

namespace {

namespace fs = std::filesystem;

/// Ends of the names of files that are looked at in folders. PNG and JPEG files there are pictures of something.
constexpr const char* kEndings[] = {".fits", ".fit",  ".fts", ".fz",  ".fits.gz", ".fit.gz", ".fts.gz", ".fits.z",
                                    ".tif",  ".tiff", ".cr2", ".cr3", ".crw",     ".nef",    ".nrw",    ".arw",
                                    ".dng",  ".orf",  ".raf", ".rw2", ".pef",     ".srw"};

struct Entry {
    std::string path;
    std::optional<FrameKind> role;
    std::string folder{}; ///< in which it was found; empty: it is named
};

bool IsFrame(const std::string& name)
{
    const std::string lower = Lower(name);
    return std::any_of(std::begin(kEndings), std::end(kEndings), [&](const char* end) { return lower.ends_with(end); });
}

bool IsHidden(const fs::path& path)
{
    return path.filename().string().starts_with('.');
}

/// The frames in a folder and below, in the order of their names.
std::vector<std::string> FramesIn(const std::string& folder, const std::set<std::string>& skip)
{
    std::vector<std::string> frames;
    std::error_code error;
    fs::recursive_directory_iterator at(folder, fs::directory_options::skip_permission_denied, error);
    for (; !error && at != fs::recursive_directory_iterator(); at.increment(error)) {
        const std::string path = at->path().string();
        std::error_code ignored;
        const bool isPassed = IsHidden(at->path()) || skip.count(FileKey(path)) > 0;
        if (isPassed && at->is_directory(ignored)) {
            at.disable_recursion_pending();
        }
        if (!isPassed && IsFrame(path) && at->is_regular_file(ignored)) {
            frames.push_back(path);
        }
    }
    if (error) {
        throw FileError(folder, "cannot be searched: " + error.message());
    }
    if (frames.empty()) {
        throw FileError(folder, "holds no frames");
    }
    std::sort(frames.begin(), frames.end());
    return frames;
}

/// Lists what options name, files first, each file once but for lights, of which the options tell that.
class Listing {
public:
    Listing(const Options& asked, const std::vector<std::string>& skip) : mayMix_(asked.allowMixed)
    {
        for (const std::string& path : skip) {
            if (!path.empty()) { // an output that is not wanted
                skip_.insert(FileKey(path));
            }
        }
        const std::pair<const std::vector<std::string>&, std::optional<FrameKind>> lists[] = {
            {asked.lights, std::nullopt},
            {asked.bias, FrameKind::kBias},
            {asked.darks, FrameKind::kDark},
            {asked.flats, FrameKind::kFlat},
            {asked.flatDarks, FrameKind::kFlatDark}};
        for (const bool isFolder : {false, true}) {
            for (const auto& [names, role] : lists) {
                for (const std::string& name : names) {
                    std::error_code ignored;
                    if (fs::is_directory(name, ignored) == isFolder) {
                        isFolder ? AddFolder(name, role) : AddFile(name, role);
                    }
                }
            }
        }
    }

    const std::vector<Entry>& Entries() const { return entries_; }
    const std::vector<std::string>& Warnings() const { return warnings_; }

    /// True for a file among the lights that an option names for what it is. One that is a light is refused.
    bool IsNamedAgain(const FoundFrame& frame)
    {
        const auto named = frame.role ? roles_.end() : roles_.find(FileKey(frame.facts.file));
        if (named == roles_.end()) {
            return false;
        }
        if (frame.facts.kind.value_or(FrameKind::kLight) == FrameKind::kLight) {
            Refuse(frame.facts.file, named->second, FrameKind::kLight);
        }
        return frame.facts.kind == named->second;
    }

private:
    void Refuse(const std::string& path, FrameKind role, FrameKind other)
    {
        const std::string text = std::string("is named as a ") + NameOf(other) + ", too";
        if (!mayMix_) {
            throw ParameterError(NameOf(role), path, text + "; each file has one role");
        }
        warnings_.push_back(path + ": " + text);
    }

    void AddFile(const std::string& path, const std::optional<FrameKind>& role)
    {
        const std::string key = FileKey(path);
        seen_.insert(key);
        if (role) {
            const FrameKind first = roles_.emplace(key, *role).first->second;
            if (first != *role) {
                Refuse(path, *role, first);
            }
        }
        entries_.push_back({path, role});
    }

    void AddFolder(const std::string& folder, const std::optional<FrameKind>& role)
    {
        for (const std::string& path : FramesIn(folder, skip_)) {
            if (seen_.insert(FileKey(path)).second) {
                entries_.push_back({path, role, folder});
            }
        }
    }

    bool mayMix_;
    std::set<std::string> skip_;
    std::set<std::string> seen_;
    std::map<std::string, FrameKind> roles_; ///< of files, what an option names them for first
    std::vector<Entry> entries_;
    std::vector<std::string> warnings_;
};

/// Opens a frame of a folder or one that is named; says why where a folder's cannot be opened.
std::string Look(const Entry& entry, FoundFrame& found)
{
    const bool isNamed = entry.folder.empty();
    const std::string root = isNamed ? fs::path(entry.path).parent_path().string() : entry.folder;
    try {
        found = {FactsOf(io::OpenFrame(entry.path)->Info(), entry.path, root), entry.role, isNamed};
    } catch (const Error& error) {
        if (isNamed) {
            throw;
        }
        return error.Reason();
    }
    return "";
}

} // namespace

std::vector<FoundFrame> FindFrames(const Options& asked, const std::vector<std::string>& skip, const Run& run,
                                   SortedNight& night)
{
    Listing listing(asked, skip);
    const std::vector<Entry>& entries = listing.Entries();
    std::vector<FoundFrame> found(entries.size());
    std::vector<std::string> faults(entries.size());
    Stage stage(run, "Reading headers...", static_cast<int>(entries.size()));
    const auto look = [&](int i) { faults[i] = Look(entries[i], found[i]); };
    platform::ForBlocks(static_cast<int>(entries.size()), run.Threads(), look, [&](int) { stage.Step(); });
    std::vector<FoundFrame> frames;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (!faults[i].empty()) {
            night.leftOut.push_back({{entries[i].path}, faults[i]});
            night.warnings.push_back(entries[i].path + ": left out: " + faults[i]);
        } else if (!listing.IsNamedAgain(found[i])) {
            frames.push_back(std::move(found[i]));
        }
    }
    night.warnings.insert(night.warnings.end(), listing.Warnings().begin(), listing.Warnings().end());
    return frames;
}

} // namespace corvane::stack
