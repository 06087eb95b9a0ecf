// Date arithmetic and the date functions, against python3's
// datetime (proleptic Gregorian) as the independent reference.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "data/area/missing.h"
#include "data/formats/dates.h"

using namespace korvu;

namespace {

bool is_dot(double x) {
    return dbits(x) == dbits(misval);
}

struct Ref {
    int e, y, m, d, dow, doy;
};

// Made by this python3 script (not by the code under test):
/*
import datetime as dt, random
b = dt.date(1960,1,1)
random.seed(20)
days = set([-679350, 2936549, 0, -1, 1, 17000, 59, 60, 366, -365, -366])
for y,m,d in
[(1900,2,28),(1900,3,1),(2000,2,28),(2000,2,29),(2000,3,1),(2100,2,28),(2100,3,1),(1582,10,4),(1582,10,15),(100,12,31),(9999,1,1),(1999,12,31),(2004,12,31),(1600,2,29)]:
    days.add((dt.date(y,m,d)-b).days)
while len(days) < 60:
    days.add(random.randint(-679350, 2936549))
for e in sorted(days):
    x = b + dt.timedelta(days=e)
    dow = (x.weekday()+1) % 7
    doy = x.timetuple().tm_yday
    print("    {%d, %d, %d, %d, %d, %d}," % (e, x.year, x.month, x.day, dow, doy))
*/
const Ref kRef[] = {
    {-679350, 100, 1, 1, 5, 1},      {-678986, 100, 12, 31, 5, 365},
    {-566188, 409, 10, 30, 5, 303},  {-364743, 961, 5, 14, 4, 134},
    {-290437, 1164, 10, 23, 5, 297}, {-253559, 1265, 10, 11, 0, 284},
    {-246298, 1285, 8, 28, 2, 240},  {-154739, 1536, 5, 4, 1, 125},
    {-137785, 1582, 10, 4, 1, 277},  {-137774, 1582, 10, 15, 5, 288},
    {-131428, 1600, 2, 29, 2, 60},   {-45150, 1836, 5, 20, 5, 141},
    {-21856, 1900, 2, 28, 3, 59},    {-21855, 1900, 3, 1, 4, 60},
    {-366, 1958, 12, 31, 3, 365},    {-365, 1959, 1, 1, 4, 1},
    {-1, 1959, 12, 31, 4, 365},      {0, 1960, 1, 1, 5, 1},
    {1, 1960, 1, 2, 6, 2},           {59, 1960, 2, 29, 1, 60},
    {60, 1960, 3, 1, 2, 61},         {366, 1961, 1, 1, 0, 1},
    {14609, 1999, 12, 31, 5, 365},   {14668, 2000, 2, 28, 1, 59},
    {14669, 2000, 2, 29, 2, 60},     {14670, 2000, 3, 1, 3, 61},
    {16436, 2004, 12, 31, 5, 366},   {17000, 2006, 7, 18, 2, 199},
    {31073, 2045, 1, 27, 5, 27},     {51193, 2100, 2, 28, 0, 59},
    {51194, 2100, 3, 1, 1, 60},      {158739, 2394, 8, 12, 5, 224},
    {195802, 2496, 2, 1, 3, 32},     {410445, 3083, 10, 5, 5, 278},
    {649841, 3739, 3, 16, 1, 75},    {659216, 3764, 11, 14, 3, 319},
    {693977, 3860, 1, 17, 2, 17},    {699490, 3875, 2, 20, 6, 51},
    {728127, 3953, 7, 18, 6, 199},   {1026642, 4770, 11, 7, 6, 311},
    {1046702, 4825, 10, 9, 4, 282},  {1048627, 4831, 1, 16, 4, 16},
    {1113177, 5007, 10, 11, 0, 284}, {1205573, 5260, 9, 29, 3, 273},
    {1310450, 5547, 11, 22, 6, 326}, {1492668, 6046, 10, 14, 0, 287},
    {1723737, 6679, 6, 7, 6, 158},   {1756137, 6768, 2, 21, 3, 52},
    {1943656, 7281, 7, 19, 6, 200},  {1953346, 7308, 1, 30, 1, 30},
    {1987077, 7400, 6, 7, 6, 158},   {2147651, 7840, 1, 26, 0, 26},
    {2178299, 7923, 12, 25, 2, 359}, {2199008, 7980, 9, 5, 5, 249},
    {2352292, 8400, 5, 10, 3, 131},  {2535622, 8902, 4, 19, 3, 109},
    {2620221, 9133, 12, 3, 0, 337},  {2883040, 9853, 6, 30, 4, 181},
    {2936185, 9999, 1, 1, 5, 1},     {2936549, 9999, 12, 31, 5, 365},
};

} // namespace

TEST(Dates, AgreeWithPythonDatetime) {
    for (const Ref& r : kRef) {
        SCOPED_TRACE(r.e);
        EXPECT_EQ(stmdy(1, r.e), r.m);
        EXPECT_EQ(stmdy(2, r.e), r.d);
        EXPECT_EQ(stmdy(3, r.e), r.y);
        EXPECT_EQ(stdow(r.e), r.dow);
        EXPECT_EQ(datefn::doy(r.e), r.doy);
        EXPECT_EQ(stedate(r.m, r.d, r.y), r.e);
        EXPECT_EQ(datefn::mdy(r.m, r.d, r.y), r.e);
        EXPECT_EQ(jdn_of_ymd(r.y, r.m, r.d), r.e + 2436935);
    }
}

TEST(Dates, JulianDayAnchor) {
    // 01jan1960 is Julian day number 2436935 and a Friday
    EXPECT_EQ(jdn_of_ymd(1960, 1, 1), 2436935);
    int32_t y, m, d;
    ymd_of_jdn(2436935, &y, &m, &d);
    EXPECT_EQ(y, 1960);
    EXPECT_EQ(m, 1);
    EXPECT_EQ(d, 1);
    EXPECT_EQ(stdow(0), 5);
    EXPECT_EQ(stdow(-1), 4);
    EXPECT_EQ(stdow(2), 0); // Sunday 3 January 1960
}

TEST(Dates, EveryDayOfTheRangeRoundTrips) {
    int32_t py = 100, pm = 1, pd = 1;
    ASSERT_EQ(stedate(1, 1, 100), kDateMin);
    ASSERT_EQ(stedate(12, 31, 9999), kDateMax);
    for (int32_t e = kDateMin; e <= kDateMax; ++e) {
        int32_t y, m, d;
        ASSERT_TRUE(date_parts(e, &y, &m, &d));
        if (e > kDateMin) {
            // the day after the previous one
            bool next = (y == py && m == pm && d == pd + 1) ||
                        (y == py && m == pm + 1 && d == 1 && pd == days_in_month(py, pm)) ||
                        (y == py + 1 && m == 1 && d == 1 && pm == 12 && pd == 31);
            ASSERT_TRUE(next) << e;
        }
        ASSERT_EQ(date_of_ymd(y, m, d), e);
        py = y;
        pm = m;
        pd = d;
    }
}

TEST(Dates, StmdyFloorsAndRejects) {
    EXPECT_EQ(stmdy(2, 0.75), 1);
    EXPECT_EQ(stmdy(2, -0.25), 31);
    EXPECT_EQ(stmdy(1, -0.25), 12);
    EXPECT_EQ(stmdy(3, -0.25), 1959);
    EXPECT_EQ(stmdy(1, misval), static_cast<int32_t>(0x80000001));
    EXPECT_EQ(stmdy(3, mkmissing(3)), kBadPart);
    EXPECT_EQ(stmdy(2, kDateMax + 1), kBadPart);
    EXPECT_EQ(stmdy(2, kDateMin - 1), kBadPart);
    EXPECT_EQ(stmdy(2, kDateMin - 0.5), kBadPart);
    EXPECT_EQ(stmdy(3, 1e300), kBadPart);
    EXPECT_EQ(stmdy(3, -1e300), kBadPart);
    EXPECT_TRUE(is_dot(stdow(misval)));
    EXPECT_TRUE(is_dot(datefn::day(kDateMax + 1)));
    EXPECT_TRUE(is_dot(datefn::year(misval)));
}

TEST(Dates, StedateImpossible) {
    EXPECT_TRUE(is_dot(stedate(2, 29, 1900)));
    EXPECT_EQ(stedate(2, 29, 2000), 14669);
    EXPECT_TRUE(is_dot(stedate(2, 30, 2000)));
    EXPECT_TRUE(is_dot(stedate(4, 31, 2000)));
    EXPECT_TRUE(is_dot(stedate(13, 1, 2000)));
    EXPECT_TRUE(is_dot(stedate(0, 1, 2000)));
    EXPECT_TRUE(is_dot(stedate(1, 0, 2000)));
    EXPECT_TRUE(is_dot(stedate(1, 1, 99)));
    EXPECT_TRUE(is_dot(stedate(1, 1, 10000)));
    EXPECT_TRUE(is_dot(stedate(1.5, 1, 2000)));
    EXPECT_TRUE(is_dot(stedate(1, 1.5, 2000)));
    EXPECT_TRUE(is_dot(stedate(misval, 1, 2000)));
    EXPECT_TRUE(is_dot(stedate(1, 1, mkmissing(1))));
    EXPECT_EQ(stedate(7, 18, 2006), 17000);
}

TEST(Dates, MonthUnits) {
    EXPECT_EQ(dofmonth(0), 0);
    EXPECT_EQ(dofmonth(1), 31);
    EXPECT_EQ(dofmonth(2), 60);   // 1960 is a leap year
    EXPECT_EQ(dofmonth(12), 366); // 01jan1961
    EXPECT_EQ(dofmonth(-1), -31); // 01dec1959
    EXPECT_EQ(dofmonth(1.9), 31); // floored
    EXPECT_EQ(monthofd(0), 0);
    EXPECT_EQ(monthofd(30), 0);
    EXPECT_EQ(monthofd(31), 1);
    EXPECT_EQ(monthofd(-1), -1);
    EXPECT_EQ(monthofd(-31), -1);
    EXPECT_EQ(monthofd(-32), -2);
    EXPECT_EQ(monthofd(17000), (2006 - 1960) * 12 + 6);
    EXPECT_TRUE(is_dot(dofmonth(misval)));
    EXPECT_TRUE(is_dot(dofmonth(1e12)));
    EXPECT_TRUE(is_dot(monthofd(mkmissing(2))));
    for (int m = (100 - 1960) * 12; m <= (9999 - 1960) * 12 + 11; ++m) {
        double d = dofmonth(m);
        ASSERT_EQ(monthofd(d), m);
        ASSERT_EQ(stmdy(2, d), 1);
        ASSERT_EQ(monthofd(d - 1), m - 1 >= (100 - 1960) * 12 ? m - 1 : misval);
    }
    EXPECT_TRUE(is_dot(dofmonth((100 - 1960) * 12 - 1)));
    EXPECT_TRUE(is_dot(dofmonth((9999 - 1960) * 12 + 12)));
}

TEST(Dates, QuarterAndHalfYearUnits) {
    EXPECT_EQ(dofquarter(0), 0);
    EXPECT_EQ(dofquarter(1), 91); // 31 + 29 + 31
    EXPECT_EQ(dofquarter(4), 366);
    EXPECT_EQ(dofquarter(-1), -92); // 01oct1959: 31 + 30 + 31 days before
    EXPECT_EQ(quarterofd(90), 0);
    EXPECT_EQ(quarterofd(91), 1);
    EXPECT_EQ(quarterofd(-1), -1);
    EXPECT_EQ(quarterofd(-92), -1);
    EXPECT_EQ(quarterofd(-93), -2);
    EXPECT_EQ(dofhalfyear(0), 0);
    EXPECT_EQ(dofhalfyear(1), 182); // 31 + 29 + 31 + 30 + 31 + 30
    EXPECT_EQ(dofhalfyear(-1), -184);
    EXPECT_EQ(halfyearofd(181), 0);
    EXPECT_EQ(halfyearofd(182), 1);
    EXPECT_EQ(halfyearofd(-1), -1);
    EXPECT_EQ(halfyearofd(-184), -1);
    EXPECT_EQ(halfyearofd(-185), -2);
    for (int q = -7440; q <= 32159; ++q) ASSERT_EQ(quarterofd(dofquarter(q)), q);
    for (int h = -3720; h <= 16079; ++h) ASSERT_EQ(halfyearofd(dofhalfyear(h)), h);
    int32_t y, p;
    EXPECT_EQ(exquarter(-1, &y, &p), 0);
    EXPECT_EQ(y, 1959);
    EXPECT_EQ(p, 4);
    EXPECT_EQ(exquarter(9, &y, &p), 0);
    EXPECT_EQ(y, 1962);
    EXPECT_EQ(p, 2);
    EXPECT_EQ(exhalfyear(3, &y, &p), 0);
    EXPECT_EQ(y, 1961);
    EXPECT_EQ(p, 2);
    EXPECT_EQ(exhalfyear(-2, &y, &p), 0);
    EXPECT_EQ(y, 1959);
    EXPECT_EQ(p, 1);
    EXPECT_EQ(exhalfyear(misval, &y, &p), 1);
    EXPECT_EQ(exquarter(1e15, &y, &p), 1);
}

TEST(Dates, WeekUnits) {
    // 52 weeks a year: week 1 starts on 1 January, week 52 runs to 31 December
    EXPECT_EQ(dofweek(0), 0);
    EXPECT_EQ(dofweek(1), 7);
    EXPECT_EQ(dofweek(51), 357); // 23dec1960
    EXPECT_EQ(dofweek(52), 366); // 01jan1961
    EXPECT_EQ(dofweek(-1), -8);  // 24dec1959: 1959 has no 29 February
    EXPECT_EQ(weekofd(356), 50);
    EXPECT_EQ(weekofd(357), 51);
    EXPECT_EQ(weekofd(365), 51); // 31dec1960, the ninth day of week 52
    EXPECT_EQ(weekofd(366), 52);
    EXPECT_EQ(weekofd(-1), -1);
    EXPECT_EQ(weekofd(-8), -1);
    EXPECT_EQ(weekofd(-9), -2);
    for (int w = -96720; w <= 418079; ++w) ASSERT_EQ(weekofd(dofweek(w)), w);
    EXPECT_EQ(datefn::week(365), 52);
    EXPECT_EQ(datefn::week(357), 52);
    EXPECT_EQ(datefn::week(356), 51);
    EXPECT_EQ(datefn::week(0), 1);
    EXPECT_EQ(datefn::week(6), 1);
    EXPECT_EQ(datefn::week(7), 2);
}

TEST(Dates, FunctionTableForms) {
    using namespace datefn;
    EXPECT_EQ(mdy(7, 18, 2006), 17000);
    EXPECT_EQ(day(17000), 18);
    EXPECT_EQ(month(17000), 7);
    EXPECT_EQ(year(17000), 2006);
    EXPECT_EQ(yofd(17000), 2006);
    EXPECT_EQ(dow(17000), 2); // a Tuesday
    EXPECT_EQ(doy(17000), 199);
    EXPECT_EQ(week(17000), 29);
    EXPECT_EQ(quarter(17000), 3);
    EXPECT_EQ(halfyear(17000), 2);
    EXPECT_EQ(quarter(90), 1);
    EXPECT_EQ(quarter(91), 2);
    EXPECT_EQ(halfyear(181), 1);
    EXPECT_EQ(halfyear(182), 2);
    EXPECT_EQ(dofy(1960), 0);
    EXPECT_EQ(dofy(1961), 366);
    EXPECT_EQ(dofy(1959), -365);
    EXPECT_TRUE(is_dot(dofy(99)));
    EXPECT_EQ(dofd(17000), 17000);
    EXPECT_EQ(dofm(1), 31);
    EXPECT_EQ(dofq(1), 91);
    EXPECT_EQ(dofh(1), 182);
    EXPECT_EQ(dofw(1), 7);
    EXPECT_EQ(mofd(31), 1);
    EXPECT_EQ(qofd(91), 1);
    EXPECT_EQ(hofd(182), 1);
    EXPECT_EQ(wofd(7), 1);
    EXPECT_EQ(ym(1960, 1), 0);
    EXPECT_EQ(ym(1959, 12), -1);
    EXPECT_EQ(ym(2006, 7), 558);
    EXPECT_EQ(yq(1959, 4), -1);
    EXPECT_EQ(yq(1961, 1), 4);
    EXPECT_EQ(yh(1961, 1), 2);
    EXPECT_EQ(yw(1960, 52), 51);
    EXPECT_EQ(yw(1961, 1), 52);
    EXPECT_TRUE(is_dot(yw(1960, 53)));
    EXPECT_TRUE(is_dot(ym(1960, 13)));
    EXPECT_TRUE(is_dot(yq(1960, 0)));
    EXPECT_TRUE(is_dot(yh(1960, 3)));
    EXPECT_TRUE(is_dot(ym(1960.5, 1)));
    EXPECT_TRUE(is_dot(ym(misval, 1)));
    EXPECT_TRUE(is_dot(dow(misval)));
    EXPECT_TRUE(is_dot(doy(mkmissing(4))));
}

TEST(Dates, ReadingText) {
    EXPECT_EQ(stdate("1jan1960", "dmy"), 0);
    EXPECT_EQ(stdate("01JAN1960", "dmy"), 0);
    EXPECT_EQ(stdate("January 1, 1960", "mdy"), 0);
    EXPECT_EQ(stdate("1960-01-01", "ymd"), 0);
    EXPECT_EQ(stdate("19600101", "ymd"), 0);
    EXPECT_EQ(stdate("010160", "dm19y"), 0);
    EXPECT_EQ(stdate("1/1/60", "md19y"), 0);
    EXPECT_EQ(stdate("7/18/06", "md20y"), 17000);
    EXPECT_EQ(stdate("18 July 2006", "dmy"), 17000);
    EXPECT_EQ(stdate("  18.7.2006 ", "dmy"), 17000);
    EXPECT_EQ(stdate("1 Sept 1960", "dmy"), 244);
    EXPECT_EQ(stdate("31dec1959", "dmy"), -1);
    EXPECT_TRUE(is_dot(stdate("1/1/60", "mdy"))); // year 60 is out of range
    EXPECT_TRUE(is_dot(stdate("31feb2000", "dmy")));
    EXPECT_TRUE(is_dot(stdate("1jax1960", "dmy")));
    EXPECT_TRUE(is_dot(stdate("1 ju 1960", "dmy")));
    EXPECT_TRUE(is_dot(stdate("1 jan", "dmy")));
    EXPECT_TRUE(is_dot(stdate("1 jan 1960 5", "dmy")));
    EXPECT_TRUE(is_dot(stdate("", "dmy")));
    EXPECT_TRUE(is_dot(stdate("1jan1960", "dmx")));
    EXPECT_TRUE(is_dot(stdate("1jan1960", "ddy")));
    EXPECT_EQ(stdate("1960q2", "yq"), 1);
    EXPECT_EQ(stdate("1959q4", "yq"), -1);
    EXPECT_EQ(stdate("1960m11", "ym"), 10);
    EXPECT_EQ(stdate("1960 November", "ym"), 10);
    EXPECT_EQ(stdate("11/1960", "my"), 10);
    EXPECT_EQ(stdate("1961h1", "yh"), 2);
    EXPECT_EQ(stdate("1960w52", "yw"), 51);
    EXPECT_EQ(stdate("1960", "y"), 1960);
    EXPECT_TRUE(is_dot(stdate("1960q5", "yq")));
    EXPECT_TRUE(is_dot(stdate("99", "y")));

    using namespace datefn;
    EXPECT_EQ(date("18jul2006", "dmy"), 17000);
    EXPECT_EQ(daily("2006-07-18", "ymd"), 17000);
    EXPECT_EQ(monthly("1960m1", "ym"), 0);
    EXPECT_EQ(quarterly("1960q3", "yq"), 2);
    EXPECT_EQ(halfyearly("1960h2", "yh"), 1);
    EXPECT_EQ(weekly("1960w2", "yw"), 1);
    EXPECT_EQ(yearly("2006", "y"), 2006);
    EXPECT_TRUE(is_dot(monthly("18jul2006", "dmy")));
    EXPECT_TRUE(is_dot(daily("1960m1", "ym")));
}

TEST(Dates, Mkwdate) {
    char b[16];
    EXPECT_EQ(mkwdate(b, 1, 1, 1960), 11);
    EXPECT_STREQ(b, " 1 Jan 1960");
    mkwdate(b, 12, 3, 2005);
    EXPECT_STREQ(b, "12 Mar 2005");
    mkwdate(b, 1, 13, 2005);
    EXPECT_STREQ(b, " invld date");
    mkwdate(b, 0, 1, 2005);
    EXPECT_STREQ(b, " invld date");
    mkwdate(b, 32, 1, 2005);
    EXPECT_STREQ(b, " invld date");
}
