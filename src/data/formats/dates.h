// Date arithmetic. A date is the number of days since 01 January
// 1960 (negative before it). Other units count from 1960 too: weeks (52 a year),
// months, quarters and half-years from 0 for the first of 1960; years are plain
// year numbers. Calendar conversion is the Julian-day-number integer algorithm
// (proleptic Gregorian) on d + 2436935.
//
// Range: dates from 01jan0100 (-679350) to 31dec9999 (2936549). A value outside,
// or missing, has no calendar parts: the functions give `.` (or 0x80000001 from
// `stmdy`). Values measured in days or units are floored first, so 0.7 is day 0.
// Functions that build a date from parts (stedate, the yw/ym/yq/yh family) want
// whole numbers in range and give `.` for anything else.
#pragma once
#include <cstdint>

namespace korvu {

inline constexpr int32_t kDateMin = -679350; // 01jan0100
inline constexpr int32_t kDateMax = 2936549; // 31dec9999
inline constexpr int32_t kJdn1960 = 2436935; // Julian day number of 01jan1960
inline constexpr int32_t kYearMin = 100;
inline constexpr int32_t kYearMax = 9999;
inline constexpr int32_t kBadPart = static_cast<int32_t>(0x80000001);

extern const char* const month_names[12]; // "January" .. "December"

// The integer algorithm itself, for any positive Julian day number.
int64_t jdn_of_ymd(int64_t y, int64_t m, int64_t d);
void ymd_of_jdn(int64_t jdn, int32_t* y, int32_t* m, int32_t* d);

// Calendar parts of date x (floored). False when x is missing or out of range.
bool date_parts(double x, int32_t* y, int32_t* m, int32_t* d);
// Elapsed date of whole y, m, d with no checks beyond the Julian arithmetic.
int32_t date_of_ymd(int32_t y, int32_t m, int32_t d);
int days_in_month(int32_t y, int32_t m);

// part 1: month, 2: day, other: year; 0x80000001 when x is missing or out of range.
int32_t stmdy(int part, double x);
// Day of week, 0 Sunday .. 6 Saturday; `.` when x has no calendar parts.
double stdow(double x);
// Elapsed date of month m, day d, year y; `.` for an impossible date.
double stedate(double m, double d, double y);
// Reads a date from text by the pattern `order`; see dates.cpp for the rules.
// Orders of d, m and y in any arrangement give a date; "ym", "yq", "yh", "yw"
// (either way round) give months, quarters, half-years or weeks; "y" a year.
// A century may stand before y ("dm19y"): it completes a year of 1 or 2 digits.
// `.` when the text does not fit the pattern or the date is impossible.
double stdate(const char* text, const char* order);

double dofmonth(double m); // first day of month m (0 = January 1960)
double monthofd(double d);
double dofquarter(double q);
double quarterofd(double d);
double dofhalfyear(double h);
double halfyearofd(double d);
double dofweek(double w); // first day of week w, 52 weeks a year
double weekofd(double d); // week 52 of a year runs from 23 December to its end

// Split a quarter (half-year) count into year and quarter 1..4 (half 1..2).
// Return 0, or 1 (outputs untouched) when q is missing or out of range.
int exquarter(double q, int32_t* year, int32_t* quarter);
int exhalfyear(double h, int32_t* year, int32_t* half);

// Time-stamp text "%2d " day, three-letter month, "%5d" year, e.g. " 1 Jan 1960"
// or "12 Mar 2005"; " invld date" when month is not 1..12, day not 1..31 or the
// year below 0. `out` needs 16 bytes. Returns the length.
int mkwdate(char* out, int day, int month, int year);

// The date functions of the expression function table, by its names.
// Numbers in, number out; `.` for missing, out of range or impossible inputs.
namespace datefn {
double mdy(double m, double d, double y);
double dow(double d);
double day(double d);
double month(double d);
double year(double d);
double yofd(double d);
double doy(double d);
double week(double d);
double quarter(double d);
double halfyear(double d);
double dofd(double d);
double dofw(double w);
double dofm(double m);
double dofq(double q);
double dofh(double h);
double dofy(double y);
double wofd(double d);
double mofd(double d);
double qofd(double d);
double hofd(double d);
double yw(double y, double w);
double ym(double y, double m);
double yq(double y, double q);
double yh(double y, double h);
// Text forms: `date` and `daily` read days, the others their unit, each by stdate
// with an order of the matching letters ("dmy", "ym", "yq", "yh", "yw", "y").
double date(const char* s, const char* order);
double daily(const char* s, const char* order);
double weekly(const char* s, const char* order);
double monthly(const char* s, const char* order);
double quarterly(const char* s, const char* order);
double halfyearly(const char* s, const char* order);
double yearly(const char* s, const char* order);
} // namespace datefn

} // namespace korvu
