#pragma once

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "io/error.h"
#include "io/frame.h"
#include "stack/stack.h"

namespace corvane::stack {

/// Frames made for a test, in a folder of their own that goes with it.
class Night : public testing::Test {
protected:
    struct Place {
        double x;
        double y;
        double peak;
    };

    Night()
    {
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        std::string name = std::string(test->test_suite_name()) + "." + test->name();
        std::replace(name.begin(), name.end(), '/', '.');
        folder_ = std::filesystem::temp_directory_path() / ("corvane-" + name + std::to_string(std::random_device()()));
        std::filesystem::create_directories(folder_);
    }
    ~Night() override { std::filesystem::remove_all(folder_); }

    /// Makes an image from a function of column, row and plane.
    static CStlImage Make(int width, int height, int planes, const std::function<double(int, int, int)>& value)
    {
        CStlImage image(-32, width, height, planes, 1.0, 0.0, 1);
        for (int p = 0; p < planes; ++p) {
            for (int y = 0; y < height; ++y) {
                for (int x = 0; x < width; ++x) {
                    image.SetPixelGrayRaw(x, y, static_cast<float>(value(x, y, p)), p);
                }
            }
        }
        return image;
    }

    /// Stars of FWHM 3 on a sky of 200 with noise 2, all moved by (-dx, -dy): (dx, dy) is the shift that undoes it.
    CStlImage Sky(int width, int height, int planes, const std::vector<Place>& stars, double dx = 0.0, double dy = 0.0)
    {
        return Make(width, height, planes, [&](int x, int y, int p) {
            double s = 200.0 + 2.0 * normal_(random_);
            for (const auto& star : stars) {
                const double far = std::pow(x + dx - star.x, 2) + std::pow(y + dy - star.y, 2);
                s += far < 400.0 ? star.peak * (1.0 - 0.2 * p) * std::exp(-far / 3.2) : 0.0;
            }
            return s;
        });
    }

    /// Saves a frame; returns its path.
    std::string Save(const std::string& name, const CStlImage& image, double exposure = 60.0,
                     const std::function<void(io::Header&)>& change = {})
    {
        io::Header header;
        if (exposure > 0.0) {
            header.Set("EXPTIME", exposure);
        }
        if (change) {
            change(header);
        }
        const std::string path = (folder_ / name).string();
        io::Save(path, image, header, {-32});
        return path;
    }

    std::string Path(const std::string& name) const { return (folder_ / name).string(); }

    std::mt19937 random_{7};

private:
    std::normal_distribution<double> normal_;
    std::filesystem::path folder_;
};

/// True when the text holds the part.
inline bool Holds(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

/// What an action throws, as "KIND: TEXT" without the folder; fails when it throws nothing.
template <class Action>
std::string Thrown(Action action)
{
    try {
        action();
    } catch (const OptionError& error) {
        return std::string("option ") + error.what();
    } catch (const io::Error& error) {
        return std::filesystem::path(error.Path()).filename().string() + ": " + error.Reason();
    } catch (const Cancelled& error) {
        return error.what();
    }
    ADD_FAILURE() << "nothing was thrown";
    return "";
}

} // namespace corvane::stack
