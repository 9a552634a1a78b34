#pragma once

#include <array>
#include <initializer_list>
#include <optional>
#include <string>

#include "io/reader.h"
#include "stack/sort/frame_kind.h"

namespace corvane::stack {

/// What must be alike of frames that are used together.
enum class Fact { kCamera, kSize, kBinning, kGain, kOffset, kReadout, kFilter };
inline constexpr int kFactCount = 7;

/// @name The facts in which frames must not differ
/// @{
inline constexpr std::initializer_list<Fact> kFactsOfDark{Fact::kCamera, Fact::kSize,   Fact::kBinning,
                                                          Fact::kGain,   Fact::kOffset, Fact::kReadout};
inline constexpr std::initializer_list<Fact> kFactsOfFlat{Fact::kCamera, Fact::kSize, Fact::kBinning, Fact::kFilter};
inline constexpr std::initializer_list<Fact> kFactsOfLight{Fact::kCamera, Fact::kSize, Fact::kBinning, Fact::kGain,
                                                           Fact::kFilter};
/// @}

/// What the header of a frame tells of how it was taken.
struct HeaderFacts {
    std::string file;
    std::optional<FrameKind> stated;             ///< what the header says that it is
    std::optional<FrameKind> kind;               ///< the same, or what names say
    bool isMaster = false;                       ///< made of several frames
    std::string calibration;                     ///< letters of what it went through, as in CALSTAT
    std::array<std::string, kFactCount> facts{}; ///< in words; empty where the header is silent
    std::optional<double> exposure;              ///< [s]
    std::optional<double> temperature;           ///< [degrees Celsius]
    std::optional<double> time;                  ///< start of the exposure [s since 1970]

    const std::string& Of(Fact fact) const { return facts[static_cast<std::size_t>(fact)]; }
    bool HasLostBias() const { return calibration.find_first_of("BD") != std::string::npos; }
    bool HasLostVignetting() const { return calibration.find('F') != std::string::npos; }
};

/// What an open frame says; names tell the kind of one that does not, from the folder `root` downwards.
HeaderFacts FactsOf(const io::FrameInfo& frame, const std::string& file, const std::string& root);

/// The first of these facts that two frames state differently, as "gain 200, not 100"; empty for none. A frame that
/// does not say is no other.
std::string DifferenceOf(const HeaderFacts& frame, const HeaderFacts& other, std::initializer_list<Fact> facts);

} // namespace corvane::stack
