#include "stack/sort/frame_kind.h"

#include <algorithm>
#include <filesystem>
#include <vector>

#include "corvane/core/ascii.h"

namespace corvane::stack {

namespace {

struct KindWord {
    std::string_view word;
    FrameKind kind;
    bool isForNames; ///< also where a file or folder may be called after what it shows
};

constexpr KindWord kWords[] = {{"light", FrameKind::kLight, true},       {"object", FrameKind::kLight, false},
                               {"science", FrameKind::kLight, false},    {"target", FrameKind::kLight, false},
                               {"bias", FrameKind::kBias, true},         {"biase", FrameKind::kBias, true},
                               {"zero", FrameKind::kBias, false},        {"offset", FrameKind::kBias, false},
                               {"dark", FrameKind::kDark, true},         {"flat", FrameKind::kFlat, true},
                               {"skyflat", FrameKind::kFlat, true},      {"domeflat", FrameKind::kFlat, true},
                               {"twilightflat", FrameKind::kFlat, true}, {"darkflat", FrameKind::kFlatDark, true},
                               {"flatdark", FrameKind::kFlatDark, true}};

constexpr const char* kKindCards[] = {"IMAGETYP", "IMAGETYPE", "FRAMETYP", "FRAMETYPE", "OBSTYPE", "FRAME"};

constexpr std::size_t kShortestWord = 3; // of a folder's name, whose numbers may have units

/// The words of a text in small letters; all else stands between words.
std::vector<std::string> WordsOf(std::string_view text)
{
    std::vector<std::string> words(1);
    for (const char c : text) {
        const char letter = Lower(c);
        if (letter >= 'a' && letter <= 'z') {
            words.back() += letter;
        } else if (!words.back().empty()) {
            words.emplace_back();
        }
    }
    words.erase(std::remove(words.begin(), words.end(), ""), words.end());
    return words;
}

/// A word without what it may be joined with: "masterdark", "flatfield", "darks".
std::string_view Stem(std::string_view word)
{
    if (word.starts_with("master") && word.size() > 6) {
        word.remove_prefix(6);
    }
    for (const std::string_view ending : {"s", "frame", "field"}) {
        if (word.ends_with(ending) && word != "bias") {
            word.remove_suffix(ending.size());
        }
    }
    return word;
}

std::optional<FrameKind> KindOfWord(std::string_view word, bool isName)
{
    for (const KindWord& known : kWords) {
        if (known.word == Stem(word) && (known.isForNames || !isName)) {
            return known.kind;
        }
    }
    return std::nullopt;
}

/// The first kind that words name; a dark next to a flat is a dark of flats.
std::optional<FrameKind> KindOfWords(const std::vector<std::string>& words, bool isName)
{
    for (std::size_t i = 0; i < words.size(); ++i) {
        const auto kind = KindOfWord(words[i], isName);
        if (!kind) {
            continue;
        }
        const FrameKind next = KindOfWord(i + 1 < words.size() ? words[i + 1] : "", isName).value_or(*kind);
        const bool isBoth = (*kind == FrameKind::kDark && next == FrameKind::kFlat) ||
                            (*kind == FrameKind::kFlat && next == FrameKind::kDark);
        return isBoth ? FrameKind::kFlatDark : kind;
    }
    return std::nullopt;
}

/// What a folder is for whose name says nothing else: "Dark Shark" shows something.
std::optional<FrameKind> KindOfFolder(const std::string& name)
{
    const std::vector<std::string> words = WordsOf(name);
    const auto isOther = [](const std::string& word) {
        return word.size() >= kShortestWord && word != "master" && word != "masters" && word != "frames" &&
               word != "frame" && word != "fields" && word != "field" && !KindOfWord(word, true);
    };
    return std::any_of(words.begin(), words.end(), isOther) ? std::nullopt : KindOfWords(words, true);
}

} // namespace

const char* NameOf(FrameKind kind)
{
    constexpr const char* kNames[] = {"light", "bias", "dark", "flat", "flat-dark"};
    return kNames[static_cast<int>(kind)];
}

std::optional<FrameKind> StatedKind(const io::Header& header)
{
    for (const char* card : kKindCards) {
        if (const auto kind = KindOfWords(WordsOf(header.Text(card).value_or("")), false)) {
            return kind;
        }
    }
    return std::nullopt;
}

std::optional<FrameKind> KindByName(const std::string& path, const std::string& root)
{
    const std::filesystem::path file(path);
    for (std::filesystem::path folder = file.parent_path(); !folder.empty(); folder = folder.parent_path()) {
        if (const auto kind = KindOfFolder(folder.filename().string())) {
            return kind;
        }
        if (folder == std::filesystem::path(root) || folder == folder.parent_path()) {
            break;
        }
    }
    return KindOfWords(WordsOf(file.stem().string()), true);
}

bool StatesMaster(const io::Header& header)
{
    const auto isMaster = [&](const char* card) {
        const std::vector<std::string> words = WordsOf(header.Text(card).value_or(""));
        return !words.empty() && words.front().starts_with("master");
    };
    return std::any_of(std::begin(kKindCards), std::end(kKindCards), isMaster);
}

} // namespace corvane::stack
