#pragma once

#include <cmath>
#include <functional>
#include <random>

#include "io/frame.h"
#include "stack/stack.h"
#include "stars/find_stars.h"
#include "tests/io/files.h"
#include "tests/support/error_of.h"

namespace corvane::stack {

using test::ErrorOf;
using test::Make;

/// Frames made for a test, in a folder of their own that goes with it.
class Night : public test::InFolder {
protected:
    struct Place {
        double x;
        double y;
        double peak;
    };

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
        io::Save(Path(name), image, header, {-32});
        return Path(name);
    }

private:
    std::mt19937 random_{7};
    std::normal_distribution<double> normal_;
};

/// True when the text holds the part.
inline bool Holds(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

} // namespace corvane::stack
