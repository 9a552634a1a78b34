#include "stack/sort/header_facts.h"

#include "corvane/core/ascii.h"
#include "corvane/core/text.h"
#include "io/metadata.h"

namespace corvane::stack {

namespace {

constexpr const char* kFactNames[kFactCount] = {"camera", "size",         "binning", "gain",
                                                "offset", "readout mode", "filter"};

std::string TextOf(const std::optional<double>& number)
{
    return number ? NumberText(*number) : "";
}

/// A text without the blanks about it.
std::string TextOf(const std::optional<std::string>& text)
{
    return std::string(Trim(text.value_or("")));
}

std::string BinningOf(const io::Header& header)
{
    const auto x = header.Number("XBINNING");
    const auto y = header.Number("YBINNING");
    return x ? NumberText(*x) + " x " + NumberText(y.value_or(*x)) : "";
}

} // namespace

HeaderFacts FactsOf(const io::FrameInfo& frame, const std::string& file, const std::string& root)
{
    const io::Header& header = frame.header;
    HeaderFacts facts;
    facts.file = file;
    facts.stated = StatedKind(header);
    facts.kind = facts.stated ? facts.stated : KindByName(file, root);
    facts.isMaster = StatesMaster(header) || header.Number("NCOMBINE").value_or(0.0) > 1.0 ||
                     header.Number("STACKCNT").value_or(0.0) > 1.0;
    facts.calibration = TextOf(header.Text("CALSTAT"));
    const auto offset = header.Number("OFFSET");
    facts.facts = {TextOf(header.Text("INSTRUME")),
                   SizeText(frame.width, frame.height),
                   BinningOf(header),
                   TextOf(io::Gain(header)),
                   TextOf(offset ? offset : header.Number("BLKLEVEL")),
                   TextOf(header.Text("READOUTM")),
                   TextOf(io::Filter(header))};
    facts.exposure = io::ExposureSeconds(header);
    facts.temperature = io::CcdTemperature(header);
    facts.time = io::ObservationTime(header);
    return facts;
}

std::string DifferenceOf(const HeaderFacts& frame, const HeaderFacts& other, std::initializer_list<Fact> facts)
{
    for (const Fact fact : facts) {
        const std::string& own = frame.Of(fact);
        const std::string& theirs = other.Of(fact);
        if (!own.empty() && !theirs.empty() && !SameWord(own, theirs)) {
            return std::string(kFactNames[static_cast<int>(fact)]) + " " + own + ", not " + theirs;
        }
    }
    return "";
}

} // namespace corvane::stack
