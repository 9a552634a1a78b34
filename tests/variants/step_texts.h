#pragma once

#include <set>
#include <string>
#include <vector>

/// What steps read.
struct StepFiles {
    std::vector<std::string> images;
    std::string curve;
    std::string mask;
};

/// Steps that go through the catalogue: every operation with its defaults, with each of its parameters at a few values,
/// with a part of its change, and what one parameter at a time does not reach.
std::set<std::string> StepTexts(const StepFiles& files);
