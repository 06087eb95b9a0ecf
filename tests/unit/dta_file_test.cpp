// The dataset file: bytes written compared with bytes laid out by hand, files
// of every readable format and both byte orders built by hand and read, round
// trips of every storage type and missing value, and the failures.
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cctype>
#include <ctime>
#include <string>

#include "capture.h"
#include "data/dta/dta.h"
#include "data/vars/char.h"
#include "dta_bytes.h"
#include "kernel/macro/macro.h"

using namespace korvu;

namespace {

using Dta = DtaFixture;

double mv(int letter) {
    return mkmissing(letter);
}

// x byte labelled yn with .a in observation 2, s str3, a characteristic,
// sorted by x, a variable and a data label.
void make_small() {
    ASSERT_EQ(addvar_named(KV_BYTE, "x", "%8.0g"), 0);
    ASSERT_EQ(addvar_named(3, "s", "%9s"), 0);
    ASSERT_EQ(setobs(2), 0);
    store(1, 1, 1);
    store(1, 2, mv(1));
    sstorez(2, 1, "ab");
    sstorez(2, 2, "c");
    std::strcpy(lblname(1), "yn");
    int32_t* t = vlallocate("yn", 0, 0);
    t = vladdlab(t, 0, "no", 0);
    t = vladdlab(t, 1, "yes", 1);
    ASSERT_TRUE(t);
    ASSERT_EQ(charsave("x", "note1", "hi"), 0);
    ASSERT_EQ(putvarlab(1, "flag"), 0);
    putdatalbl("test");
    srtlist[0] = 1;
    srtlist[1] = 0;
}

// The same file laid out field by field.
std::vector<uint8_t> small_expected() {
    Bytes e;
    e.u8(113), e.u8(2), e.u8(1), e.u8(0);
    e.i16(2), e.i32(2);
    e.str("test", 81);
    e.str("", 18); // time stamp, masked
    e.u8(251), e.u8(3);
    e.str("x", 33), e.str("s", 33);
    e.i16(1), e.i16(0), e.i16(0);
    e.str("%8.0g", 12), e.str("%9s", 12);
    e.str("yn", 33), e.str("", 33);
    e.str("flag", 81), e.str("", 81);
    e.u8(1), e.i32(33 + 33 + 3), e.str("x", 33), e.str("note1", 33), e.str("hi", 3);
    e.u8(0), e.i32(0);
    e.u8(1), e.str("ab", 3);
    e.u8(101 + 1), e.str("c", 3);
    e.i32(8 + 2 * 8 + 7), e.str("yn", 36);
    e.i32(2), e.i32(7), e.i32(0), e.i32(3), e.i32(0), e.i32(1), e.str("no", 3), e.str("yes", 4);
    return e.b;
}

// The time stamp of a file written now, field by field: the day in two
// columns, the month's three letters, the year in five, hour and minute
// ("23 Nov 2026 18:20", " 5 Jan 2027 09:05").
std::string stamp_now() {
    static const char* mon[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    time_t t = time(nullptr);
    struct tm v;
    localtime_r(&t, &v);
    std::string s = (v.tm_mday < 10 ? " " : "") + std::to_string(v.tm_mday) + " " + mon[v.tm_mon];
    s += " " + std::to_string(v.tm_year + 1900);
    s += (v.tm_hour < 10 ? " 0" : " ") + std::to_string(v.tm_hour);
    s += (v.tm_min < 10 ? ":0" : ":") + std::to_string(v.tm_min);
    return s;
}

// The words of a text, one blank between each.
std::string words(const std::string& t) {
    std::string r;
    for (size_t i = 0; i < t.size();) {
        while (i < t.size() && std::isspace(static_cast<unsigned char>(t[i]))) i++;
        size_t j = i;
        while (j < t.size() && !std::isspace(static_cast<unsigned char>(t[j]))) j++;
        if (j > i) r += (r.empty() ? "" : " ") + t.substr(i, j - i);
        i = j;
    }
    return r;
}

void mask_stamp(std::vector<uint8_t>& b) {
    if (b.size() >= 109) std::memset(b.data() + 91, 0, 18);
}

} // namespace

TEST_F(Dta, SmallDatasetIsWrittenByteForByteAndReadBack) {
    CapturedOutput out;
    make_small();
    std::string f = path("small.dta");
    const std::string before = stamp_now();
    ASSERT_EQ(syssave(f.c_str(), SaveOpts{}), 0);
    const std::string after = stamp_now();
    EXPECT_NE(out.take().find("file " + f + " saved"), std::string::npos);
    auto got = slurp(f);
    ASSERT_GE(got.size(), 109u);
    // the stamp: the clock at the save, 17 characters and a terminator
    EXPECT_EQ(got[91 + 17], 0);
    const std::string st(reinterpret_cast<char*>(got.data() + 91));
    EXPECT_TRUE(st == before || st == after) << "'" << st << "' not '" << before << "'";
    mask_stamp(got);
    EXPECT_EQ(got, small_expected());
    EXPECT_EQ(updata, 0);
    EXPECT_STREQ(macptr("S_FN"), f.c_str());

    drop_all(0);
    labels_clear(1);
    updata = 1;
    ASSERT_EQ(dta_use(f.c_str(), UseOpts{}), 0);
    EXPECT_NE(out.take().find("(test)"), std::string::npos);
    ASSERT_EQ(nvar, 2);
    ASSERT_EQ(nobs, 2);
    EXPECT_EQ(typlist[0], KV_BYTE);
    EXPECT_EQ(typlist[1], 3);
    EXPECT_STREQ(varname(1), "x");
    EXPECT_STREQ(fmtname(2), "%9s");
    EXPECT_EQ(korvu_data(1, 1), 1.0);
    EXPECT_EQ(bitsof(korvu_data(1, 2)), bitsof(mv(1)));
    char buf[8];
    EXPECT_STREQ(skorvu_data(2, 1, buf), "ab");
    EXPECT_STREQ(skorvu_data(2, 2, buf), "c");
    EXPECT_STREQ(lblname(1), "yn");
    EXPECT_STREQ(vl_lookup("yn", 1), "yes");
    EXPECT_STREQ(charfind("x", "note1", nullptr), "hi");
    EXPECT_STREQ(ptrvarlab(1), "flag");
    EXPECT_STREQ(datalbl, "test");
    EXPECT_EQ(srtlist[0], 1);
    EXPECT_EQ(srtlist[1], 0);
    EXPECT_EQ(updata, 0);
}

TEST_F(Dta, EmptyDatasetWithEmptyok) {
    CapturedOutput out;
    std::string f = path("e.dta");
    EXPECT_EQ(syssave(f.c_str(), SaveOpts{}), 111);
    SaveOpts o;
    o.emptyok = true;
    ASSERT_EQ(syssave(f.c_str(), o), 0);
    EXPECT_NE(out.take().find("(note: dataset contains 0 observations)"), std::string::npos);
    auto got = slurp(f);
    mask_stamp(got);
    Bytes e;
    e.u8(113), e.u8(2), e.u8(1), e.u8(0), e.i16(0), e.i32(0), e.str("", 81), e.str("", 18);
    e.i16(0);
    e.u8(0), e.i32(0);
    EXPECT_EQ(got, e.b);
    EXPECT_EQ(dta_use(f.c_str(), UseOpts{}), 0);
    EXPECT_EQ(nvar, 0);
}

TEST_F(Dta, ExistingFileNeedsReplaceAndMissingOneIsNoted) {
    CapturedOutput out;
    make_small();
    std::string f = path("r.dta");
    SaveOpts o;
    o.replace = true;
    ASSERT_EQ(syssave(f.c_str(), o), 0);
    EXPECT_NE(out.take().find("(note: file " + f + " not found)"), std::string::npos);
    EXPECT_EQ(syssave(f.c_str(), SaveOpts{}), 602);
    EXPECT_NE(out.take().find("already exists"), std::string::npos);
    ASSERT_EQ(syssave(f.c_str(), o), 0);
    EXPECT_EQ(syssave(path("no/such/dir.dta").c_str(), SaveOpts{}), 603);
}

// Each storage type with its extremes and every missing value, through the
// formats that are written.
namespace {
struct Cell {
    int code;
    std::vector<double> vals;
};
std::vector<Cell> all_types() {
    std::vector<double> miss = {misval};
    for (int l = 1; l <= 26; ++l) miss.push_back(mv(l));
    auto with = [&](std::vector<double> v) {
        v.insert(v.end(), miss.begin(), miss.end());
        return v;
    };
    return {
        {KV_BYTE, with({-127, 100, 0, -1})},
        {KV_INT, with({-32767, 32740, 0, 300})},
        {KV_LONG, with({-2147483647.0, 2147483620.0, 0, 70000})},
        {KV_FLOAT,
         with({static_cast<double>(max_kvfloat), static_cast<double>(min_kvfloat), 0.5, -1.25})},
        {KV_DOUBLE, with({max_kvdouble, min_kvdouble, 0.1, -3e-300})},
    };
}
} // namespace

TEST_F(Dta, EveryTypeAndMissingValueRoundTripsThroughEachFormat) {
    CapturedOutput out;
    for (int fmt : {113, 111, 110}) {
        SCOPED_TRACE(fmt);
        drop_all(0);
        labels_clear(1);
        auto cells = all_types();
        size_t n = cells[0].vals.size();
        for (auto& c : cells)
            ASSERT_EQ(addvar_named(c.code, ("v" + std::to_string(c.code)).c_str(), "%9.0g"), 0);
        const int strw = fmt == 110 ? 128 : 244;
        ASSERT_EQ(addvar_named(1, "s1", "%1s"), 0);
        ASSERT_EQ(addvar_named(strw, "sw", "%9s"), 0);
        ASSERT_EQ(setobs(static_cast<int>(n)), 0);
        std::string wide(static_cast<size_t>(strw), 'w');
        for (size_t i = 0; i < n; ++i) {
            for (size_t v = 0; v < cells.size(); ++v)
                store(static_cast<int>(v + 1), static_cast<int>(i + 1), cells[v].vals[i]);
            sstorez(6, static_cast<int>(i + 1), i % 2 ? "" : "q");
            wide[0] = static_cast<char>('a' + i % 26);
            sstore(7, static_cast<int>(i + 1), wide.c_str());
        }
        SaveOpts o;
        o.oldformat = fmt != 113;
        o.midband = fmt == 110;
        std::string f = path(("t" + std::to_string(fmt) + ".dta").c_str());
        ASSERT_EQ(syssave(f.c_str(), o), 0);
        EXPECT_EQ(slurp(f)[0], fmt);
        // the data in memory keep every value, extended missing ones included
        ASSERT_EQ(nvar, 7);
        for (size_t v = 0; v < cells.size(); ++v)
            for (size_t i = 0; i < n; ++i)
                EXPECT_EQ(bitsof(korvu_data(static_cast<int>(v + 1), static_cast<int>(i + 1))),
                          bitsof(cells[v].vals[i]));
        ASSERT_EQ(dta_use(f.c_str(), UseOpts{}), 0);
        ASSERT_EQ(nvar, 7);
        ASSERT_EQ(nobs, static_cast<int>(n));
        for (size_t v = 0; v < cells.size(); ++v) {
            EXPECT_EQ(typlist[v], cells[v].code);
            for (size_t i = 0; i < n; ++i) {
                double want = cells[v].vals[i];
                if (fmt != 113 && want >= misval) want = misval;
                EXPECT_EQ(bitsof(korvu_data(static_cast<int>(v + 1), static_cast<int>(i + 1))),
                          bitsof(want))
                    << "type " << cells[v].code << " obs " << i + 1;
            }
        }
        char buf[256];
        for (size_t i = 0; i < n; ++i) {
            EXPECT_STREQ(skorvu_data(6, static_cast<int>(i + 1), buf), i % 2 ? "" : "q");
            wide[0] = static_cast<char>('a' + i % 26);
            EXPECT_EQ(std::string(skorvu_data(7, static_cast<int>(i + 1), buf)), wide);
        }
    }
}

// A file written high byte first, all sections, built by hand.
TEST_F(Dta, ForeignByteOrderReadsIdentically) {
    CapturedOutput out;
    for (int fmt : {113, 111}) {
        SCOPED_TRACE(fmt);
        Bytes e;
        e.big = true;
        e.u8(fmt), e.u8(1), e.u8(1), e.u8(0);
        e.i16(4), e.i32(2);
        e.str("big", 81), e.str(" 1 Jan  2001 00:00", 18);
        e.u8(252), e.u8(253), e.u8(254), e.u8(255);
        for (auto n : {"i", "l", "f", "d"}) e.str(n, 33);
        e.i16(2), e.i16(1), e.i16(0), e.i16(0), e.i16(0);
        for (int k = 0; k < 4; ++k) e.str("%9.0g", 12);
        e.str("lab", 33), e.str("", 33), e.str("", 33), e.str("", 33);
        for (int k = 0; k < 4; ++k) e.str(k == 3 ? "dbl" : "", 81);
        e.u8(1), e.i32(33 + 33 + 4), e.str("_dta", 33), e.str("who", 33), e.str("abc", 4);
        e.u8(0), e.i32(0);
        // obs 1
        e.i16(-2), e.i32(100000), e.f32(1.5f), e.f64(-2.25);
        // obs 2: missing in the format's coding
        if (fmt == 113) {
            e.i16(32741 + 2), e.i32(2147483621), e.f32bits(0x7F000000 + 0x800 * 3),
                e.f64bits(0x7FE0000000000000ULL + (26ULL << 40));
        } else {
            e.i16(32767), e.i32(2147483647), e.f32bits(0x7F000000),
                e.f64bits(0x7FE0000000000000ULL);
        }
        e.i32(8 + 2 * 8 + 6), e.str("lab", 36);
        e.i32(2), e.i32(6), e.i32(0), e.i32(3), e.i32(-2), e.i32(7), e.str("mi", 3), e.str("pl", 3);
        std::string f = path("big.dta");
        spill(f, e.b);
        ASSERT_EQ(dta_use(f.c_str(), UseOpts{}), 0);
        ASSERT_EQ(nvar, 4);
        ASSERT_EQ(nobs, 2);
        EXPECT_EQ(korvu_data(1, 1), -2);
        EXPECT_EQ(korvu_data(2, 1), 100000);
        EXPECT_EQ(korvu_data(3, 1), 1.5);
        EXPECT_EQ(korvu_data(4, 1), -2.25);
        if (fmt == 113) {
            EXPECT_EQ(bitsof(korvu_data(1, 2)), bitsof(mv(2)));
            EXPECT_EQ(bitsof(korvu_data(2, 2)), bitsof(misval));
            EXPECT_EQ(bitsof(korvu_data(3, 2)), bitsof(mv(3)));
            EXPECT_EQ(bitsof(korvu_data(4, 2)), bitsof(mv(26)));
        } else {
            for (int v = 1; v <= 4; ++v) EXPECT_EQ(bitsof(korvu_data(v, 2)), bitsof(misval));
        }
        EXPECT_EQ(srtlist[0], 2);
        EXPECT_EQ(srtlist[1], 1);
        EXPECT_EQ(srtlist[2], 0);
        EXPECT_STREQ(datalbl, "big");
        EXPECT_STREQ(ptrvarlab(4), "dbl");
        EXPECT_STREQ(charfind("_dta", "who", nullptr), "abc");
        EXPECT_STREQ(vl_lookup("lab", -2), "mi");
        EXPECT_STREQ(vl_lookup("lab", 7), "pl");
        EXPECT_STREQ(macptr("S_FNDATE"), " 1 Jan  2001 00:0");
    }
}

// Letter-coded formats with the old single missing value: promotion of
// values that are now missing codes.
TEST_F(Dta, LetterFormatsRepairOldTypes) {
    CapturedOutput out;
    for (int fmt : {110, 112, 108}) {
        SCOPED_TRACE(fmt);
        const size_t nl = fmt >= 110 ? 33 : 9;
        Bytes e;
        e.u8(fmt), e.u8(2), e.u8(1), e.u8(0), e.i16(4), e.i32(2), e.str("", 81), e.str("", 18);
        e.u8('b'), e.u8('i'), e.u8('l'), e.u8(127 + 2);
        for (auto n : {"b", "i", "l", "s"}) e.str(n, nl);
        for (int k = 0; k < 5; ++k) e.i16(0);
        for (int k = 0; k < 4; ++k) e.str(k == 3 ? "%2s" : "%8.0g", 12);
        for (int k = 0; k < 4; ++k) e.str("", nl);
        for (int k = 0; k < 4; ++k) e.str("", 81);
        if (fmt >= 110)
            e.u8(0), e.i32(0);
        else
            e.u8(0), e.i16(0);
        // obs 1: values above today's limits; obs 2: old missing
        e.u8(120), e.i16(32750), e.i32(2147483640), e.str("ok", 2);
        if (fmt == 112)
            e.u8(101), e.i16(32741), e.i32(2147483621), e.str("", 2);
        else
            e.u8(127), e.i16(32767), e.i32(2147483647), e.str("", 2);
        std::string f = path("old.dta");
        spill(f, e.b);
        ASSERT_EQ(dta_use(f.c_str(), UseOpts{}), 0);
        ASSERT_EQ(nvar, 4);
        if (fmt == 112) {
            // modern coding: 120 is a missing code in a byte, already
            EXPECT_EQ(typlist[0], KV_BYTE);
            EXPECT_EQ(bitsof(korvu_data(1, 1)), bitsof(mv(19)));
            EXPECT_EQ(bitsof(korvu_data(2, 1)), bitsof(mv(9)));
            EXPECT_EQ(bitsof(korvu_data(3, 1)), bitsof(mv(19)));
        } else {
            EXPECT_EQ(typlist[0], KV_INT);
            EXPECT_EQ(typlist[1], KV_LONG);
            EXPECT_EQ(typlist[2], KV_DOUBLE);
            EXPECT_EQ(korvu_data(1, 1), 120);
            EXPECT_EQ(korvu_data(2, 1), 32750);
            EXPECT_EQ(korvu_data(3, 1), 2147483640.0);
        }
        for (int v = 1; v <= 3; ++v) EXPECT_EQ(bitsof(korvu_data(v, 2)), bitsof(misval));
        char buf[4];
        EXPECT_STREQ(skorvu_data(4, 1, buf), "ok");
    }
}

// The oldest formats: short header, 9-byte names, old value labels, dots in
// names, the old double missing value 2^333.
TEST_F(Dta, OldestFormatsWithOldLabelsAndDottedNames) {
    CapturedOutput out;
    for (int fmt : {102, 104, 105}) {
        SCOPED_TRACE(fmt);
        Bytes e;
        e.u8(fmt), e.u8(fmt == 102 ? 0 : 2), e.u8(1), e.u8(0), e.i16(3);
        if (fmt == 102)
            e.i16(2), e.str("old", 32);
        else
            e.i32(2), e.str("old", 32);
        if (fmt == 105) e.str("", 18);
        e.u8('d'), e.u8('b'), e.u8('d');
        e.str("a.b", 9), e.str("a_b", 9), e.str("d", 9);
        e.i16(1), e.i16(0), e.i16(0), e.i16(0);
        for (int k = 0; k < 3; ++k) e.str("%9.0g", fmt >= 105 ? 12 : 7);
        e.str("", 9), e.str("yn", 9), e.str("", 9);
        for (int k = 0; k < 3; ++k) e.str("", 32);
        if (fmt == 105) e.u8(0), e.i16(0);
        e.f64(0x1p333), e.u8(1), e.f64(4);
        e.f64(5), e.u8(0), e.f64(0x1p1023);
        // old value labels: count, name in 10 bytes, values, 8-byte texts
        e.i16(2), e.str("yn", 10), e.i16(1), e.i16(0), e.str("yes", 8), e.str("no", 8);
        std::string f = path("oldest.dta");
        spill(f, e.b);
        ASSERT_EQ(dta_use(f.c_str(), UseOpts{}), 0);
        std::string log = out.take();
        ASSERT_EQ(nvar, 3);
        EXPECT_STREQ(varname(1), "a1b"); // "_" would repeat a_b
        EXPECT_NE(log.find("Warning:  renamed a.b to a1b"), std::string::npos);
        EXPECT_EQ(bitsof(korvu_data(1, 1)), bitsof(misval));
        EXPECT_NE(log.find("old-format data was sorted by a1b"), std::string::npos);
        EXPECT_EQ(srtlist[0], 0);
        EXPECT_EQ(korvu_data(1, 2), 5);
        EXPECT_EQ(bitsof(korvu_data(3, 2)), bitsof(misval));
        EXPECT_STREQ(vl_lookup("yn", 0), "no");
        EXPECT_STREQ(vl_lookup("yn", 1), "yes");
        EXPECT_STREQ(datalbl, "old");
    }
}

TEST_F(Dta, SubsetsByVariableAndRange) {
    CapturedOutput out;
    make_small();
    ASSERT_EQ(addvar_named(KV_INT, "z", "%8.0g"), 0);
    store(3, 1, 7);
    store(3, 2, 8);
    std::string f = path("sub.dta");
    ASSERT_EQ(syssave(f.c_str(), SaveOpts{}), 0);
    int32_t keep[] = {1, 3};
    UseOpts o;
    o.keep = keep;
    o.nkeep = 2;
    o.obs1 = 2;
    ASSERT_EQ(dta_use(f.c_str(), o), 0);
    ASSERT_EQ(nvar, 2);
    ASSERT_EQ(nobs, 1);
    EXPECT_STREQ(varname(2), "z");
    EXPECT_EQ(korvu_data(2, 1), 8);
    EXPECT_EQ(bitsof(korvu_data(1, 1)), bitsof(mv(1)));
    EXPECT_EQ(srtlist[0], 1);
    EXPECT_STREQ(charfind("x", "note1", nullptr), "hi");
    // a sort key after one not kept is dropped
    int32_t keep2[] = {2, 3};
    srtlist[0] = 0;
    o.keep = keep2;
    o.obs1 = 1;
    ASSERT_EQ(dta_use(f.c_str(), o), 0);
    EXPECT_EQ(srtlist[0], 0);
    EXPECT_EQ(vlfind("yn"), nullptr); // only labels of kept variables
}

TEST_F(Dta, HeaderFailuresLeaveTheDatasetAlone) {
    CapturedOutput out;
    make_small();
    std::string f = path("bad.dta");
    auto check = [&](const std::vector<uint8_t>& bytes, int want, const char* text) {
        spill(f, bytes);
        EXPECT_EQ(dta_use(f.c_str(), UseOpts{}), want);
        std::string log = out.take();
        if (text) {
            EXPECT_NE(log.find(text), std::string::npos) << log;
        }
        EXPECT_EQ(nvar, 2);
        EXPECT_EQ(nobs, 2);
    };
    EXPECT_EQ(dta_use(path("none.dta").c_str(), UseOpts{}), 601);
    Bytes h;
    h.u8(109);
    h.str("", 200);
    check(h.b, 610, "not Korvu format");
    h.b[0] = 101;
    check(h.b, 610, nullptr);
    // 114 and 115 are read; a header of theirs must hold a byte order
    h.b[0] = 114;
    check(h.b, 610, "not Korvu format");
    h.b[0] = 116;
    check(h.b, 610, "not Korvu format");
    std::fill(h.b.begin() + 1, h.b.begin() + 16, 0xFF);
    check(h.b, 610, " from more recent version of Korvu");
    h.b = {113, 2, 2, 0};
    h.str("", 200);
    check(h.b, 609, "xp format");
    check(std::vector<uint8_t>{113, 2, 1, 0, 1}, 610, nullptr);
    check(std::vector<uint8_t>{}, 610, nullptr);
}

TEST_F(Dta, DamagedBodiesAreRejectedWithoutTouchingMemory) {
    CapturedOutput out;
    make_small();
    std::string f = path("good.dta");
    ASSERT_EQ(syssave(f.c_str(), SaveOpts{}), 0);
    const auto good = slurp(f);
    auto check = [&](std::vector<uint8_t> bytes, int want) {
        std::string g = path("dam.dta");
        spill(g, bytes);
        EXPECT_EQ(dta_use(g.c_str(), UseOpts{}), want);
        EXPECT_EQ(nvar, 2);
        EXPECT_STREQ(varname(2), "s");
    };
    // cut inside the data: 688, "is corrupt"
    const size_t data_at = good.size() - (4 + 36 + 31) - 8;
    check(std::vector<uint8_t>(good.begin(), good.begin() + static_cast<long>(data_at) + 3), 688);
    EXPECT_NE(out.take().find("is corrupt"), std::string::npos);
    // absurd observation count
    auto b = good;
    b[6] = 0xFF, b[7] = 0xFF, b[8] = 0xFF, b[9] = 0x7F;
    check(b, 688);
    // negative count
    b = good;
    b[9] = 0x80;
    check(b, 610);
    // invalid type byte
    b = good;
    b[109] = 250;
    check(b, 688);
    // a characteristic longer than the file
    b = good;
    size_t ch = 109 + 2 + 66 + 6 + 24 + 66 + 162;
    ASSERT_EQ(b[ch], 1);
    b[ch + 4] = 0x70;
    check(b, 688);
}

TEST_F(Dta, ValueLabelSectionEndsAtAShortTable) {
    CapturedOutput out;
    make_small();
    std::string f = path("vl.dta");
    ASSERT_EQ(syssave(f.c_str(), SaveOpts{}), 0);
    auto good = slurp(f);
    // the table runs past the end: the section ends there, the data stand
    auto b = std::vector<uint8_t>(good.begin(), good.end() - 5);
    spill(f, b);
    ASSERT_EQ(dta_use(f.c_str(), UseOpts{}), 0);
    EXPECT_EQ(nobs, 2);
    EXPECT_EQ(vlfind("yn"), nullptr);
    // a table whose offsets point outside its text is corrupt
    b = good;
    size_t t = good.size() - 31;
    b[t + 12] = 50; // off[1]
    spill(f, b);
    EXPECT_EQ(dta_use(f.c_str(), UseOpts{}), 688);
    // a huge length ends the section without allocating it
    b = good;
    b[t - 40 + 3] = 0x7F;
    spill(f, b);
    EXPECT_EQ(dta_use(f.c_str(), UseOpts{}), 0);
    EXPECT_EQ(vlfind("yn"), nullptr);
}

TEST_F(Dta, FailedWriteRemovesThePartialFile) {
    CapturedOutput out;
    ASSERT_EQ(addvar_named(KV_DOUBLE, "d", "%10.0g"), 0);
    ASSERT_EQ(setobs(5000), 0);
    for (int i = 1; i <= 5000; ++i) store(1, i, i);
    std::string f = path("full.dta");
    struct rlimit old;
    getrlimit(RLIMIT_FSIZE, &old);
    auto oldsig = signal(SIGXFSZ, SIG_IGN);
    struct rlimit lim = old;
    lim.rlim_cur = 4096;
    setrlimit(RLIMIT_FSIZE, &lim);
    int rc = syssave(f.c_str(), SaveOpts{});
    setrlimit(RLIMIT_FSIZE, &old);
    signal(SIGXFSZ, oldsig);
    EXPECT_EQ(rc, 699);
    EXPECT_NE(out.take().find("insufficient disk space"), std::string::npos);
    struct stat sb;
    EXPECT_NE(stat(f.c_str(), &sb), 0);
    EXPECT_EQ(nobs, 5000);
}

TEST_F(Dta, OldformatRefusesLongLabelsAndKeepsMemory) {
    CapturedOutput out;
    make_small();
    std::string longtext(81, 'z');
    int32_t* t = vlfind("yn");
    t = vladdlab(t, 2, longtext.c_str(), 5);
    SaveOpts o;
    o.oldformat = true;
    EXPECT_EQ(syssave(path("o.dta").c_str(), o), 459);
    EXPECT_NE(out.take().find("contains labels longer than 80 characters"), std::string::npos);
    t = vlfind("yn");
    vlrmlab(t, 2);
    updata = 1;
    ASSERT_EQ(syssave(path("o.dta").c_str(), o), 0);
    EXPECT_EQ(nvar, 2);
    EXPECT_EQ(bitsof(korvu_data(1, 2)), bitsof(mv(1)));
    EXPECT_EQ(updata, 1); // .a in memory is not what the file holds
    auto b = slurp(path("o.dta"));
    EXPECT_EQ(b[0], 111);
    // obs 2 of x: .a became the old missing 127
    const size_t rec2 = 109 + 2 + 66 + 6 + 24 + 66 + 162 + (5 + 69) + 5 + 4;
    EXPECT_EQ(b[rec2], 127);
}

// Invalid or repeated variable names and a sort list naming variables the
// file does not have are damage: 688, and the dataset in memory stands.
TEST_F(Dta, BadNamesAndSortListsAreRejectedWithoutTouchingMemory) {
    CapturedOutput out;
    make_small();
    std::string f = path("good.dta");
    ASSERT_EQ(syssave(f.c_str(), SaveOpts{}), 0);
    const auto good = slurp(f);
    ASSERT_EQ(dta_use(f.c_str(), UseOpts{}), 0);
    out.take();
    updata = 0;
    const size_t names = 109 + 2, srt = names + 2 * 33;
    auto check = [&](std::vector<uint8_t> bytes) {
        std::string g = path("dam.dta");
        spill(g, bytes);
        EXPECT_EQ(dta_use(g.c_str(), UseOpts{}), 688);
        // the message is a paragraph: its words, wherever the lines break
        EXPECT_EQ(words(out.take()), "file " + g + " is corrupt");
        EXPECT_EQ(updata, 0); // still the saved data, unchanged
        EXPECT_EQ(nvar, 2);
        EXPECT_EQ(nobs, 2);
        EXPECT_STREQ(varname(1), "x");
        EXPECT_STREQ(varname(2), "s");
        EXPECT_EQ(srtlist[0], 1);
    };
    auto named = [&](const char* a, const char* b) {
        auto v = good;
        std::memset(v.data() + names, 0, 66);
        std::memcpy(v.data() + names, a, std::strlen(a));
        std::memcpy(v.data() + names + 33, b, std::strlen(b));
        return v;
    };
    check(named("x", "x"));         // the same name twice
    check(named("1x", "s"));        // starts with a digit
    check(named("x", "a b"));       // a blank inside
    check(named("", "s"));          // empty
    check(named("x", "s\xc3\xa9")); // not a name character
    check(named("_n", "s"));        // reserved
    check(named("x", "s.t"));       // a dot: only the oldest formats have them
    auto sorted = [&](int k1, int k2) {
        auto v = good;
        v[srt] = static_cast<uint8_t>(k1), v[srt + 1] = static_cast<uint8_t>(k1 >> 8);
        v[srt + 2] = static_cast<uint8_t>(k2), v[srt + 3] = static_cast<uint8_t>(k2 >> 8);
        return v;
    };
    check(sorted(3, 0)); // no variable 3
    check(sorted(1, 3));
    check(sorted(-1, 0)); // negative
    check(sorted(2, 2));  // one key twice
    // the good file and a valid two-key order still read
    spill(path("two.dta"), sorted(2, 1));
    ASSERT_EQ(dta_use(path("two.dta").c_str(), UseOpts{}), 0);
    EXPECT_EQ(srtlist[0], 2);
    EXPECT_EQ(srtlist[1], 1);
    EXPECT_EQ(srtlist[2], 0);
}
