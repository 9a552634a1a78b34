#pragma once

#include <functional>
#include <string>
#include <vector>

#include "catalogue/arguments.h"
#include "catalogue/footprint.h"
#include "catalogue/parameter.h"
#include "corvane/core/diagnostic.h"
#include "io/frame.h"

namespace corvane::catalogue {

/// The images that an operation accepts.
enum class Planes { Any, Mono, Colour };

/// How an operation is to be run.
struct Context {
    int showProgress = 1;                                ///< non-zero: it reports to the image's progress window
    std::function<void(const std::string& line)> tell{}; ///< hears what an operation measures; empty: nobody does
    RestoreSink restoring{};                             ///< hears of the iterations of a restoration
    /// Hears what the user should know, such as an assumption that was made: one sentence each, naming the file; may be
    /// empty.
    std::function<void(const std::string& text)> note{};

    void Note(const std::string& text) const
    {
        if (note) {
            note(text);
        }
    }
};

/// One operation, described as data: everything that help, checks and the command need to know of it.
struct Operation {
    std::string name;
    std::string summary; ///< what it does, in one line
    std::string help;    ///< what a person should know besides
    Planes planes = Planes::Any;
    std::vector<Parameter> parameters{};
    /// What it looks at, with such arguments. May be asked with the defaults alone; see `FootprintOf`.
    std::function<Footprint(const Arguments&)> footprint{};
    std::vector<std::string> aliases{}; ///< other names that are accepted

    /// Throws Error when values that are allowed alone do not go together; empty when there is nothing to check.
    std::function<void(const Arguments&)> check{};
    /// Changes the frame. Planes and rectangle fit when it is called; what else the frame must meet is judged here,
    /// with an Error before any work.
    std::function<void(io::Frame&, Arguments&, const Context&)> run{};
};

} // namespace corvane::catalogue
