#include "io/header.h"

#include <cmath>

#include <gtest/gtest.h>

namespace {

using corvane::io::Header;

TEST(Header, ReadsValuesAsCaptureProgramsWriteThem)
{
    // Text "" is none, number -1 is none.
    const std::tuple<const char*, const char*, const char*, double, const char*> cases[] = {
        {"EXPTIME = 060.00 / Exposure / seconds", "EXPTIME", "060.00", 60.0, "Exposure / seconds"},
        {"EXPOSURE= 6,4E-05", "exposure", "6,4E-05", 6.4e-5, ""},
        {"CRVAL1  =  +1.25D+02 / [deg]", "CRVAL1", "+1.25D+02", 125.0, "[deg]"},
        {"GAIN    = '  12  '", "GAIN", "  12", 12.0, ""},
        {"OBJECT  = 'O''Neill / north' / a name", "OBJECT", "O'Neill / north", -1.0, "a name"},
        {"EMPTY   = / no value", "EMPTY", "", -1.0, "no value"},
        {"OPEN    = 'no closing quote", "OPEN", "no closing quote", -1.0, ""},
        {"TEL_FOCUS= 12.5 / overlong", "TEL_FOCUS", "12.5", 12.5, "overlong"},
        {"HIERARCH ESO DET DIT = 30.0 / s", "ESO DET DIT", "30.0", 30.0, "s"},
        {"HUGE    = 1E999", "HUGE", "1E999", -1.0, ""},
        {"COMMENT = 5", "COMMENT", "", -1.0, ""},
    };
    for (const auto& [card, keyword, text, number, comment] : cases) {
        Header header;
        header.AddCard(card);
        EXPECT_TRUE(header.Has(keyword)) << card;
        EXPECT_EQ(header.Text(keyword).value_or(""), text) << card;
        EXPECT_EQ(header.Number(keyword).value_or(-1.0), number) << card;
        EXPECT_EQ(header.Comment(keyword), comment) << card;
    }
}

TEST(Header, WritesNumbersThatReadBackToTheBit)
{
    Header header;
    for (const double value : {0.1, 1e-300, 6.02214076e23, 60.0, -0.0}) {
        header.Set("VALUE", value);
        EXPECT_EQ(header.Number("VALUE"), value);
        EXPECT_NE(header.Text("VALUE")->find('.'), std::string::npos) << "a whole number would read as an integer";
    }
    header.Set("VALUE", NAN);
    EXPECT_FALSE(header.Text("VALUE"));
    EXPECT_EQ(header.Cards().size(), 1U);
}

TEST(Header, SetsTheCardsOfTheStandard)
{
    Header header;
    header.Set("OBJECT", "M 31", "name");
    header.Set("BITPIX", 16, "bits");
    header.Set("ESO DET DIT", 1.5);
    const char* const starts[] = {"OBJECT  = 'M 31    '           / name ", "BITPIX  =                   16 / bits ",
                                  "HIERARCH ESO DET DIT =     1.5 "};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_TRUE(header.Cards()[i].starts_with(starts[i]) && header.Cards()[i].size() == 80) << header.Cards()[i];
    }
    header.Set("object", "caf\xc3\xa9");
    EXPECT_EQ(header.Text("OBJECT"), "caf??") << "only ASCII text may stand in a card";
    EXPECT_EQ(header.Comment("OBJECT"), "name") << "an empty comment keeps the old one";
    EXPECT_THROW(header.Set(std::string(70, 'K'), 1.0), std::invalid_argument) << "no room for the value";
}

TEST(Header, LongStringsContinueAndAreReplacedWhole)
{
    for (const std::size_t length : {66U, 67U, 68U, 69U, 134U, 135U, 300U}) {
        for (const char c : {'a', '\''}) {
            Header header;
            header.Set("BEFORE", 1);
            header.Set("LONG", std::string(length, c), "comment");
            header.Set("AFTER", 2);
            EXPECT_EQ(header.Text("LONG"), std::string(length, c));
            header.Remove("LONG");
            EXPECT_EQ(header.Cards().size(), 2U) << "CONTINUE cards go with their card";
            EXPECT_EQ(header.Number("AFTER"), 2.0);
        }
    }
}

TEST(Header, JoinsHistoryAgain)
{
    Header header;
    std::vector<std::string> lines;
    for (const std::size_t length : {0U, 1U, 71U, 72U, 73U, 144U, 500U}) {
        for (const char c : {'x', '&'}) {
            lines.push_back(std::string(length, c));
            lines.push_back(std::string(length, ' ') + c);
        }
    }
    for (const std::string& line : lines) {
        header.AddHistory(line);
        header.AddCard("COMMENT between");
    }
    EXPECT_EQ(header.History(), lines);
}

TEST(Header, KeepsStrangeCardsToTheLetter)
{
    Header header;
    for (std::string card : {"COMMENT = odd", "", "PTF words without a keyword", "CARD    = 1", "CARD    = 2"}) {
        card.resize(80, ' ');
        header.AddCard(card);
        EXPECT_EQ(header.Cards().back(), card);
    }
    EXPECT_EQ(header.Number("CARD"), 1.0) << "the first of several counts";
    header.AddCard("BAD     = 'tab\there\n\xe9'");
    EXPECT_EQ(header.Text("BAD"), "tab here ?");
}

} // namespace
