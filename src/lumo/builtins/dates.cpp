// Date functions: the data side's calendar, element by element.
#include <string>

#include "data/formats/dates.h"
#include "lumo/builtins/bi.h"

namespace korvu {

#define BI_T1(nm)                                                                                  \
    static void bi_##nm(int n) {                                                                   \
        bi_mapn(n, 1, [](const double* v) { return datefn::nm(v[0]); });                           \
    }
#define BI_T2(nm)                                                                                  \
    static void bi_##nm(int n) {                                                                   \
        bi_mapn(n, 2, [](const double* v) { return datefn::nm(v[0], v[1]); });                     \
    }
BI_T1(day)
BI_T1(month)
BI_T1(year)
BI_T1(yofd)
BI_T1(dow)
BI_T1(doy)
BI_T1(week)
BI_T1(quarter)
BI_T1(halfyear)
BI_T1(dofy)
BI_T1(dofh)
BI_T1(dofq)
BI_T1(dofm)
BI_T1(dofw)
BI_T1(dofd)
BI_T1(hofd)
BI_T1(qofd)
BI_T1(mofd)
BI_T1(wofd)
BI_T2(yw)
BI_T2(ym)
BI_T2(yq)
BI_T2(yh)

static void bi_mdy(int n) {
    bi_mapn(n, 3, [](const double* v) { return datefn::mdy(v[0], v[1], v[2]); });
}

// date(s, order[, topyear]) and the unit forms: text to a number, element
// by element over a string matrix; the order is one string. With topyear, a
// year of one or two digits is the latest year with those last digits not
// after topyear (a century in the order takes precedence).
using TextFn = double (*)(const char*, const char*);
using YearFn = double (*)(double);

// The order with century cc before its y.
static std::string withcentury(const std::string& order, int cc) {
    std::string o;
    for (char ch : order) {
        if (ch == 'y' || ch == 'Y') {
            o += static_cast<char>('0' + cc / 10);
            o += static_cast<char>('0' + cc % 10);
        }
        o += ch;
    }
    return o;
}

static void fromtext(int n, TextFn f, YearFn yearof) {
    MObj* s = bi_mat(n, 0);
    std::string order;
    if (!s || !bi_string(s) || !bi_getstr(n, 1, &order)) return;
    int64_t top = 0;
    if (n == 3 && !bi_getint(n, 2, 100, 9999, &top)) return;
    bool century = false;
    for (char ch : order) century |= ch >= '0' && ch <= '9';
    s = bi_arg(n, 0);
    MObj* o = bi_new(MT_REAL, s->rows, s->cols);
    if (!o) return;
    const std::string hi = withcentury(order, static_cast<int>(top / 100));
    const std::string lo = withcentury(order, static_cast<int>(top / 100) - 1);
    for (int64_t i = 0; i < m_nel(s); i++) {
        const char* text = m_sel(s)[i]->s;
        double r = f(text, order.c_str());
        if (n == 3 && !century && r >= misval) {
            // a short year: first in the century of topyear, else the one before
            r = f(text, hi.c_str());
            const double y = r < misval ? yearof(r) : misval;
            if (y < misval && y > static_cast<double>(top)) r = f(text, lo.c_str());
        }
        m_rel(o)[i] = r;
    }
    bi_result(n, o);
}
static double yofday(double d) {
    return datefn::year(d);
}
static double yofweek(double w) {
    return datefn::year(datefn::dofw(w));
}
static double yofmonth(double m) {
    return datefn::year(datefn::dofm(m));
}
static double yofquarter(double q) {
    return datefn::year(datefn::dofq(q));
}
static double yofhalf(double h) {
    return datefn::year(datefn::dofh(h));
}
static double yofyear(double y) {
    return y;
}
static void bi_date(int n) {
    fromtext(n, datefn::date, yofday);
}
static void bi_weekly(int n) {
    fromtext(n, datefn::weekly, yofweek);
}
static void bi_monthly(int n) {
    fromtext(n, datefn::monthly, yofmonth);
}
static void bi_quarterly(int n) {
    fromtext(n, datefn::quarterly, yofquarter);
}
static void bi_halfyearly(int n) {
    fromtext(n, datefn::halfyearly, yofhalf);
}
static void bi_yearly(int n) {
    fromtext(n, datefn::yearly, yofyear);
}

void bi_link_dates(MBiFn* t) {
    t[bi_index("date")] = bi_date;
    t[bi_index("mdy")] = bi_mdy;
    t[bi_index("day")] = bi_day;
    t[bi_index("month")] = bi_month;
    t[bi_index("year")] = bi_year;
    t[bi_index("yofd")] = bi_yofd;
    t[bi_index("dow")] = bi_dow;
    t[bi_index("doy")] = bi_doy;
    t[bi_index("week")] = bi_week;
    t[bi_index("quarter")] = bi_quarter;
    t[bi_index("halfyear")] = bi_halfyear;
    t[bi_index("yearly")] = bi_yearly;
    t[bi_index("halfyearly")] = bi_halfyearly;
    t[bi_index("quarterly")] = bi_quarterly;
    t[bi_index("monthly")] = bi_monthly;
    t[bi_index("weekly")] = bi_weekly;
    t[bi_index("dofy")] = bi_dofy;
    t[bi_index("dofh")] = bi_dofh;
    t[bi_index("dofq")] = bi_dofq;
    t[bi_index("dofm")] = bi_dofm;
    t[bi_index("dofw")] = bi_dofw;
    t[bi_index("dofd")] = bi_dofd;
    t[bi_index("hofd")] = bi_hofd;
    t[bi_index("qofd")] = bi_qofd;
    t[bi_index("mofd")] = bi_mofd;
    t[bi_index("wofd")] = bi_wofd;
    t[bi_index("yw")] = bi_yw;
    t[bi_index("ym")] = bi_ym;
    t[bi_index("yq")] = bi_yq;
    t[bi_index("yh")] = bi_yh;
}

} // namespace korvu
