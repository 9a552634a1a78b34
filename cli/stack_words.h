#pragma once

#include <string>
#include <vector>

#include "cli/light_words.h"
#include "cli/output.h"
#include "cli/picture.h"
#include "stack/stack.h"

namespace corvane::cli {

/// What `corvane stack` was asked for.
struct StackWords {
    LightWords lights;
    Output output;
    std::string preview;
    PictureWords picture; // how the preview shows the stack
    std::string coverageMap;
    std::string noiseMap;
    std::string weightMap;
    std::string rejectMap;
    bool withMaps = false;
    std::string registered;
    std::vector<std::string> follow;
    bool wantsBoth = false;
    bool plan = false;
    bool json = false;
    std::string savePlan;
    std::string band;
    bool join = false;

    /// True where what there is to do was saved before.
    bool GoByPlan() const { return !band.empty() || join; }
    /// "m31_stars.fits" beside "m31.fits"; empty when it is not wanted.
    std::string Stars() const;
    /// What is written besides the stack; those of an empty name are not wanted.
    std::vector<std::string> Others() const;
};

/// What is known of each sample of a stack.
struct Map {
    std::string StackWords::*file; ///< where it is written
    CStlImage stack::Result::*image;
    const char* unit; ///< of its samples; null: that of the stack's
    const char* what;
    const char* extension; ///< its name in the file of the stack
};

inline constexpr Map kMaps[] = {
    {&StackWords::coverageMap, &stack::Result::coverage, "lights", "coverage", "COVERAGE"},
    {&StackWords::noiseMap, &stack::Result::noise, nullptr, "noise", "NOISE"},
    {&StackWords::weightMap, &stack::Result::weights, "lights", "weights", "WEIGHTS"},
    {&StackWords::rejectMap, &stack::Result::rejected, "values", "rejected", "REJECTED"},
};

/// Asks for the maps of the words.
void WantMaps(const StackWords& words, stack::Options& options);

/// Refuses outputs that cannot be written, or would replace a file that is read or written, too.
void CheckFiles(const StackWords& words, const std::vector<std::string>& inputs,
                const std::vector<std::string>& registered);

} // namespace corvane::cli
