#include "data/formats/dates.h"

#include <cmath>
#include <cstdio>
#include <cstring>

#include "data/area/missing.h"

namespace korvu {

const char* const month_names[12] = {"January",   "February", "March",    "April",
                                     "May",       "June",     "July",     "August",
                                     "September", "October",  "November", "December"};

int64_t jdn_of_ymd(int64_t y, int64_t m, int64_t d) {
    int64_t a = (m - 14) / 12;
    return (1461 * (y + 4800 + a)) / 4 + (367 * (m - 2 - 12 * a)) / 12 -
           (3 * ((y + 4900 + a) / 100)) / 4 + d - 32075;
}

void ymd_of_jdn(int64_t jdn, int32_t* y, int32_t* m, int32_t* d) {
    int64_t l = jdn + 68569;
    int64_t n = (4 * l) / 146097;
    l = l - (146097 * n + 3) / 4;
    int64_t i = (4000 * (l + 1)) / 1461001;
    l = l - (1461 * i) / 4 + 31;
    int64_t j = (80 * l) / 2447;
    *d = static_cast<int32_t>(l - (2447 * j) / 80);
    l = j / 11;
    *m = static_cast<int32_t>(j + 2 - 12 * l);
    *y = static_cast<int32_t>(100 * (n - 49) + i + l);
}

namespace {

// Floor of x as a day number within the date range; false when missing or out.
inline bool day_in_range(double x, int32_t* out) {
    if (!(x == x) || ismissing(x)) return false;
    double f = std::floor(x);
    if (f < kDateMin || f > kDateMax) return false;
    *out = static_cast<int32_t>(f);
    return true;
}

// x is a whole number within [lo, hi].
inline bool whole_in(double x, double lo, double hi) {
    return x == x && x >= lo && x <= hi && std::floor(x) == x;
}

// Floor of a unit count, when finite and of reasonable size.
inline bool unit_floor(double x, int64_t* out) {
    if (!(x == x) || ismissing(x)) return false;
    double f = std::floor(x);
    if (f < -1e9 || f > 1e9) return false;
    *out = static_cast<int64_t>(f);
    return true;
}

inline int64_t floordiv(int64_t a, int64_t b) {
    int64_t q = a / b;
    if ((a % b != 0) && ((a < 0) != (b < 0))) --q;
    return q;
}

inline bool year_ok(int64_t y) {
    return y >= kYearMin && y <= kYearMax;
}

int32_t day_of_year(int32_t y, int32_t m, int32_t d) {
    return date_of_ymd(y, m, d) - date_of_ymd(y, 1, 1) + 1;
}

} // namespace

int32_t date_of_ymd(int32_t y, int32_t m, int32_t d) {
    return static_cast<int32_t>(jdn_of_ymd(y, m, d) - kJdn1960);
}

int days_in_month(int32_t y, int32_t m) {
    static const int dim[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (m < 1 || m > 12) return 0;
    if (m == 2 && ((y % 4 == 0 && y % 100 != 0) || y % 400 == 0)) return 29;
    return dim[m - 1];
}

bool date_parts(double x, int32_t* y, int32_t* m, int32_t* d) {
    int32_t day;
    if (!day_in_range(x, &day)) return false;
    ymd_of_jdn(static_cast<int64_t>(day) + kJdn1960, y, m, d);
    return true;
}

int32_t stmdy(int part, double x) {
    int32_t y, m, d;
    if (!date_parts(x, &y, &m, &d)) return kBadPart;
    return part == 1 ? m : part == 2 ? d : y;
}

double stdow(double x) {
    int32_t day;
    if (!day_in_range(x, &day)) return misval;
    // 01jan1960 was a Friday
    return static_cast<double>(((day + 5) % 7 + 7) % 7);
}

double stedate(double m, double d, double y) {
    if (!whole_in(m, 1, 12) || !whole_in(d, 1, 31) || !whole_in(y, kYearMin, kYearMax))
        return misval;
    int32_t yy = static_cast<int32_t>(y), mm = static_cast<int32_t>(m),
            dd = static_cast<int32_t>(d);
    if (dd > days_in_month(yy, mm)) return misval;
    return date_of_ymd(yy, mm, dd);
}

// ---- units ----------------------------------------------------------------

double dofmonth(double m) {
    int64_t k;
    if (!unit_floor(m, &k)) return misval;
    int64_t y = 1960 + floordiv(k, 12);
    if (!year_ok(y)) return misval;
    return date_of_ymd(static_cast<int32_t>(y), static_cast<int32_t>(k - 12 * floordiv(k, 12)) + 1,
                       1);
}

double monthofd(double x) {
    int32_t y, m, d;
    if (!date_parts(x, &y, &m, &d)) return misval;
    return (y - 1960) * 12.0 + (m - 1);
}

double dofquarter(double q) {
    int64_t k;
    if (!unit_floor(q, &k)) return misval;
    int64_t y = 1960 + floordiv(k, 4);
    if (!year_ok(y)) return misval;
    return date_of_ymd(static_cast<int32_t>(y),
                       static_cast<int32_t>(k - 4 * floordiv(k, 4)) * 3 + 1, 1);
}

double quarterofd(double x) {
    int32_t y, m, d;
    if (!date_parts(x, &y, &m, &d)) return misval;
    return (y - 1960) * 4.0 + (m - 1) / 3;
}

double dofhalfyear(double h) {
    int64_t k;
    if (!unit_floor(h, &k)) return misval;
    int64_t y = 1960 + floordiv(k, 2);
    if (!year_ok(y)) return misval;
    return date_of_ymd(static_cast<int32_t>(y),
                       static_cast<int32_t>(k - 2 * floordiv(k, 2)) * 6 + 1, 1);
}

double halfyearofd(double x) {
    int32_t y, m, d;
    if (!date_parts(x, &y, &m, &d)) return misval;
    return (y - 1960) * 2.0 + (m - 1) / 6;
}

double dofweek(double w) {
    int64_t k;
    if (!unit_floor(w, &k)) return misval;
    int64_t y = 1960 + floordiv(k, 52);
    if (!year_ok(y)) return misval;
    return date_of_ymd(static_cast<int32_t>(y), 1, 1) +
           7 * static_cast<int32_t>(k - 52 * floordiv(k, 52));
}

double weekofd(double x) {
    int32_t y, m, d;
    if (!date_parts(x, &y, &m, &d)) return misval;
    int32_t wk = (day_of_year(y, m, d) - 1) / 7;
    if (wk > 51) wk = 51;
    return (y - 1960) * 52.0 + wk;
}

int exquarter(double q, int32_t* year, int32_t* quarter) {
    int64_t k;
    if (!unit_floor(q, &k)) return 1;
    int64_t y = 1960 + floordiv(k, 4);
    if (!year_ok(y)) return 1;
    *year = static_cast<int32_t>(y);
    *quarter = static_cast<int32_t>(k - 4 * floordiv(k, 4)) + 1;
    return 0;
}

int exhalfyear(double h, int32_t* year, int32_t* half) {
    int64_t k;
    if (!unit_floor(h, &k)) return 1;
    int64_t y = 1960 + floordiv(k, 2);
    if (!year_ok(y)) return 1;
    *year = static_cast<int32_t>(y);
    *half = static_cast<int32_t>(k - 2 * floordiv(k, 2)) + 1;
    return 0;
}

int mkwdate(char* out, int day, int month, int year) {
    if (month < 1 || month > 12 || day < 1 || day > 31 || year < 0 || year > 99999) {
        std::memcpy(out, " invld date", sizeof " invld date");
        return 11;
    }
    char mon[4] = {month_names[month - 1][0], month_names[month - 1][1], month_names[month - 1][2],
                   0};
    return std::snprintf(out, 16, "%2d %s%5d", day, mon, year);
}

// ---- reading dates ---------------------------------------------------------
//
// The text is cut into fields: runs of digits (numbers) and runs of letters
// (words); every other character separates. Then:
// - for a unit order (ym, yq, yh, yw), a one-letter word equal to the unit
//   letter is a separator ("1960q2", "1960m11");
// - when the order has three letters and the text is one run of 6 or 8 digits,
//   it is cut by the order: a year takes 4 digits of 8 (2 of 6), the rest 2 each;
// - the fields must then match the order's letters one for one. A month field
//   is a number 1..12 or a word that starts with at least the first three
//   letters of a month name (any case) and is no longer than the name; every
//   other field is a number.
// - A year of 1 or 2 digits takes the century given in the order ("dm19y"),
//   and stays as it is when the order gives none.
namespace {

struct Field {
    const char* p;
    int n;
    bool num;
};

int month_of_word(const char* p, int n) {
    if (n < 3) return 0;
    for (int k = 0; k < 12; ++k) {
        const char* name = month_names[k];
        int len = static_cast<int>(std::strlen(name));
        if (n > len) continue;
        bool ok = true;
        for (int i = 0; i < n && ok; ++i) {
            char c = p[i];
            if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
            char t = name[i];
            if (t >= 'A' && t <= 'Z') t = static_cast<char>(t - 'A' + 'a');
            ok = c == t;
        }
        if (ok) return k + 1;
    }
    return 0;
}

bool field_number(const Field& f, int64_t* v) {
    if (!f.num || f.n > 9) return false;
    int64_t r = 0;
    for (int i = 0; i < f.n; ++i) r = r * 10 + (f.p[i] - '0');
    *v = r;
    return true;
}

inline char lower(char c) {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}
inline bool isdig(char c) {
    return c >= '0' && c <= '9';
}
inline bool isalpha_(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

} // namespace

double stdate(const char* text, const char* order) {
    if (!text || !order) return misval;
    // the order: letters and an optional century before y
    char letters[4];
    int nl = 0;
    int century = -1;
    for (const char* o = order; *o; ++o) {
        char c = lower(*o);
        if (c == ' ') continue;
        if (isdig(c)) {
            if (!isdig(o[1]) || lower(o[2]) != 'y' || century >= 0) return misval;
            century = (c - '0') * 10 + (o[1] - '0');
            ++o;
            continue;
        }
        if (std::strchr("dmyqhw", c) == nullptr || nl == 3) return misval;
        for (int i = 0; i < nl; ++i)
            if (letters[i] == c) return misval;
        letters[nl++] = c;
    }
    letters[nl] = 0;
    bool has[128] = {};
    for (int i = 0; i < nl; ++i) has[static_cast<int>(letters[i])] = true;
    char unit = 0; // 'd' for a date, else the unit letter, 'y' for years
    if (nl == 3 && has['d'] && has['m'] && has['y']) {
        unit = 'd';
    } else if (nl == 2 && has['y']) {
        for (const char* u = "mqhw"; *u; ++u)
            if (has[static_cast<int>(*u)]) unit = *u;
    } else if (nl == 1 && has['y']) {
        unit = 'y';
    }
    if (!unit) return misval;

    Field f[8];
    int nf = 0;
    for (const char* p = text; *p;) {
        if (isdig(*p) || isalpha_(*p)) {
            bool num = isdig(*p);
            const char* s = p;
            while (*p && (num ? isdig(*p) : isalpha_(*p))) ++p;
            int n = static_cast<int>(p - s);
            if (!num && unit != 'd' && unit != 'y' && n == 1 && lower(*s) == unit) continue;
            if (nf == 8) return misval;
            f[nf++] = Field{s, n, num};
        } else {
            ++p;
        }
    }
    if (nl == 3 && nf == 1 && f[0].num && (f[0].n == 8 || f[0].n == 6)) {
        const char* s = f[0].p;
        int ylen = f[0].n == 8 ? 4 : 2;
        nf = 0;
        for (int i = 0; i < 3; ++i) {
            int len = letters[i] == 'y' ? ylen : 2;
            f[nf++] = Field{s, len, true};
            s += len;
        }
    }
    if (nf != nl) return misval;

    int64_t y = -1, m = -1, d = -1, u = -1;
    for (int i = 0; i < nl; ++i) {
        char c = letters[i];
        int64_t v;
        if (c == 'm' && !f[i].num) {
            v = month_of_word(f[i].p, f[i].n);
            if (v == 0) return misval;
        } else if (!field_number(f[i], &v)) {
            return misval;
        }
        if (c == 'y') {
            if (f[i].n <= 2 && century >= 0) v += 100 * century;
            y = v;
        } else if (c == 'm') {
            m = v;
        } else if (c == 'd') {
            d = v;
        } else {
            u = v;
        }
    }
    switch (unit) {
    case 'd':
        return stedate(static_cast<double>(m), static_cast<double>(d), static_cast<double>(y));
    case 'm': return datefn::ym(static_cast<double>(y), static_cast<double>(m));
    case 'q': return datefn::yq(static_cast<double>(y), static_cast<double>(u));
    case 'h': return datefn::yh(static_cast<double>(y), static_cast<double>(u));
    case 'w': return datefn::yw(static_cast<double>(y), static_cast<double>(u));
    default: return year_ok(y) ? static_cast<double>(y) : misval;
    }
}

// ---- the function-table forms ----------------------------------------------

namespace datefn {

namespace {
inline double part_or_missing(int32_t v) {
    return v == kBadPart ? misval : v;
}

bool order_is(const char* order, const char* want) {
    // same letters as `want`, any arrangement, digits (a century) allowed
    if (!order) return false;
    int seen = 0, n = 0;
    for (const char* o = order; *o; ++o) {
        char c = lower(*o);
        if (c == ' ' || isdig(c)) continue;
        const char* w = std::strchr(want, c);
        if (!w || c == 0) return false;
        seen |= 1 << (w - want);
        ++n;
    }
    return n == static_cast<int>(std::strlen(want)) && seen == (1 << n) - 1;
}

double unit_of(double y, double part, double lo, double hi, double per) {
    if (!whole_in(y, kYearMin, kYearMax) || !whole_in(part, lo, hi)) return misval;
    return (y - 1960) * per + (part - 1);
}
} // namespace

double mdy(double m, double d, double y) {
    return stedate(m, d, y);
}
double dow(double d) {
    return stdow(d);
}
double day(double d) {
    return part_or_missing(stmdy(2, d));
}
double month(double d) {
    return part_or_missing(stmdy(1, d));
}
double year(double d) {
    return part_or_missing(stmdy(3, d));
}
double yofd(double d) {
    return year(d);
}
double doy(double x) {
    int32_t y, m, d;
    if (!date_parts(x, &y, &m, &d)) return misval;
    return day_of_year(y, m, d);
}
double week(double x) {
    double w = weekofd(x);
    return ismissing(w) ? misval : w - 52.0 * std::floor(w / 52.0) + 1;
}
double quarter(double d) {
    int32_t m = stmdy(1, d);
    return m == kBadPart ? misval : (m - 1) / 3 + 1;
}
double halfyear(double d) {
    int32_t m = stmdy(1, d);
    return m == kBadPart ? misval : (m - 1) / 6 + 1;
}
double dofd(double d) {
    return d;
}
double dofw(double w) {
    return dofweek(w);
}
double dofm(double m) {
    return dofmonth(m);
}
double dofq(double q) {
    return dofquarter(q);
}
double dofh(double h) {
    return dofhalfyear(h);
}
double dofy(double y) {
    int64_t k;
    if (!unit_floor(y, &k) || !year_ok(k)) return misval;
    return date_of_ymd(static_cast<int32_t>(k), 1, 1);
}
double wofd(double d) {
    return weekofd(d);
}
double mofd(double d) {
    return monthofd(d);
}
double qofd(double d) {
    return quarterofd(d);
}
double hofd(double d) {
    return halfyearofd(d);
}
double yw(double y, double w) {
    return unit_of(y, w, 1, 52, 52);
}
double ym(double y, double m) {
    return unit_of(y, m, 1, 12, 12);
}
double yq(double y, double q) {
    return unit_of(y, q, 1, 4, 4);
}
double yh(double y, double h) {
    return unit_of(y, h, 1, 2, 2);
}

double date(const char* s, const char* order) {
    return daily(s, order);
}
double daily(const char* s, const char* order) {
    return order_is(order, "dmy") ? stdate(s, order) : misval;
}
double weekly(const char* s, const char* order) {
    return order_is(order, "yw") ? stdate(s, order) : misval;
}
double monthly(const char* s, const char* order) {
    return order_is(order, "ym") ? stdate(s, order) : misval;
}
double quarterly(const char* s, const char* order) {
    return order_is(order, "yq") ? stdate(s, order) : misval;
}
double halfyearly(const char* s, const char* order) {
    return order_is(order, "yh") ? stdate(s, order) : misval;
}
double yearly(const char* s, const char* order) {
    return order_is(order, "y") ? stdate(s, order) : misval;
}

} // namespace datefn

} // namespace korvu
