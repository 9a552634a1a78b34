#include "examples/night/frame_header.h"

#include "io/metadata.h"

namespace corvane::night {

io::Header FrameHeader(const NightSettings& settings, const char* type, double exposure, double time)
{
    constexpr double kFirstLight = 1710014400.0; // 2024-03-09T20:00:00
    constexpr double kDay = 86400.0;
    io::Header header;
    header.Set("INSTRUME", "Corvane generator");
    header.Set("IMAGETYP", type, "kind of frame");
    header.Set("DATE-OBS", io::FormatTime(kFirstLight + settings.day * kDay + time), "start of exposure (UTC)");
    header.Set("EXPTIME", exposure, "[s] exposure time");
    header.Set("CCD-TEMP", settings.temperature, "[degC] sensor temperature");
    header.Set("SET-TEMP", settings.temperature, "[degC] sensor temperature aimed at");
    header.Set("GAIN", settings.cameraGain, "gain setting");
    header.Set("EGAIN", settings.gain, "[electron] electrons per count");
    header.Set("XPIXSZ", 3.76, "[um] pixel width");
    header.Set("YPIXSZ", 3.76, "[um] pixel height");
    header.Set("XBINNING", 1);
    header.Set("YBINNING", 1);
    header.Set("ROWORDER", "TOP-DOWN", "first row is the top of the picture");
    if (!settings.bayer.empty()) {
        header.Set("BAYERPAT", settings.bayer, "colour filters of the first 2 x 2 pixels");
        header.Set("XBAYROFF", 0);
        header.Set("YBAYROFF", 0);
    }
    header.Set("SEED", static_cast<long long>(settings.seed), "seed of the generated night");
    return header;
}

void AddFilterCard(const NightSettings& settings, io::Header& header)
{
    if (settings.bayer.empty()) {
        header.Set("FILTER", settings.filter);
    }
}

void AddLightCards(io::Header& header, const Placement& placement)
{
    header.Set("OBJECT", "Generated field");
    header.Set("TRUEDX", placement.dx, "[pixel] shift right onto the first light");
    header.Set("TRUEDY", placement.dy, "[pixel] shift down onto the first light");
    header.Set("TRUEROT", placement.degrees, "[deg] clockwise turn onto the first light");
}

} // namespace corvane::night
