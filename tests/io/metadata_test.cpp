#include "io/metadata.h"

#include <gtest/gtest.h>

namespace {

using namespace corvane::io;

Header Of(std::initializer_list<const char*> cards)
{
    Header header;
    for (const char* card : cards) {
        header.AddCard(card);
    }
    return header;
}

TEST(Metadata, ReadsTheNamesThatProgramsUse)
{
    EXPECT_EQ(ExposureSeconds(Of({"EXPOSURE= 6,4E-05"})), 6.4e-5);
    EXPECT_EQ(ExposureSeconds(Of({"EXPOSURE= 2", "EXPTIME = 060.00"})), 60.0) << "EXPTIME goes first";
    EXPECT_EQ(ExposureSeconds(Of({"EXPTIME = 'long'", "EXPOSURE= 2"})), 2.0) << "a text is no exposure";
    EXPECT_EQ(CcdTemperature(Of({"SET-TEMP= -20", "CCD-TEMP= -19.5"})), -19.5);
    EXPECT_EQ(Gain(Of({"ISOSPEED= 800", "EGAIN   = 0.9"})), 800.0);
    EXPECT_EQ(ElectronsPerCount(Of({"GAIN    = 100", "EGAIN   = 0.9"})), 0.9);
    EXPECT_EQ(Filter(Of({"FILTER  = ''", "FILTER1 = 'Ha'"})), "Ha");
    EXPECT_TRUE(IsBottomUp(Of({})));
    EXPECT_EQ(RowOrder(Of({"ROWORDER= 'TOP-DOWN'"})), "TOP-DOWN");
}

TEST(Metadata, ReadsObservationTimes)
{
    const std::pair<Header, const char*> cases[] = {
        {Of({"DATE-OBS= '2024-07-30T22:44:36.1239'"}), "2024-07-30T22:44:36.124"},
        {Of({"DATE-OBS= '2017-12-19T18:33:43.317-0700'"}), "2017-12-20T01:33:43.317"},
        {Of({"DATE-OBS= '2017-12-19T00:30:00+02:00'"}), "2017-12-18T22:30:00.000"},
        {Of({"DATE-OBS= '2000-02-29'", "TIME-OBS= '23:59:59.9996Z'"}), "2000-03-01T00:00:00.000"},
        {Of({"DATE-OBS= '05/04/87'", "UT      = '3:04'"}), "1987-04-05T03:04:00.000"},
        {Of({"DATE-OBS= '2001-02-29'", "MJD-OBS = 40587.5"}), "1970-01-01T12:00:00.000"},
        {Of({"DATE-OBS= '2001-01-01T25:61:00'"}), "none"},
        {Of({"MJD-OBS = 1E300"}), "9999-12-31T23:59:59.999"},
    };
    for (const auto& [header, time] : cases) {
        EXPECT_EQ(DateObs(header).value_or("none"), time) << header.Cards()[0];
    }
    EXPECT_EQ(ParseTime("1970-01-02T00:00:01"), 86401.0);
}

} // namespace
