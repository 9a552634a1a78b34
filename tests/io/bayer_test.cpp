#include "io/bayer.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace corvane::io {
namespace {

TEST(Bayer, ReadsTheNamesAndOrdersThatProgramsUse)
{
    const struct {
        const char* cards[3];
        int height;
        const char* named;
        const char* stored;
    } cases[] = {
        {{"BAYERPAT= 'none'", "COLORTYP= 'grbg'", ""}, 8, "GRBG", "GRBG"},
        {{"BAYERPAT= 'RGBGR'", "", ""}, 8, "", ""},
        {{"BAYERPAT= 'XTrans'", "CFA-PAT = 'RGGB'", ""}, 8, "XTRANS", ""},
        {{"BAYERPAT= 'RGGB'", "XBAYROFF= -1", "YBAYROFF= 3"}, 8, "RGGB", "BGGR"},
        {{"BAYERPAT= 'RGGB'", "XBAYROFF= 1", "ROWORDER= 'TOP-DOWN'"}, 8, "RGGB", "GRBG"},
        {{"BAYERPAT= 'RGGB'", "XBAYROFF= 1", "ROWORDER= 'BOTTOM-UP'"}, 8, "RGGB", "BGGR"},
        {{"BAYERPAT= 'RGGB'", "YBAYROFF= 1", "ROWORDER= 'BOTTOM-UP'"}, 7, "RGGB", "GBRG"},
    };
    for (const auto& c : cases) {
        Header header;
        std::for_each(c.cards, c.cards + 3, [&](const char* card) { header.AddCard(card); });
        EXPECT_EQ(BayerPattern(header).value_or(""), c.named);
        EXPECT_EQ(StoredBayerPattern(header, c.height).value_or(""), c.stored) << c.cards[2];
        if (*c.stored != 0) {
            SetStoredBayerPattern(header, "BGGR", c.height);
            EXPECT_EQ(StoredBayerPattern(header, c.height), "BGGR") << c.cards[2];
        }
    }
}

TEST(Bayer, HintsAtWhatFilterSpells)
{
    const std::pair<std::vector<const char*>, const char*> cases[] = {
        {{"FILTER  = 'rggb'"}, "RGGB"}, {{"FILTER  = 'RGB'"}, ""},      {{"FILTER  = 'RRGB'"}, ""},
        {{"FILTER  = 'Ha'"}, ""},       {{"FILTER1 = 'GBRG'"}, "GBRG"}, {{"FILTER  = 'RGGB'", "BAYERPAT= 'BGGR'"}, ""}};
    for (const auto& [cards, pattern] : cases) {
        Header header;
        std::for_each(cards.begin(), cards.end(), [&](const char* card) { header.AddCard(card); });
        EXPECT_EQ(HintedBayerPattern(header).value_or(""), pattern) << cards[0];
    }
}

} // namespace
} // namespace corvane::io
