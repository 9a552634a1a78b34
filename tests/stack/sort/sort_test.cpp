#include "stack/sort/sort.h"

#include <filesystem>

#include "stack/sort/frame_kind.h"
#include "stack/stack.h"
#include "tests/stack/test_night.h"

namespace corvane::stack {

TEST(FrameKind, IsToldByHeadersFoldersAndNames)
{
    struct Case {
        const char* keyword;
        const char* stated;
        const char* path; // below the folder night
        const char* kind; // "" for none
    };
    const Case cases[] = {
        {"IMAGETYP", "Light Frame", "darks/a.fits", "light"},
        {"IMAGETYP", "LIGHT", "a.fits", "light"},
        {"OBSTYPE", "object", "dark.fits", "light"},
        {"FRAME", "Dark", "a.fits", "dark"},
        {"FRAMETYP", "master dark", "a.fits", "dark"},
        {"IMAGETYP", "MasterFlat", "a.fits", "flat"},
        {"FRAMETYPE", "Flat Field", "a.fits", "flat"},
        {"IMAGETYPE", "SKYFLAT", "a.fits", "flat"},
        {"IMAGETYP", "Bias Frame", "a.fits", "bias"},
        {"IMAGETYP", "zero", "a.fits", "bias"},
        {"IMAGETYP", "Dark Flat", "a.fits", "flat-dark"},
        {"IMAGETYP", "FLATDARK", "a.fits", "flat-dark"},
        {"IMAGETYP", "Flat Dark Frame", "a.fits", "flat-dark"},
        {"IMAGETYP", "EXT", "lights/a.fits", "light"},
        {"FRAME", "FK5", "Darks 300s/x/a.fits", "dark"},
        {"", "", "Dark_Flats/a.fits", "flat-dark"},
        {"", "", "flatdarks/dark_1.fits", "flat-dark"},
        {"", "", "BIASES/a.fits", "bias"},
        {"", "", "lights/Dark Shark/dark_shark_1.fits", "light"},
        {"", "", "Dark Shark/a.fits", ""},
        {"", "", "x/MASTER_DARK_300s.fits", "dark"},
        {"", "", "x/m31-Flat-Ha_001.fits", "flat"},
        {"", "", "x/flat_dark-2.fits", "flat-dark"},
        {"", "", "x/object_zero.fits", ""},
        {"", "", "x/highlights.fits", ""},
    };
    for (const Case& c : cases) {
        io::Header header;
        header.Set(c.keyword, c.stated);
        const auto stated = StatedKind(header);
        const auto kind = stated ? stated : KindByName(std::string("darks/night/") + c.path, "darks/night");
        EXPECT_STREQ(kind ? NameOf(*kind) : "", c.kind) << c.stated << ' ' << c.path;
    }
}

class SortTest : public Night {
protected:
    using Cards = std::vector<std::pair<const char*, const char*>>;

    /// Saves a frame of a kind with these cards and those that all have, unless they are among them.
    std::string Put(const std::string& name, const char* type, double exposure, const Cards& cards = {},
                    double value = 100.0, int size = 8)
    {
        std::filesystem::create_directories(std::filesystem::path(Path(name)).parent_path());
        const CStlImage image = Make(size, size, 1, [&](int, int, int) { return value; });
        return Save(name, image, exposure, [&](io::Header& header) {
            for (const auto& [keyword, text] : Cards{{"IMAGETYP", type}, {"INSTRUME", "C"}, {"GAIN", "1"}}) {
                header.Set(keyword, text);
            }
            for (const auto& [keyword, text] : cards) {
                header.Set(keyword, text);
            }
        });
    }

    Options Asked(const std::vector<std::string>& names)
    {
        Options options;
        for (const std::string& name : names) {
            options.lights.push_back(Path(name));
        }
        return options;
    }

    /// "d1 d2": file names without folders and ends.
    static std::string Names(const std::vector<std::string>& files)
    {
        std::string names;
        for (const std::string& file : files) {
            names += (names.empty() ? "" : " ") + std::filesystem::path(file).stem().string();
        }
        return names;
    }

    /// A line for each group: the filter, the lights, and darks, flats, flat-darks and bias; then what is left out.
    static std::string Told(const SortedNight& night)
    {
        std::string told;
        for (const SortedStack& stack : night.stacks) {
            for (const LightGroup& group : stack.groups) {
                told += stack.filter + ": " + Names(group.lights) + " | " + Names(group.frames.darks) + " | " +
                        Names(group.frames.flats) + " | " + Names(group.frames.flatDarks) + " | " +
                        Names(group.frames.bias) + "\n";
            }
        }
        for (const LeftOut& left : night.leftOut) {
            told += Names(left.files) + ": " + left.reason + "\n";
        }
        return told;
    }
};

TEST_F(SortTest, GivesEachLightWhatSuitsIt)
{
    const char* const first = "2024-03-09T22:00:00";
    const char* const second = "2024-03-11T22:00:00";
    const char* const cold = "-10";
    Put("n/l1.fits", "LIGHT", 300, {{"FILTER", "Ha"}, {"DATE-OBS", first}, {"CCD-TEMP", cold}});
    Put("n/l2.fits", "LIGHT", 300, {{"FILTER", "HA"}, {"DATE-OBS", second}, {"CCD-TEMP", cold}});
    Put("n/l3.fits", "LIGHT", 60, {{"FILTER", "Ha"}, {"DATE-OBS", second}, {"CCD-TEMP", "5"}});
    Put("n/l4.fits", "LIGHT", 30, {{"FILTER", "O"}, {"DATE-OBS", second}});
    Put("n/l5.fits", "LIGHT", 300, {{"FILTER", "Ha"}}, 100.0, 6);
    Put("n/old.fits", "LIGHT", 300, {{"FILTER", "Ha"}, {"NCOMBINE", "9"}});
    Put("n/l6.fits", "LIGHT", 30, {{"FILTER", "S"}, {"DATE-OBS", second}, {"CALSTAT", "BD"}});
    Put("n/f4.fits", "FLAT", 2, {{"FILTER", "S"}});
    Put("n/d1.fits", "DARK", 300, {{"CCD-TEMP", "-9"}});
    Put("n/d2.fits", "DARK", 300, {{"CCD-TEMP", "5"}});
    Put("n/d3.fits", "DARK", 60, {{"CCD-TEMP", cold}});
    Put("n/d4.fits", "DARK", 30, {{"GAIN", "2"}});
    Put("n/e1.fits", "DARK", 2);
    Put("n/f1.fits", "FLAT", 2, {{"FILTER", "Ha"}, {"DATE-OBS", "2024-03-10T06:00:00"}, {"GAIN", "7"}});
    Put("n/f2.fits", "FLAT", 2, {{"FILTER", "Ha"}, {"DATE-OBS", "2024-03-11T17:00:00"}});
    Put("n/f3.fits", "FLAT", 2, {{"FILTER", "R"}});
    Put("n/b1.fits", "BIAS", 0);
    Put("n/b2.fits", "BIAS", 0, {{"GAIN", "7"}});
    Put("n/what.fits", "", 1);
    Put("n/sub/readme.txt.fits", "LIGHT", 1);
    for (const auto& [name, text] : {std::pair{"n/sub/readme.txt.fits", "SIMPLE"}, {"n/list.csv", "a,b"}}) {
        FILE* const file = std::fopen(Path(name).c_str(), "w");
        std::fputs(text, file);
        std::fclose(file);
    }
    const SortedNight night = SortFrames(Asked({"n", "n/l2.fits"}), {}, {});
    const std::string told = Told(night);
    for (const char* line :
         {"l2 | d1 | f2 | e1 | b1\n", "l1 | d1 | f1 | b2 | b1\n", "l3 | d3 | f2 | e1 | b1\n", "O: l4 | d3 |  |  | b1\n",
          "S: l6 |  | f4 | e1 | \n", "l5: is 6 x 6, most lights are 8 x 8\n", "old: is a stack\n",
          "what: nothing tells what it is", "readme.txt: ", "d4: gain 2, not 1\n", "f3: filter R, not HA\n",
          "d2: others suit the lights better\n"}) {
        EXPECT_PRED2(Holds, told, line);
    }
    ASSERT_EQ(night.stacks.size(), 3U);
    EXPECT_EQ(night.stacks[0].options.sets.size(), 3U);
    EXPECT_TRUE(night.stacks[1].options.sets.empty());
    EXPECT_FALSE(night.warnings.empty());
}

TEST_F(SortTest, RefusesWhatDoesNotGoTogetherUnlessItMay)
{
    const std::string light = Put("l1.fits", "LIGHT", 60, {{"FILTER", "Ha"}, {"CCD-TEMP", "0"}});
    const std::string other = Put("l2.fits", "LIGHT", 60, {{"FILTER", "O"}});
    const std::string loud = Put("l3.fits", "LIGHT", 60, {{"GAIN", "5"}});
    const std::string done = Put("l4.fits", "LIGHT", 60, {{"CALSTAT", "DF"}});
    const std::string dark = Put("d1.fits", "DARK", 60);
    const std::string silent = Put("d2.fits", "", 0.0, {{"GAIN", ""}, {"INSTRUME", ""}});
    const std::string camera = Put("d3.fits", "DARK", 60, {{"INSTRUME", "D"}});
    const std::string flat = Put("f1.fits", "FLAT", 60, {{"FILTER", "O"}});
    struct Case {
        std::function<void(Options&)> change;
        const char* text; // of the error
    };
    constexpr const char* kNone = "no error";
    const Case cases[] = {
        {[&](Options& o) { o.darks = {camera}; }, "d3.fits: the dark has camera D, not C as the light"},
        {[&](Options& o) { o.darks = {silent}; }, kNone},
        {[&](Options& o) { o.lights = {done}, o.darks = {dark}; }, "l4.fits: went through a dark before: CALSTAT = DF"},
        {[&](Options& o) { o.lights = {done}, o.flats = {flat}; }, "l4.fits: went through a flat before"},
        {[&](Options& o) { o.flats = {flat}; }, "f1.fits: the flat has filter O, not Ha as the light"},
        {[&](Options& o) { o.darks = {other}; }, "l2.fits: is named as a dark, but its header calls it a light"},
        {[&](Options& o) { o.darks = {light}; }, "l1.fits: is named as a light, too"},
        {[&](Options& o) { o.darks = {dark}, o.bias = {dark}; }, "d1.fits: is named as a bias, too"},
        {[&](Options& o) { o.lights.push_back(other); }, "l2.fits: the light has filter O, not Ha as"},
        {[&](Options& o) { o.lights.push_back(other), o.filter = "ha"; }, kNone},
        {[&](Options& o) { o.lights.push_back(other), o.filter = "R"; }, "filter = R: there are lights of Ha, O"},
        {[&](Options& o) { o.lights.push_back(loud); }, "l3.fits: the light has gain 5, not 1 as"},
        {[&](Options& o) {
             o.lights = {dark, camera};
         },
         "d3.fits: the light has camera D, not C"},
        {[&](Options& o) {
             o.lights = {dark, flat};
         },
         "LIGHT = "},
    };
    for (const auto& [change, text] : cases) {
        Options options;
        options.lights = {light};
        change(options);
        const std::string error = ErrorOf([&] { SortFrames(options, {}, {}); });
        EXPECT_PRED2(Holds, error, text);
        options.allowMixed = true;
        const bool isAsked = Holds(text, " = "); // an option that cannot be followed
        EXPECT_TRUE(isAsked || (error == kNone) == SortFrames(options, {}, {}).warnings.empty()) << text;
    }
}

TEST_F(SortTest, CalibratesEachLightByItsOwnSet)
{
    const auto half = [&](const char* name, bool isLeft, double value, const Cards& cards) {
        Put(name, "LIGHT", 60, cards);
        io::Frame frame = io::Load(Path(name));
        for (int i = 0; i < 64; ++i) {
            frame.image.SetPixelGrayRaw(i % 8, i / 8, (i % 8 < 4) == isLeft ? static_cast<float>(value) : 0.0F, 0);
        }
        io::Save(Path(name), frame.image, frame.header);
        return Path(name);
    };
    Options options;
    options.align = AlignMethod::kNone;
    options.combine = CombineBy::kMax;
    options.lights = {half("l1.fits", true, 500.0, {}), half("l2.fits", false, 900.0, {{"CCD-TEMP", "10"}})};
    options.sets = {{.bias = {}, .darks = {Put("d1.fits", "DARK", 60, {}, 20.0)}},
                    {.bias = {Put("b.fits", "BIAS", 0, {}, 40.0)},
                     .darks = {Put("d2.fits", "DARK", 30, {{"CCD-TEMP", "0"}}, 50.0)}}};
    options.setOfLight = {0, 1};
    const Result result = stack::Stack(options);
    EXPECT_EQ(result.image.GetPixelGrayRaw(0, 0, 0), 480.0F);
    // 2 times the exposure, and 10 K: dark current doubles with some 7 K.
    EXPECT_NEAR(result.image.GetPixelGrayRaw(7, 7, 0), 900.0 - 40.0 - 10.0 * 2.0 * std::exp2(10.0 / 7.0), 2.5);
    EXPECT_EQ(result.header.Text("CALSTAT"), "D");
    EXPECT_PRED2(Holds, result.header.History().at(1), "1 light with dark " + Path("d1.fits") + "; 1 light with bias ");
}

} // namespace corvane::stack
