// The recipes that come with the library. What a step is for stands beside it, since people begin their own recipes
// from these.

#include "catalogue/recipe.h"

namespace corvane::catalogue {
namespace {

// The sky goes by a plane alone: a galaxy may fill the frame, and a richer model would follow its arms.
constexpr const char* kGalaxy = R"(
# the sky: no gradient, one grey
background:degree=1
white-balance
neutral-sky
# black below the sky, the core not burnt out, then more light for the arms
autostretch:shadows=-2.4,target=0.1
smooth-background
ghs:d=1.5,b=1,sp=0.15
# dust lanes and knots, and colours
unsharp:amount=0.5
saturate:gain=1.8
)";

// As the galaxy, with more light for what is faint; nothing is sharpened, which would show the noise in it.
constexpr const char* kNebula = R"(
# the sky: no gradient, one grey; the nebula keeps its light
background:degree=1
white-balance
neutral-sky
# black below the sky, then light for the nebula just above it
autostretch:target=0.12
ghs:d=2,b=1,sp=0.18
# a calm sky, and colours
smooth-background
saturate:gain=2
)";

// Of stars alone the sky is seen everywhere between them, so its model may be as rich as it needs.
constexpr const char* kCluster = R"(
# the sky: no gradient, one grey
background
white-balance
neutral-sky
# a dark and calm sky, stars that are not swollen, and their colours
autostretch:target=0.1
smooth-background
saturate:gain=2
)";

// There is no sky to go by: black is the smallest sample and white the largest.
constexpr const char* kMoon = R"(
# craters
unsharp:amount=2
# light for the terminator
gamma:g=1.8
# the faint colours of the seas
saturate:gain=1.5
)";

ShippedRecipe ShippedAs(const char* name, const std::string& summary, const char* steps)
{
    return {name, summary, "# " + summary + steps};
}

} // namespace

const std::vector<ShippedRecipe>& ShippedRecipes()
{
    static const std::vector<ShippedRecipe> recipes{
        ShippedAs("galaxy", "galaxies, and what is not known: bright cores and faint arms among stars", kGalaxy),
        ShippedAs("nebula", "nebulae: faint light over much of the frame", kNebula),
        ShippedAs("cluster", "clusters and fields of stars", kCluster),
        ShippedAs("moon", "the moon: a bright disk on black", kMoon),
    };
    return recipes;
}

} // namespace corvane::catalogue
