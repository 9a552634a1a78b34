#include "cli/report_pictures.h"

#include <algorithm>
#include <cmath>

#include "catalogue/recipe.h"
#include "catalogue/shown.h"
#include "cli/svg.h"
#include "corvane/core/error.h"
#include "io/metadata.h"
#include "io/picture.h"

namespace corvane::cli {
namespace {

/// Bytes as text for a page, by RFC 4648, section 4.
std::string Base64(const std::string& bytes)
{
    constexpr const char* kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::string three = bytes.substr(i, 3);
        unsigned bits = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            bits = bits << 8U | (k < three.size() ? static_cast<unsigned char>(three[k]) : 0U);
        }
        for (std::size_t k = 0; k < 4; ++k) {
            text += k <= three.size() ? kDigits[bits >> (18U - 6U * k) & 63U] : '=';
        }
    }
    return text;
}

/// A picture of a type, as "png", with the attributes of its tag.
std::string PictureTag(const char* type, const std::string& bytes, const std::string& attributes)
{
    return "<img" + attributes + " src=\"data:image/" + type + ";base64," + Base64(bytes) + "\">";
}

/// An image through its levels.
std::string ImageTag(const CStlImage& image, bool isBottomUp, const std::string& attributes)
{
    return PictureTag("png", io::EncodePicture(image, isBottomUp), attributes);
}

/// The text as the value of an attribute.
std::string AttributeValue(const std::string& text)
{
    std::string quoted;
    for (const char letter : EscapedXml(text)) {
        quoted += letter == '"' ? "&quot;" : std::string(1, letter);
    }
    return "\"" + quoted + "\"";
}

} // namespace

std::string LightPictures(const stack::Registration& lights)
{
    std::string text;
    for (std::size_t i = 0; i < lights.thumbnails.size(); ++i) {
        const stack::FrameReport& light = lights.frames[i];
        io::Frame frame{lights.thumbnails[i], {}};
        if (frame.image.GetPixelCount() > 0) {
            catalogue::MakeShown(frame);
            const std::string hint = light.file + (light.used ? "" : ": " + light.reason);
            text += ImageTag(frame.image, lights.isBottomUp,
                             (light.used ? "" : " class=\"out\"") + std::string(" title=") + AttributeValue(hint)) +
                    "\n";
        }
    }
    return text.empty() ? text : "<div class=\"strip\">\n" + text + "</div>\n";
}

std::string DevelopedPicture(const io::Frame& stack, const Run& run)
{
    constexpr int kLongestSide = 1200;
    constexpr int kQuality = 90;
    io::Frame frame{stack.image.Shared(), stack.header};
    Run silent = run; // what the steps tell belongs to no light
    silent.diagnostics = nullptr;
    try {
        catalogue::Reduce(frame, kLongestSide);
        frame.image = CStlImage(frame.image); // the steps write into it, and the stack stays
        catalogue::RunRecipe(catalogue::FindRecipe(catalogue::kUsualRecipe), frame, silent);
    } catch (const Error& error) {
        return "<p>The stack cannot be shown: " + EscapedXml(error.what()) + "</p>\n";
    }
    return PictureTag("jpeg", io::EncodePhoto(frame.image, io::IsBottomUp(stack.header), kQuality),
                      " class=\"stack\" title=\"the stack, developed\"") +
           "\n";
}

std::string RejectedPicture(const stack::Registration& lights)
{
    CStlImage places(lights.rejectedPlaces);
    if (places.GetPixelCount() == 0) {
        return "";
    }
    double most = 1.0;
    for (int y = 0; y < places.GetHeight(); ++y) {
        float* const row = places.GetImageAdr(0, y, 0);
        std::transform(row, row + places.GetWidth(), row, [](float v) { return std::sqrt(v); });
        most = std::max<double>(most, *std::max_element(row, row + places.GetWidth()));
    }
    places.SetLevel(0, 0.0, most);
    return "<figure><figcaption>Where values were dropped: the brighter, the more</figcaption>\n" +
           ImageTag(places, lights.isBottomUp, "") + "</figure>\n";
}

} // namespace corvane::cli
