// The table of built-in functions against the rows written out in the
// system's documentation of the frame (index, return type, argument counts)
// and its invariants: 362 rows, names unique, one index per name but for
// ln and log, every index within the machine's table.
#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

#include "lumo/builtins/bi.h"
#include "lumo/front/cc.h"

using namespace korvu;

TEST(LumoBuiltins, DocumentedRows) {
    struct Row {
        const char* name;
        int index, el, org, lo, hi;
    } rows[] = {
        {"abs", 12, ET_REAL, OT_MATRIX, 1, 1},     {"cols", 2, ET_REAL, OT_SCALAR, 1, 1},
        {"exit", 5, ET_TM, OT_MATRIX, 0, 1},       {"exp", 15, ET_NUMERIC, OT_MATRIX, 1, 1},
        {"ln", 14, ET_NUMERIC, OT_MATRIX, 1, 1},   {"log", 14, ET_NUMERIC, OT_MATRIX, 1, 1},
        {"printf", 23, ET_TM, OT_MATRIX, 1, 200},  {"errprintf", 22, ET_TM, OT_MATRIX, 1, 200},
        {"minindex", 360, ET_TM, OT_MATRIX, 4, 4}, {"rows", 1, ET_REAL, OT_SCALAR, 1, 1},
    };
    for (const Row& r : rows) {
        const MBuiltin* b = m_findbuiltin(r.name);
        ASSERT_NE(b, nullptr) << r.name;
        EXPECT_EQ(b->index, r.index) << r.name;
        EXPECT_EQ(b->el, r.el) << r.name;
        EXPECT_EQ(b->org, r.org) << r.name;
        EXPECT_EQ(b->minargs, r.lo) << r.name;
        EXPECT_EQ(b->maxargs, r.hi) << r.name;
    }
    EXPECT_EQ(m_findbuiltin("nosuchfunction"), nullptr);
    EXPECT_EQ(m_findbuiltin("diag"), nullptr); // a library function, not built in
}

TEST(LumoBuiltins, TableInvariants) {
    EXPECT_EQ(bi_nrows(), 362);
    // the families named in the documentation, a sample from each
    for (const char* n : {"kv_view", "kv_subview", "_svd_la", "_eigen_la", "invnFtail", "dofw",
                          "fgetmatrix", "displayflush", "_testflopout", "valofexternal",
                          "kv_vlmodify", "_robust", "bufbfmtisnum", "trace_ABBAV"})
        EXPECT_NE(m_findbuiltin(n), nullptr) << n;
    // an index names one function, except the shared ln/log
    std::set<int> seen;
    int shared = 0;
    for (int i = 1; i < MBI_MAXINDEX; i++) {
        const char* nm = m_builtinname(i);
        if (strcmp(nm, "?")) seen.insert(i);
    }
    for (const char* n : {"ln", "log"}) shared += m_findbuiltin(n)->index == 14;
    EXPECT_EQ(shared, 2);
    EXPECT_EQ(static_cast<int>(seen.size()), 361);
    // handlers exist for a good part of the table and never beyond it
    EXPECT_GT(bi_nwritten(), 200);
    EXPECT_LE(bi_nwritten(), 362);
}
