#include <cmath>
#include <tuple>
#include <vector>

#include "corvane/core/axis_kind.h"
#include "corvane/core/stl_image.h"
#include "tests/support/plain.h"

using namespace corvane;
using namespace corvane::test;

namespace {

CStlImage Spectrum(const char* type, const char* unit, int dispersionAxis = 0)
{
    CStlImage image(-32, 9, 5, 1, 1.0, 0.0, 1);
    if (*type != '\0') {
        image.SetType(type, 0);
    }
    image.SetCUnit(0, unit);
    image.SetDispAxis(dispersionAxis);
    return image;
}

} // namespace

TEST(Axis, IsWhatTypeAndUnitSay)
{
    const struct {
        const char *type, *unit;
        int dispersion;
        const char *name, *shownUnit;
        int kind;
        bool isSpectrum, hasColours;
    } cases[] = {
        {"RA---TAN", "", 0, "Right ascension", "deg", kCelestialAxis, false, false},
        {"HPLN-TAN", "", 0, "Longitude", "deg", kCelestialAxis, false, false},
        {"AWAV", "Angstrom", 0, "Wavelength in air", "Angstrom", kWavelengthAxis, true, true},
        {"WAVE-LOG", "", 0, "Wavelength in vacuum", "m", kWavelengthAxis, true, true},
        {"wave", "s", 0, "Wavelength in vacuum", "s", kWavelengthAxis, true, false},
        {"LAMBDA", "", 0, "Wavelength", "", kWavelengthAxis, true, false},
        {"FREQ-LSR", "GHz", 0, "Frequency", "GHz", kFrequencyAxis, true, true},
        {"ENER", "keV", 0, "Photon energy", "keV", kEnergyAxis, true, true},
        {"WAVN", "1/cm", 0, "Wavenumber", "1/cm", kWavenumberAxis, true, true},
        {"VOPT-F2W", "km/s", 0, "Optical velocity", "km/s", kVelocityAxis, true, false},
        {"STOKES", "", 0, "Stokes parameter", "", kStokesAxis, false, false},
        {"LINEAR", "angstroms", 0, "LINEAR", "angstroms", kUnknownAxis, false, false},
        {"LINEAR", "angstroms", 1, "LINEAR", "angstroms", kWavelengthAxis, true, true},
        {"", "eV", 1, "", "eV", kEnergyAxis, true, true},
        {"", "eV", 2, "", "eV", kUnknownAxis, false, false},
        {"DEC", "", 1, "Declination", "deg", kCelestialAxis, false, false},
    };
    for (const auto& c : cases) {
        const CStlImage image = Spectrum(c.type, c.unit, c.dispersion);
        CString name;
        CString unit;
        int kind = -1;
        EXPECT_EQ(image.GetAxisInfo(0, &name, &unit, &kind) != 0, *c.type != '\0') << c.type;
        EXPECT_STREQ(name, c.name);
        EXPECT_STREQ(unit, c.shownUnit) << c.type;
        EXPECT_EQ(kind, c.kind) << c.type << ' ' << c.unit;
        int axis = -1;
        EXPECT_EQ(image.IsSpectrum(&axis) != 0, c.isSpectrum) << c.type;
        EXPECT_EQ(axis, c.isSpectrum ? 0 : -1);
        EXPECT_EQ(image.IsSpectrumFalseColorSupported() != 0, c.hasColours) << c.type << ' ' << c.unit;
    }
    CStlImage map = Spectrum("", "");
    map.SetType("FREQ", 2);
    EXPECT_EQ(map.IsSpectrum(), 0) << "one plane is no spectrum";
    EXPECT_EQ(map.GetAxisInfo(3, nullptr, nullptr, nullptr), 0);
}

TEST(Axis, GivesWorldValuesWhereTheyAreLinear)
{
    struct {
        const char* type;
        int axis;
        tagMATRIX2_2 matrix;
        int kind;
        bool isKnown;
        double atSeven;
    } cases[] = {
        {"WAVE", 0, {}, kNoTransform, true, 5000.0 + 0.5 * 6.0},
        {"FREQ-LSR", 2, {9.0, 9.0, 9.0, 9.0}, kCdMatrix, true, 5000.0 + 0.5 * 6.0},
        {"", 0, {3.0, 0.0, 8.0, 9.0}, kCdMatrix, true, 5000.0 + 3.0 * 6.0},
        {"LINEAR", 1, {3.0, 8.0, 0.0, 4.0}, kPcMatrix, true, 5000.0 + 0.5 * 4.0 * 6.0},
        {"LINEAR", 0, {3.0, 8.0, 0.0, 4.0}, kPcMatrix, false, 0.0},
        {"RA---TAN", 0, {}, kNoTransform, false, 0.0},
        {"WAVE-LOG", 0, {}, kNoTransform, false, 0.0},
    };
    for (auto& c : cases) {
        CStlImage image = Spectrum("", "");
        double value = 1.0;
        EXPECT_EQ(image.GetPhysicalValue(c.axis, 7.0, &value), 0);
        EXPECT_EQ(value, 0.0) << "without a reference value";
        image.SetType(c.type, c.axis);
        image.SetCRPix(c.axis, 2.0);
        image.SetCDelt(c.axis, 0.5);
        image.SetCRVal(c.axis, 5000.0);
        image.SetLTMtx(&c.matrix, c.kind);
        EXPECT_EQ(image.GetPhysicalValue(c.axis, 7.0, &value) != 0, c.isKnown) << c.type;
        EXPECT_EQ(value, c.atSeven) << c.type;
    }
}

TEST(Axis, TakesSiPrefixesOffUnitsThatHaveThem)
{
    const std::tuple<double, const char*, std::vector<const char*>> cases[] = {
        {1.0, "", {"m", "Pa", "min", "cd", "mas", "d", "h", "g", "Angstrom"}}, // the base is the unit itself
        {1e-24, "m", {"ym"}},
        {1e-9, "m", {"nm"}},
        {1e-6, "m", {"um", "micron"}},
        {10.0, "m", {"dam"}},
        {1e3, "eV", {"keV"}},
        {1e9, "Hz", {" GHz "}},
        {1e15, "Pa", {"PPa"}},
        {1.0, "Angstrom", {"angstroms"}},
        {100.0, "m-1", {"cm-1", "cm**-1", "/cm", "1/ cm", "cm^(-1)"}},
        {1e6, "m2", {"km**2", "km+2"}},
        {0.0, "", {"kmin", "nAngstrom", "km/s", "m0", "m99999999999", "m-", "(", "1/", "", nullptr}},
    };
    for (const auto& [factor, base, units] : cases) {
        for (const char* const unit : units) {
            CString rest = "before";
            EXPECT_EQ(CStlImage::AnalyzeUnitPrefix(unit, &rest), factor) << unit;
            EXPECT_STREQ(rest, factor == 1.0 && *base == '\0' ? unit : base);
        }
    }
}

// Green light, in every scale; hc / e = 1239.841984... eV nm.
TEST(Axis, ConvertsToWavelengths)
{
    EXPECT_DOUBLE_EQ(CStlImage::CalcAngstrom2m(5000.0), 5e-7);
    EXPECT_DOUBLE_EQ(CStlImage::CalcFreq2WL(599.584916e12), 5e-7);
    EXPECT_DOUBLE_EQ(CStlImage::CalcWavn2WL(2e6), 5e-7);
    EXPECT_NEAR(CStlImage::CalcEner2WL(CStlImage::CalcEV2J(1.0)), 1239.8419843320026e-9, 1e-20);
    EXPECT_DOUBLE_EQ(CStlImage::CalcErg2J(1e7), 1.0);
    EXPECT_TRUE(std::isinf(CStlImage::CalcFreq2WL(0.0)));
}
