// Variable lookup, varlists and time-series recipes. Expected values are
// worked out by hand from the rules of abbreviation and matching.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "capture.h"
#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/vars/varlist.h"
#include "data/vars/vartab.h"
#include "dataarea_fixture.h"
#include "kernel/dict/dict.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"

using namespace korvu;

namespace {

class Vars : public ::testing::Test {
  protected:
    void SetUp() override {
        open_data_area(1 << 20);
        korvu_varabbrev = 1;
        esamplename[0] = 0;
        charget_hook = nullptr;
    }
    void TearDown() override {
        news_free();
        korvu_varabbrev = 1;
        charget_hook = nullptr;
    }
    void make(std::initializer_list<const char*> names, int code = KV_FLOAT) {
        for (const char* n : names) ASSERT_EQ(addvar(n, code), 0) << n;
    }
    // Runs ssvlist over text; the list as variable numbers.
    int scan(const char* text, std::vector<int>* out, int isnew = 0) {
        line = text;
        settok(line.data());
        int rc = ssvlist(isnew ? prsestd : prsestd2, isnew);
        out->assign(varlist_vr, varlist_vr + (rc ? 0 : lnvar));
        return rc;
    }
    std::string line;
};

using V = std::vector<int>;

TEST_F(Vars, AbbreviationAndAmbiguity) {
    make({"price", "mpg", "mpg2", "weight", "length", "turn"});
    CapturedOutput out;
    EXPECT_EQ(korvu_findvar("pri", 1, 0), 1);
    EXPECT_EQ(korvu_findvar("w", 1, 0), 4);
    EXPECT_EQ(korvu_findvar("mpg", 1, 0), 2); // exact beats the longer mpg2
    EXPECT_EQ(korvu_findvar("mpg2", 1, 0), 3);
    EXPECT_EQ(out.take(), "");
    EXPECT_EQ(korvu_findvar("mp", 1, 0), -111);
    EXPECT_EQ(out.take(), "mp ambiguous abbreviation\n");
    EXPECT_EQ(korvu_findvar("xyz", 1, 0), -111);
    EXPECT_EQ(out.take(), "variable xyz not found\n");
    // noabbrev and set varabbrev off: prefixes no longer count
    EXPECT_EQ(korvu_findvar("pri", 1, 1), -111);
    korvu_varabbrev = 0;
    EXPECT_EQ(korvu_findvar("pri", 1, 0), -111);
    EXPECT_EQ(korvu_findvar("mpg", 1, 0), 2);
    EXPECT_EQ(korvu_findvar("mp", 1, 0), -111);
    EXPECT_EQ(out.take(),
              "variable pri not found\nvariable pri not found\nvariable mp not found\n");
    korvu_varabbrev = 1;
    // new names: mode 10 refuses an existing name, accepts a new one
    EXPECT_EQ(korvu_findvar("mpg", 10, 0), -110);
    EXPECT_EQ(out.take(), "mpg already defined\n");
    EXPECT_EQ(korvu_findvar("pri", 10, 0), 7);
    EXPECT_EQ(korvu_findvar("zzz", 11, 0), 7);
    EXPECT_EQ(sysfindvar("turn"), 6);
    EXPECT_EQ(sysfindvarfromend("turn"), 6);
    EXPECT_EQ(sysfindvar("tur"), 0);
    EXPECT_EQ(findvarnoab("tur", 0), -111);
    EXPECT_EQ(out.take(), "");
}

TEST_F(Vars, NoVariables) {
    CapturedOutput out;
    EXPECT_EQ(korvu_findvar("x", 10, 0), 1);
    EXPECT_EQ(korvu_findvar("x", 1, 0), -111);
    std::vector<int> l;
    EXPECT_EQ(scan("_all", &l), 111);
    EXPECT_EQ(out.take(), "variable x not found\nno variables defined\n");
}

TEST_F(Vars, TildeAndWildcards) {
    make({"price", "mpg", "mpg2", "weight", "length", "turn"});
    CapturedOutput out;
    EXPECT_EQ(genfindvar("w~t"), 4);
    EXPECT_EQ(genfindvar("l~"), 5);
    EXPECT_EQ(genfindvar("m~"), -111);
    EXPECT_EQ(out.take(), "m~ ambiguous abbreviation\n");
    EXPECT_EQ(genfindvar("m~*"), -198);
    EXPECT_EQ(out.take(), "m~* may not combine ~ and *-or-? notation\n");
    struct {
        const char *pat, *name;
        int hit;
    } cases[] = {{"m*", "mpg", 1},       {"?pg", "mpg", 1}, {"m?g2", "mpg2", 1},
                 {"*2", "mpg2", 1},      {"*2", "mpg", 0},  {"a*b*c", "axxbyyc", 1},
                 {"a*b*c", "axxbyy", 0}, {"*", "", 1},      {"?", "", 0},
                 {"a**", "a", 1},        {"mpg", "mpg", 1}, {"mp", "mpg", 0}};
    for (const auto& c : cases)
        EXPECT_EQ(wildmatch(c.pat, c.name), c.hit) << c.pat << " " << c.name;
    // the estimation-sample variable is never matched by a pattern
    make({"_est"});
    snprintf(esamplename, sizeof esamplename, "_est");
    std::vector<int> l;
    EXPECT_EQ(scan("_*", &l), 111);
    EXPECT_EQ(scan("_all", &l), 0);
    EXPECT_EQ(l, (V{1, 2, 3, 4, 5, 6}));
    esamplename[0] = 0;
    out.take();
}

TEST_F(Vars, ListsRangesAndGroups) {
    make({"price", "mpg", "mpg2", "weight", "length", "turn"});
    CapturedOutput out;
    std::vector<int> l;
    EXPECT_EQ(scan("mpg-weight", &l), 0);
    EXPECT_EQ(l, (V{2, 3, 4}));
    EXPECT_EQ(scan("mpg - weight turn", &l), 0);
    EXPECT_EQ(l, (V{2, 3, 4, 6}));
    EXPECT_EQ(scan("price-price", &l), 0);
    EXPECT_EQ(l, (V{1}));
    EXPECT_EQ(scan("m* t", &l), 0);
    EXPECT_EQ(l, (V{2, 3, 6}));
    EXPECT_EQ(scan("*e*", &l), 0);
    EXPECT_EQ(l, (V{1, 4, 5}));
    EXPECT_EQ(scan("pr-w if x", &l), 0); // abbreviations at both ends, stops at if
    EXPECT_EQ(l, (V{1, 2, 3, 4}));
    EXPECT_EQ(scan("_all", &l), 0);
    EXPECT_EQ(l, (V{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(scan("(price mpg) weight (turn)", &l), 0);
    EXPECT_EQ(l, (V{1, 2, 4, 6}));
    EXPECT_EQ(nblist, 2);
    EXPECT_EQ(blist[0], 2);
    EXPECT_EQ(blist[1], 4);
    EXPECT_EQ(out.take(), "");
    EXPECT_EQ(scan("weight-mpg", &l), 198);
    EXPECT_EQ(out.take(), "Variables out of order\n");
    EXPECT_EQ(scan("q*", &l), 111);
    EXPECT_EQ(out.take(), "variable q* not found\n");
    EXPECT_EQ(scan("(price (mpg))", &l), 198);
    EXPECT_EQ(scan("(price", &l), 198);
    EXPECT_EQ(out.take(), "invalid varlist\ninvalid varlist\n");
}

TEST_F(Vars, NewNameLists) {
    make({"a"});
    CapturedOutput out;
    std::vector<int> l;
    EXPECT_EQ(scan("x1-x3 str10 name float(p q) r a", &l, 1), 0);
    ASSERT_EQ(lnvar, 8);
    const char* names[] = {"x1", "x2", "x3", "name", "p", "q", "r", "a"};
    const int types[] = {0, 0, 0, 10, KV_FLOAT, KV_FLOAT, 0, 0};
    for (int k = 0; k < 8; k++) {
        EXPECT_STREQ(newvarname[k], names[k]);
        EXPECT_EQ(newvartype[k], types[k]) << k;
    }
    EXPECT_EQ(scan("y a", &l, 1), 0);
    EXPECT_EQ(l, (V{0, 1})); // a exists already
    EXPECT_EQ(scan("v9-v11", &l, 1), 0);
    EXPECT_STREQ(newvarname[2], "v11");
    EXPECT_EQ(out.take(), "");
    EXPECT_EQ(scan("x3-x1", &l, 1), 198);
    EXPECT_EQ(scan("x1-y3", &l, 1), 198); // stems differ
    EXPECT_EQ(scan("x-y", &l, 1), 198);   // no digits
    EXPECT_EQ(scan("_all", &l, 1), 101);
    EXPECT_EQ(out.take(),
              "Variables out of order\ninvalid varlist\ninvalid varlist\n_all not allowed\n");
}

TEST_F(Vars, NamesAndReservedWords) {
    CapturedOutput out;
    EXPECT_EQ(chkname("x_1", 1), 0);
    EXPECT_EQ(chkname("_x", 1), 0);
    EXPECT_EQ(chkname(std::string(32, 'a').c_str(), 1), 0);
    EXPECT_EQ(chkname(std::string(33, 'a').c_str(), 0), 198);
    EXPECT_EQ(chkname("1x", 0), 198);
    EXPECT_EQ(chkname("a.b", 0), 198);
    EXPECT_EQ(chkname("a-b", 0), 198);
    EXPECT_EQ(chkname("", 1), 198);
    EXPECT_EQ(out.take(), "nothing found where name expected\n");
    for (const char* r : {"_pred", "_b", "_n", "_N", "float", "double", "int", "long", "_uniform",
                          "_coef", "_rc", "_pi", "byte"}) {
        EXPECT_EQ(chkreserved(r), 198) << r;
        EXPECT_EQ(out.take(), std::string(r) + " invalid name (reserved word)\n");
        EXPECT_EQ(addvar(r, KV_BYTE), 198);
        out.take();
    }
    EXPECT_EQ(chkreserved("_N2"), 0);
    EXPECT_EQ(addvar("str5", KV_BYTE), 198);
    EXPECT_EQ(out.take(), "str5 invalid variable name\n");
    EXPECT_EQ(addvar("str", KV_BYTE), 0);
    EXPECT_EQ(addvar("str5x", KV_BYTE), 0);
    EXPECT_EQ(addvar("str", KV_BYTE), 110);
    EXPECT_EQ(out.take(), "str already defined\n");
}

TEST_F(Vars, DefaultFormatsFollowTheType) {
    struct {
        const char* name;
        int code;
        const char* fmt;
    } cases[] = {{"b", KV_BYTE, "%8.0g"},  {"i", KV_INT, "%8.0g"},     {"l", KV_LONG, "%12.0g"},
                 {"f", KV_FLOAT, "%9.0g"}, {"d", KV_DOUBLE, "%10.0g"}, {"s1", 1, "%9s"},
                 {"s9", 9, "%9s"},         {"s20", 20, "%20s"},        {"s244", 244, "%244s"}};
    for (const auto& c : cases) {
        ASSERT_EQ(addvar(c.name, c.code), 0);
        EXPECT_STREQ(fmtname(nvar), c.fmt) << c.name;
        EXPECT_EQ(typlist[nvar - 1], c.code);
        EXPECT_STREQ(lblname(nvar), "");
    }
    int v = addwrkvar(KV_BYTE, 0);
    ASSERT_GT(v, 0);
    EXPECT_EQ(strncmp(varname(v), "__", 2), 0);
    EXPECT_EQ(strlen(varname(v)), 8u);
    EXPECT_EQ(addwrkvar(KV_BYTE, 1), 0);
    EXPECT_EQ(nvar, v); // the trial slot is withdrawn
}

TEST_F(Vars, AbbreviationForDisplay) {
    make({"mpg", "longvariablename1", "longvariablename2", "zbcdefghij_total", "zbcdefghij_xtotal",
          "abcdefghijk", "abcdefXfghijk", "pqrstuvwxyz", "pqrstuvwXfuvwxyz"});
    EXPECT_STREQ(abvar("mpg", 12), "mpg");
    EXPECT_STREQ(abvar("longvariablename1", 12), "longvariab~1"); // digits kept
    EXPECT_STREQ(abvar("zbcdefghij_total", 8), "z~_total");       // front shrinks to 1
    EXPECT_STREQ(abvar("abcdefghijk", 8), "abcdefgh");            // a bare prefix
    EXPECT_STREQ(abvar("pqrstuvwxyz", 8), "~tuvwxyz");            // ~ and the tail
    EXPECT_STREQ(abvar("longvariablename1", 2), "lon~1");         // width at least 5
    // with an operator: normalised text, a dot, the name in what is left
    EXPECT_STREQ(tsabvar("L.longvariablename1", 12), "L1.longvar~1");
    EXPECT_STREQ(tsabvar("mpg", 12), "mpg");
    EXPECT_STREQ(tsabvar("l.mpg", 12), "L1.mpg");
    EXPECT_STREQ(tsabvar("L2D.mpg", 5), "L2.mpg"); // width raised to 8, operator cut
    EXPECT_STREQ(abvar("mpg", 40), "mpg");
}

TEST_F(Vars, OperatorText) {
    CapturedOutput out;
    Recipe r;
    char buf[160];
    struct {
        const char* text;
        int lag, d;
        std::vector<int> s;
        const char* str;
    } ok[] = {{"L", 1, 0, {}, "L1."},
              {"L2F", 1, 0, {}, "L1."},
              {"l.", 1, 0, {}, "L1."},
              {"F2", -2, 0, {}, "F2."},
              {"LD", 1, 1, {}, "L1D1."},
              {"D2L3", 3, 2, {}, "L3D2."},
              {"S12S4", 0, 0, {12, 4}, "S12S4."},
              {"L0", 0, 0, {}, "."},
              {"D20", 0, 20, {}, "D20."},
              {"DS12", 0, 1, {12}, "D1S12."}};
    for (const auto& c : ok) {
        ASSERT_EQ(rcpnormalize(&r, c.text), 0) << c.text;
        EXPECT_EQ(r.lag, c.lag) << c.text;
        EXPECT_EQ(r.dorder, c.d) << c.text;
        EXPECT_EQ(std::vector<int>(r.seas, r.seas + r.nseas), c.s) << c.text;
        EXPECT_STREQ(rcpstr(buf, &r, 1), c.str);
    }
    EXPECT_EQ(rcpnormalize(&r, "L0"), 0);
    EXPECT_TRUE(rcpiszero(&r));
    EXPECT_EQ(out.take(), "");
    EXPECT_EQ(rcpnormalize(&r, "D21"), 198);
    EXPECT_EQ(rcpnormalize(&r, "X"), 198);
    EXPECT_EQ(rcpnormalize(&r, "SSSSSSSSS"), 198);
    EXPECT_EQ(out.take(), "D21:  operator invalid:  D20 is maximum allowed difference\n"
                          "X:  operator invalid\nSSSSSSSSS:  operator invalid\n");
    // equal recipes share one slot
    rcpheapreset();
    Recipe a{1, 0, 0, {}}, b{2, 0, 0, {}};
    int rc;
    Recipe* pa = rcpinsert(&a, &rc);
    EXPECT_EQ(rcpinsert(&b, &rc), pa + 1);
    EXPECT_EQ(rcpinsert(&a, &rc), pa);
    EXPECT_EQ(recipeheap_next, 2);
    for (int k = 2; k < RECIPEHEAP; k++) {
        Recipe c{k + 1, 0, 0, {}};
        ASSERT_NE(rcpinsert(&c, &rc), nullptr);
    }
    Recipe over{500, 0, 0, {}};
    EXPECT_EQ(rcpinsert(&over, &rc), nullptr);
    EXPECT_EQ(rc, 1000);
    EXPECT_EQ(out.take(), "too many time-series operators\n");
    EXPECT_EQ(rcptype(KV_BYTE, &a), KV_BYTE);
    Recipe d{0, 1, 0, {}};
    EXPECT_EQ(rcptype(KV_BYTE, &d), KV_FLOAT);
    EXPECT_EQ(rcptype(KV_INT, &d), KV_FLOAT);
    EXPECT_EQ(rcptype(KV_LONG, &d), KV_DOUBLE);
    EXPECT_EQ(rcptype(KV_DOUBLE, &d), KV_DOUBLE);
}

const char* tvar_is_t(const char* obj, const char* name) {
    if (strcmp(obj, "_dta")) return nullptr;
    if (!strcmp(name, "_TStvar")) return "t";
    if (!strcmp(name, "_TSpanel")) return "id";
    return nullptr;
}

TEST_F(Vars, RecipesEvaluate) {
    // two panels; panel 1 has times 1 2 3 4 5 6, panel 2 has 1 2 4 5 (3 missing)
    make({"id", "t", "x", "s"}, KV_DOUBLE);
    const double id[] = {1, 1, 1, 1, 1, 1, 2, 2, 2, 2};
    const double t[] = {1, 2, 3, 4, 5, 6, 1, 2, 4, 5};
    nobs = 10;
    for (int i = 1; i <= nobs; i++) {
        store(1, i, id[i - 1]);
        store(2, i, t[i - 1]);
        store(3, i, t[i - 1] * t[i - 1] + 10 * (id[i - 1] - 1)); // t^2, +10 in panel 2
        store(4, i, 0);
    }
    CapturedOutput out;
    std::vector<int> l;
    EXPECT_EQ(scan("L.x", &l), 111);
    EXPECT_EQ(out.take(), "time variable not set\n");
    charget_hook = tvar_is_t;
    srtlist[0] = 2;
    srtlist[1] = 0;
    EXPECT_EQ(scan("L.x", &l), 5);
    EXPECT_EQ(out.take(), "not sorted\n");
    srtlist[0] = 1, srtlist[1] = 2, srtlist[2] = 0;
    ASSERT_EQ(scan("L.x F.x D.x D2.x S2.x LD.x", &l), 0);
    ASSERT_EQ(lnvar, 6);
    auto item = [&](int k, int i) { return rkorvu_data(k, i); };
    // panel 1: x = 1 4 9 16 25 36
    EXPECT_EQ(item(1, 3), 4);      // L.x at t=3
    EXPECT_EQ(item(1, 1), misval); // nothing before the first time
    EXPECT_EQ(item(2, 5), 36);     // F.x at t=5
    EXPECT_EQ(item(2, 6), misval); // F.x at the last time point
    EXPECT_EQ(item(3, 3), 5);      // 9 - 4
    EXPECT_EQ(item(4, 3), 2);      // (9-4) - (4-1)
    EXPECT_EQ(item(5, 4), 12);     // 16 - 4
    EXPECT_EQ(item(6, 4), 5);      // D.x at t=3
    // panel 2: x = 11 14 26 35 at t = 1 2 4 5; no crossing into panel 1
    EXPECT_EQ(item(1, 7), misval);
    EXPECT_EQ(item(1, 8), 11);
    EXPECT_EQ(item(1, 9), misval); // t=3 absent
    EXPECT_EQ(item(3, 10), 9);     // 35 - 26
    EXPECT_EQ(item(3, 9), misval);
    EXPECT_EQ(item(5, 9), 12); // 26 - 14
    EXPECT_EQ(item(2, 6), misval);
    EXPECT_EQ(item(2, 8), misval); // F.x at t=2 needs t=3
    // groups of operators and variables; equal recipes share
    ASSERT_EQ(scan("L(1/3).x", &l), 0);
    EXPECT_EQ(lnvar, 3);
    EXPECT_EQ(item(3, 4), 1);
    ASSERT_EQ(scan("L(1 2).(x t)", &l), 0);
    EXPECT_EQ(l, (V{3, 3, 2, 2}));
    EXPECT_EQ(recipeheap_next, 2);
    EXPECT_EQ(item(4, 6), 4); // L2.t at t=6
    ASSERT_EQ(scan("L.(x t) D21.x", &l), 198);
    ASSERT_EQ(scan("L.x D20.x L0.x", &l), 0);
    EXPECT_EQ(varlist_rcp[2].recipe, nullptr);
    EXPECT_EQ(scan("L(a).x", &l), 198);
    out.take();
    // materialised: a work variable holding the lagged values
    ASSERT_EQ(scan("x L.x", &l), 0);
    nobs1 = 1, nobs2 = nobs;
    int before = nvar;
    ASSERT_EQ(rcpfixvarlist(), 0);
    EXPECT_EQ(nvar, before + 1);
    EXPECT_EQ(varlist_vr[1], nvar);
    EXPECT_EQ(korvu_data(nvar, 3), 4);
    EXPECT_EQ(korvu_data(nvar, 7), misval);
    rcpfixdrop();
    EXPECT_EQ(nvar, before);
    // string variables take no operators
    ASSERT_EQ(addvar("str1v", 3), 0);
    EXPECT_EQ(scan("L.str1v", &l), 109);
    EXPECT_EQ(out.take(), "str1v:  may not use time-series operators on string variables\n");
}

TEST_F(Vars, SavedListAndOptionLists) {
    make({"a", "b", "c"});
    dminit();
    std::vector<int> l;
    ASSERT_EQ(scan("c a", &l), 0);
    ASSERT_EQ(savevlist(), 0);
    ASSERT_EQ(scan("b", &l), 0);
    ASSERT_EQ(loadvlist(), 0);
    EXPECT_EQ(V(varlist_vr, varlist_vr + lnvar), (V{3, 1}));
    rmvlist();
    EXPECT_EQ(loadvlist(), 111);
    // a varlist inside an option leaves the command's own list alone
    line = "a b, keep(c-c b) other(q)";
    settok(line.data());
    ASSERT_EQ(ssvlist(prsestd2, 0), 0);
    gettok(prsestd);
    opable = 0; // options allowed, none read yet, as a command that takes them
    noptn = 0;
    ASSERT_EQ(proption(), 0);
    int dst[10];
    EXPECT_EQ(findvlist("keep", 4, dst, 10), 2);
    EXPECT_EQ(V(dst, dst + 2), (V{3, 2}));
    EXPECT_EQ(V(varlist_vr, varlist_vr + lnvar), (V{1, 2}));
    CapturedOutput out;
    EXPECT_EQ(findvlist("other", 5, dst, 10), 0);
    EXPECT_EQ(out.take(), "variable q not found\n");
    EXPECT_EQ(lnvar, 2);
}

} // namespace
