#include "io/header.h"

#include <limits>

#include <gtest/gtest.h>

namespace {

using corvane::io::Header;

TEST(Header, ReadsValuesAsCaptureProgramsWriteThem)
{
    struct Case {
        const char* card;
        const char* keyword;
        const char* text; // "" for none
        double number;    // -1 for none
        const char* comment;
    };
    for (const Case& c : {
             Case{"EXPTIME = 060.00 / Exposure / seconds", "EXPTIME", "060.00", 60.0, "Exposure / seconds"},
             Case{"EXPOSURE= 6,4E-05", "exposure", "6,4E-05", 6.4e-5, ""},
             Case{"CRVAL1  =  +1.25D+02 / [deg]", "CRVAL1", "+1.25D+02", 125.0, "[deg]"},
             Case{"GAIN    = '  12  '", "GAIN", "  12", 12.0, ""},
             Case{"OBJECT  = 'O''Neill / north' / a name", "OBJECT", "O'Neill / north", -1.0, "a name"},
             Case{"EMPTY   = / no value", "EMPTY", "", -1.0, "no value"},
             Case{"OPEN    = 'no closing quote", "OPEN", "no closing quote", -1.0, ""},
             Case{"TEL_FOCUS= 12.5 / overlong", "TEL_FOCUS", "12.5", 12.5, "overlong"},
             Case{"HIERARCH ESO DET DIT = 30.0 / s", "ESO DET DIT", "30.0", 30.0, "s"},
             Case{"HIERARCH ESO DET DIT = 30.0 / s", "HIERARCH ESO DET DIT", "30.0", 30.0, "s"},
             Case{"HUGE    = 1E999", "HUGE", "1E999", -1.0, ""},
             Case{"COMMENT = 5", "COMMENT", "", -1.0, ""},
         }) {
        Header header;
        header.AddCard(c.card);
        EXPECT_TRUE(header.Has(c.keyword)) << c.card;
        EXPECT_EQ(header.Text(c.keyword).value_or(""), c.text) << c.card;
        EXPECT_EQ(header.Number(c.keyword).value_or(-1.0), c.number) << c.card;
        EXPECT_EQ(header.Comment(c.keyword), c.comment) << c.card;
    }
}

TEST(Header, WritesNumbersThatReadBackToTheBit)
{
    Header header;
    for (const double value : {0.1, -1.0 / 3.0, 1e-300, 6.02214076e23, 60.0, -0.0}) {
        header.Set("VALUE", value);
        EXPECT_EQ(header.Number("VALUE"), value);
        EXPECT_NE(header.Text("VALUE")->find('.'), std::string::npos) << "a whole number would read as an integer";
    }
    header.Set("VALUE", std::numeric_limits<double>::quiet_NaN());
    EXPECT_FALSE(header.Text("VALUE"));
    header.Set("VALUE", std::numeric_limits<long long>::min());
    EXPECT_EQ(header.Text("VALUE"), "-9223372036854775808");
    EXPECT_EQ(header.Cards().size(), 1U);
}

TEST(Header, SetsTheCardsOfTheStandard)
{
    Header header;
    header.Set("OBJECT", "M 31", "name");
    header.Set("BITPIX", 16, "bits");
    header.Set("ESO DET DIT", 1.5);
    for (std::size_t i = 0;
         const std::string start : {"OBJECT  = 'M 31    '           / name", "BITPIX  =                   16 / bits",
                                    "HIERARCH ESO DET DIT =     1.5"}) {
        EXPECT_EQ(header.Cards()[i].size(), 80U);
        EXPECT_EQ(header.Cards()[i].substr(0, header.Cards()[i].find_last_not_of(' ') + 1), start);
        ++i;
    }
    header.Set("object", "caf\xc3\xa9");
    EXPECT_EQ(header.Text("OBJECT"), "caf??") << "only ASCII text may stand in a card";
    EXPECT_EQ(header.Comment("OBJECT"), "name") << "an empty comment keeps the old one";
    EXPECT_THROW(header.Set(std::string(70, 'K'), 1.0), std::invalid_argument) << "no room for the value";
}

TEST(Header, LongStringsContinueAndAreReplacedWhole)
{
    for (const std::size_t length : {60U, 66U, 67U, 68U, 69U, 134U, 135U, 300U}) {
        for (const char c : {'a', '\''}) {
            Header header;
            header.Set("BEFORE", 1);
            header.Set("LONG", std::string(length, c), "comment");
            header.Set("AFTER", 2);
            EXPECT_EQ(header.Text("LONG"), std::string(length, c));
            header.Set("LONG", "short");
            EXPECT_EQ(header.Cards().size(), 3U) << "CONTINUE cards go with their card";
            header.Remove("LONG");
            EXPECT_EQ(header.Cards().size(), 2U);
            EXPECT_EQ(header.Number("AFTER"), 2.0);
        }
    }
}

TEST(Header, JoinsHistoryAgain)
{
    Header header;
    std::vector<std::string> lines;
    for (const std::size_t length : {0U, 1U, 71U, 72U, 73U, 143U, 144U, 500U}) {
        lines.push_back(std::string(length, 'x'));
        lines.push_back(std::string(length, '&'));
        lines.push_back(std::string(length, ' ') + "end");
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
    header.AddCard("BAD     = 'tab\there\n'");
    EXPECT_EQ(header.Text("BAD"), "tab here");
    header.Remove("CARD");
    EXPECT_FALSE(header.Has("CARD"));
}

} // namespace
