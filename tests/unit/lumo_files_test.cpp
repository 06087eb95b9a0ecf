// Object files, libraries and the matrix stream. Expected bytes are worked
// by hand from the layout of the files (offsets, integers in a stated byte
// order, IEEE bytes of literal doubles), and the file of the other byte
// order is built here from those rules, not by the writer.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "capture.h"
#include "kernel/dict/dict.h"
#include "lumo/codegen/opcodes.h"
#include "lumo/io/lumofile.h"
#include "lumo/lumo.h"
#include "lumo/objects/mobj.h"
#include "lumo/vm/vm.h"

using namespace korvu;

namespace {

using Bytes = std::vector<uint8_t>;

Bytes slurp(const std::string& p) {
    Bytes b;
    FILE* fp = fopen(p.c_str(), "rb");
    if (!fp) return b;
    int ch;
    while ((ch = fgetc(fp)) != EOF) b.push_back(static_cast<uint8_t>(ch));
    fclose(fp);
    return b;
}
void spit(const std::string& p, const Bytes& b) {
    FILE* fp = fopen(p.c_str(), "wb");
    ASSERT_NE(fp, nullptr);
    if (!b.empty()) fwrite(b.data(), 1, b.size(), fp);
    fclose(fp);
}
uint32_t le32(const Bytes& b, size_t at) {
    return b[at] | b[at + 1] << 8 | b[at + 2] << 16 | static_cast<uint32_t>(b[at + 3]) << 24;
}
uint32_t be32(const Bytes& b, size_t at) {
    return static_cast<uint32_t>(b[at]) << 24 | b[at + 1] << 16 | b[at + 2] << 8 | b[at + 3];
}
uint16_t le16(const Bytes& b, size_t at) {
    return static_cast<uint16_t>(b[at] | b[at + 1] << 8);
}
uint16_t be16(const Bytes& b, size_t at) {
    return static_cast<uint16_t>(b[at] << 8 | b[at + 1]);
}
void setbe32(Bytes& b, size_t at, uint32_t v) {
    for (int i = 0; i < 4; i++) b[at + i] = static_cast<uint8_t>(v >> (24 - 8 * i));
}
bool contains(const Bytes& b, size_t from, size_t to, const Bytes& pat) {
    for (size_t i = from; i + pat.size() <= to; i++)
        if (!memcmp(&b[i], pat.data(), pat.size())) return true;
    return false;
}

struct LumoFiles : ::testing::Test {
    CapturedOutput out;
    std::string dir;
    void SetUp() override {
        dminit();
        mo_init();
        mo_counts = MoCounts{};
        m_curdepth = 1;
        m_linesource = nullptr;
        m_mayreadcons = 0;
        m_optimize = 1;
        m_dropallfcns();
        char t[] = "/tmp/lumofiles.XXXXXX";
        ASSERT_NE(mkdtemp(t), nullptr);
        dir = t;
    }
    void TearDown() override {
        lumo_clearmats();
        m_dropallfcns();
        mo_reinit();
        m_curdepth = 0;
        std::string cmd = "rm -rf " + dir;
        EXPECT_EQ(system(cmd.c_str()), 0);
    }
    int run(const char* text) {
        ++m_sysclock;
        std::string rest;
        if (int rc = cc_compile(text, &rest)) return rc;
        const LumoFcn* f = cc_lastfcn();
        if (!f || strcmp(dmname(f), mwrd_istmt)) return 0;
        m_curdepth = 0;
        const int rc = ixeq(const_cast<LumoFcn*>(f));
        m_dropoldfcns();
        return rc;
    }
    double real0(const char* name) {
        MObj* o = findlvl0mat(name);
        EXPECT_NE(o, nullptr) << name;
        return o ? m_rel(o)[0] : -1;
    }
    // Writes the functions into a new file; returns its path.
    std::string save(const char* file, bool lo, std::initializer_list<const char*> fns) {
        const std::string p = dir + "/" + file;
        EXPECT_EQ(llib_create(p.c_str(), lo), 0);
        LlibCtx* c = new LlibCtx;
        EXPECT_EQ(llib_init(c, p.c_str(), true, false, false), 0);
        for (const char* f : fns) EXPECT_EQ(llib_add(c, m_findfcn(f), f), 0) << f;
        llib_close(c);
        delete c;
        return p;
    }
    // Loads a member from the file as a function in memory: the code.
    int load(const std::string& p, const char* name) {
        LlibCtx* c = new LlibCtx;
        int rc = llib_init(c, p.c_str(), false, false, true);
        if (!rc) {
            const uint32_t off = llib_search(c, name);
            LlibMember m{};
            rc = off ? llib_load1(c, off, &m) : -1;
            LumoFcn* f = nullptr;
            if (!rc) rc = llib_load2(c, off, &m, name, &f);
        }
        llib_close(c);
        delete c;
        return rc;
    }
};

// A one-function object file, read byte by byte: the header, the two tables,
// the name, and the member in both orders.
TEST_F(LumoFiles, HeaderBytesOfAOneFunctionObjectFile) {
    ASSERT_EQ(run("real scalar half(real scalar x) { return(x * 2.5) }"), 0);
    const LumoFcn* f = m_findfcn("half");
    ASSERT_NE(f, nullptr);
    const uint32_t nw = static_cast<uint32_t>(f->nwords);
    const Bytes b = slurp(save("half.lo", true, {"half"}));
    // 16 header bytes, 2 x 4 x 2 offsets, 2 x 33 names: the first member at 98
    const size_t member = 16 + 8 * 2 + 33 * 2;
    ASSERT_EQ(b.size(), member + 2 * (18 + 4 * nw));
    EXPECT_EQ(Bytes(b.begin(), b.begin() + 8), (Bytes{129, 146, 167, 185, 2, 0, 3, 0}));
    EXPECT_EQ(le32(b, 8), 1u);                    // members
    EXPECT_EQ(le32(b, 12), 2u);                   // capacity of an object file
    EXPECT_EQ(le32(b, 16), member + 18 + 4 * nw); // high-to-low copy
    EXPECT_EQ(le32(b, 20), 0u);
    EXPECT_EQ(le32(b, 24), member); // low-to-high copy
    EXPECT_EQ(le32(b, 28), 0u);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&b[32])), "half");
    EXPECT_EQ(b[32 + 33], 0);
    // the low-to-high member
    EXPECT_EQ(le32(b, member), 4 * nw);
    EXPECT_EQ(le32(b, member + 4), nw);
    EXPECT_EQ(le16(b, member + 14), 2); // a function
    EXPECT_EQ(le16(b, member + 16), 920);
    EXPECT_EQ(le32(b, member + 18), 920u); // first code word
    // the same header high-to-low
    const size_t hi = member + 18 + 4 * nw;
    EXPECT_EQ(be32(b, hi), 4 * nw);
    EXPECT_EQ(be32(b, hi + 4), nw);
    EXPECT_EQ(be16(b, hi + 14), 2);
    EXPECT_EQ(be16(b, hi + 16), 920);
    EXPECT_EQ(be32(b, hi + 18), 920u);
    // 2.5 is 0x4004000000000000: kept as one 8-byte unit in each order
    const Bytes lo25{0, 0, 0, 0, 0, 0, 0x04, 0x40}, hi25{0x40, 0x04, 0, 0, 0, 0, 0, 0};
    EXPECT_TRUE(contains(b, member + 18, hi, lo25));
    EXPECT_TRUE(contains(b, hi + 18, b.size(), hi25));
    EXPECT_FALSE(contains(b, hi + 18, b.size(), lo25));
}

TEST_F(LumoFiles, FunctionsComeBackThroughObjectFilesAndLibraries) {
    ASSERT_EQ(run("real scalar sq(real scalar x) { return(x * x) }"), 0);
    ASSERT_EQ(run("string scalar tw(string scalar s) { return(s + s) }"), 0);
    ASSERT_EQ(run("real scalar both(real scalar x) { return(sq(x) + strlen(tw(\"ab\"))) }"), 0);
    const std::string lib = save("lmine.llib", false, {"sq", "tw", "both"});
    const std::string lo = save("sq.lo", true, {"sq"});
    m_dropallfcns();
    EXPECT_EQ(m_findfcn("both"), nullptr);
    EXPECT_EQ(load(lib, "both"), 0);
    EXPECT_EQ(load(lib, "tw"), 0);
    EXPECT_EQ(load(lo, "sq"), 0);
    ASSERT_EQ(run("y = both(3)"), 0);
    EXPECT_EQ(real0("y"), 9 + 4);
    LlibCtx* c = new LlibCtx;
    ASSERT_EQ(llib_init(c, lib.c_str(), false, false, false), 0);
    EXPECT_EQ(llib_nmbr(c), 3);
    EXPECT_EQ(c->cap, 500);
    EXPECT_EQ(llib_search(c, "nothere"), 0u);
    llib_close(c);
    delete c;
}

// The caching words of opfindf are filled while code runs and are written
// as zeros.
TEST_F(LumoFiles, CachedCallWordsAreClearedInFiles) {
    ASSERT_EQ(run("real scalar one() { return(1) }"), 0);
    ASSERT_EQ(run("real scalar two() { return(one() + one()) }"), 0);
    ASSERT_EQ(run("z = two()"), 0);
    EXPECT_EQ(real0("z"), 2);
    const LumoFcn* f = m_findfcn("two");
    int at = 2, cached = 0;
    while (at < f->nwords) {
        const int len = m_lofmop(f->code, at, f->nwords);
        ASSERT_GT(len, 0);
        if (f->code[at] == MOP_FINDF && f->code[at + 1] && f->code[at + 2]) cached++;
        at += len;
    }
    EXPECT_GE(cached, 1);
    const Bytes b = slurp(save("two.lo", true, {"two"}));
    const size_t code = 98 + 18;
    std::vector<uint32_t> words(static_cast<size_t>(f->nwords));
    for (size_t i = 0; i < words.size(); i++) words[i] = le32(b, code + 4 * i);
    int seen = 0;
    for (at = 2; at < f->nwords;) {
        const int len = m_lofmop(words.data(), at, f->nwords);
        ASSERT_GT(len, 0);
        if (words[at] == MOP_FINDF) {
            seen++;
            EXPECT_EQ(words[at + 1], 0u);
            EXPECT_EQ(words[at + 2], 0u);
        }
        at += len;
    }
    EXPECT_GE(seen, 1);
    // a redefinition is seen at the next statement, not through the cache
    ASSERT_EQ(m_dropfcn("one"), 0);
    ++m_sysclock;
    ASSERT_EQ(run("real scalar one() { return(5) }"), 0);
    ASSERT_EQ(run("z = two()"), 0);
    EXPECT_EQ(real0("z"), 10);
}

// A library as a high-to-low machine writes it: the header's integers and
// both tables high-to-low, order byte 1. The member is read from the
// low-to-high copy, without swapping: spoiling the other copy changes
// nothing.
TEST_F(LumoFiles, LibraryOfTheOtherByteOrderIsRead) {
    ASSERT_EQ(run("real scalar cube(real scalar x) { return(x * x * x + 0.5) }"), 0);
    const std::string p = save("lcube.llib", false, {"cube"});
    Bytes b = slurp(p);
    const int cap = 500;
    Bytes h = b;
    h[4] = 1;
    h[6] = 0;
    h[7] = 3;
    setbe32(h, 8, le32(b, 8));
    setbe32(h, 12, le32(b, 12));
    for (int i = 0; i < 2 * cap; i++) setbe32(h, 16 + 4 * i, le32(b, 16 + 4 * i));
    const uint32_t hioff = le32(b, 16), lowoff = le32(b, 16 + 4 * cap);
    for (size_t i = hioff + 18; i < h.size(); i++) h[i] = 0xAB; // the foreign code
    spit(p, h);
    m_dropallfcns();
    EXPECT_EQ(load(p, "cube"), 0);
    ASSERT_EQ(run("y = cube(2)"), 0);
    EXPECT_EQ(real0("y"), 8.5);
    LlibCtx* c = new LlibCtx;
    ASSERT_EQ(llib_init(c, p.c_str(), false, false, false), 0);
    EXPECT_EQ(c->order, 1);
    EXPECT_EQ(c->n, 1);
    EXPECT_EQ(llib_search(c, "cube"), lowoff);
    llib_close(c);
    delete c;
    // adding to it keeps its order
    ASSERT_EQ(run("real scalar sq2(real scalar x) { return(x * x) }"), 0);
    c = new LlibCtx;
    ASSERT_EQ(llib_init(c, p.c_str(), true, false, false), 0);
    ASSERT_EQ(llib_add(c, m_findfcn("sq2"), "sq2"), 0);
    llib_close(c);
    delete c;
    const Bytes after = slurp(p);
    EXPECT_EQ(after[4], 1);
    EXPECT_EQ(be32(after, 8), 2u);
    EXPECT_EQ(be32(after, 16 + 4 * cap + 4), b.size()); // its low-to-high copy
}

// The two copies agree: the high-to-low code, turned back word by word
// through the instructions, is the low-to-high code.
TEST_F(LumoFiles, TheTwoCopiesHoldTheSameCode) {
    ASSERT_EQ(run("string scalar t(real scalar x) { return(x > 1 ? \"big\" : \"small\" + "
                  "strofreal(1.25e-3)) }"),
              0);
    const Bytes b = slurp(save("t.lo", true, {"t"}));
    const uint32_t lo = le32(b, 24), hi = le32(b, 16);
    const uint32_t nw = le32(b, lo + 4);
    std::vector<uint32_t> a(nw), z(nw);
    memcpy(a.data(), &b[lo + 18], 4 * nw);
    memcpy(z.data(), &b[hi + 18], 4 * nw);
    EXPECT_NE(a, z);
    ASSERT_EQ(m_byteswap(z.data(), static_cast<int>(nw), true), 0);
    EXPECT_EQ(a, z);
}

TEST_F(LumoFiles, OldNewAndForeignFilesAreRefused) {
    ASSERT_EQ(run("real scalar k() { return(3) }"), 0);
    const std::string p = save("k.lo", true, {"k"});
    const Bytes good = slurp(p);
    const uint32_t lo = le32(good, 24);
    LlibMember m{};
    auto load1 = [&](const Bytes& bytes) {
        spit(p, bytes);
        LlibCtx* c = new LlibCtx;
        int rc = llib_init(c, p.c_str(), false, false, true);
        if (!rc) rc = 100 + llib_load1(c, llib_search(c, "k"), &m);
        llib_close(c);
        delete c;
        return rc;
    };
    EXPECT_EQ(load1(good), 100);
    Bytes b = good;
    b[lo + 16] = 889 & 0xff;
    b[lo + 17] = 889 >> 8;
    EXPECT_EQ(load1(b), 101); // too old
    b[lo + 16] = 921 & 0xff;
    b[lo + 17] = 921 >> 8;
    EXPECT_EQ(load1(b), 102); // too new
    b[lo + 16] = 890 & 0xff;
    b[lo + 17] = 890 >> 8;
    EXPECT_EQ(load1(b), 100); // the oldest accepted
    b = good;
    b[6] = 4;
    EXPECT_EQ(load1(b), 610); // a later header
    b[6] = 1;
    EXPECT_EQ(load1(b), 610);
    b = good;
    b[0] = 128;
    EXPECT_EQ(load1(b), 610);
    b = good;
    b[4] = 3;
    EXPECT_EQ(load1(b), 610);
    EXPECT_EQ(load1(Bytes(good.begin(), good.begin() + 40)), 610); // cut short
    // the messages
    b = good;
    b[6] = 4;
    spit(p, b);
    out.take();
    LlibCtx* c = new LlibCtx;
    EXPECT_EQ(llib_init(c, p.c_str(), false, false, false), 610);
    EXPECT_NE(out.take().find("from a more recent version of Korvu"), std::string::npos);
    b[6] = 1;
    spit(p, b);
    EXPECT_EQ(llib_init(c, p.c_str(), false, false, false), 610);
    EXPECT_NE(out.take().find("from a older version of Korvu"), std::string::npos);
    b = good;
    b[1] = 0;
    spit(p, b);
    EXPECT_EQ(llib_init(c, p.c_str(), false, false, false), 610);
    EXPECT_NE(out.take().find("not lumo library"), std::string::npos);
    delete c;
}

TEST_F(LumoFiles, CapacityAndDuplicates) {
    ASSERT_EQ(run("real scalar a1() { return(1) }"), 0);
    ASSERT_EQ(run("real scalar a2() { return(2) }"), 0);
    ASSERT_EQ(run("real scalar a3() { return(3) }"), 0);
    const std::string p = dir + "/a.lo";
    ASSERT_EQ(llib_create(p.c_str(), true), 0);
    LlibCtx* c = new LlibCtx;
    ASSERT_EQ(llib_init(c, p.c_str(), true, false, false), 0);
    EXPECT_EQ(llib_search(c, "a1"), 0u); // empty
    EXPECT_EQ(llib_add(c, m_findfcn("a1"), "a1"), 0);
    EXPECT_EQ(llib_add(c, m_findfcn("a1"), "a1"), 602);
    EXPECT_EQ(llib_add(c, m_findfcn("a2"), "a2"), 0);
    const size_t size = slurp(p).size();
    EXPECT_EQ(llib_add(c, m_findfcn("a3"), "a3"), 610); // full at 2
    llib_close(c);
    EXPECT_EQ(slurp(p).size(), size); // nothing written
    ASSERT_EQ(llib_init(c, p.c_str(), false, false, false), 0);
    EXPECT_EQ(c->n, 2);
    EXPECT_NE(llib_search(c, "a2"), 0u);
    llib_close(c);
    delete c;
    EXPECT_TRUE(llib_validname("lstats_2"));
    EXPECT_FALSE(llib_validname("stats"));
    EXPECT_FALSE(llib_validname("Lstats"));
    EXPECT_FALSE(llib_validname("l-x"));
    EXPECT_TRUE(llibofficial("llumobase"));
    EXPECT_FALSE(llibofficial("llum"));
}

// The stream of a 1 x 2 real written here and one from a high-to-low
// machine, both built byte by byte.
Bytes streamof(bool high, const char* name, uint32_t num, uint32_t rows, uint32_t cols,
               const std::vector<uint64_t>& dbl) {
    Bytes s;
    auto tag = [&](const char* t) { s.insert(s.end(), t, t + strlen(t) + 1); };
    auto u32 = [&](uint32_t v) {
        for (int i = 0; i < 4; i++)
            s.push_back(static_cast<uint8_t>(v >> (high ? 24 - 8 * i : 8 * i)));
    };
    tag("MOTOP");
    s.push_back(0);
    s.push_back(high ? 1 : 2);
    tag("OBJ");
    s.push_back(1);
    Bytes nm(33, 0);
    memcpy(nm.data(), name, strlen(name));
    s.insert(s.end(), nm.begin(), nm.end());
    u32(num);
    tag("MAT");
    s.push_back(0);
    u32(rows);
    u32(cols);
    for (uint64_t d : dbl)
        for (int i = 0; i < 8; i++)
            s.push_back(static_cast<uint8_t>(d >> (high ? 56 - 8 * i : 8 * i)));
    tag("TAM");
    tag("JBO");
    tag("POTOM");
    return s;
}

TEST_F(LumoFiles, MatrixStreamBytesAndBothOrders) {
    MObj* x = m_mkmat("", MT_REAL, 1, 2);
    m_rel(x)[0] = 1.0;  // 0x3FF0000000000000
    m_rel(x)[1] = -2.0; // 0xC000000000000000
    const std::string p = dir + "/x.lmat";
    FILE* fp = fopen(p.c_str(), "wb");
    ASSERT_EQ(moio_write(fp, x, "x"), 0);
    fclose(fp);
    mo_freemat(x);
    const std::vector<uint64_t> v{0x3FF0000000000000ull, 0xC000000000000000ull};
    EXPECT_EQ(slurp(p), streamof(false, "x", 1, 1, 2, v));
    spit(p, streamof(true, "y", 1, 2, 1, v));
    fp = fopen(p.c_str(), "rb");
    MObj* y = nullptr;
    std::string name;
    ASSERT_EQ(moio_read(fp, &y, &name), 0);
    ASSERT_EQ(name, "y");
    mo_freemat(y);
    EXPECT_EQ(moio_read(fp, &y, &name), 8); // end of file
    fclose(fp);
    fp = fopen(p.c_str(), "rb");
    ASSERT_EQ(fgetmatrix(fp, &y), 0);
    EXPECT_EQ(y->rows, 2);
    EXPECT_EQ(y->cols, 1);
    EXPECT_EQ(m_rel(y)[0], 1.0);
    EXPECT_EQ(m_rel(y)[1], -2.0);
    mo_freemat(y);
    ASSERT_EQ(fgetmatrix(fp, &y), 0); // past the end: 0 x 0
    EXPECT_EQ(y->rows, 0);
    mo_freemat(y);
    fclose(fp);
    // refused streams
    auto readback = [&](const Bytes& b) {
        spit(p, b);
        FILE* f = fopen(p.c_str(), "rb");
        MObj* o = nullptr;
        std::string n;
        const int rc = moio_read(f, &o, &n);
        fclose(f);
        if (o) mo_freemat(o);
        return rc;
    };
    Bytes b = streamof(false, "x", 1, 1, 2, v);
    b[7] = 3;
    EXPECT_EQ(readback(b), 5);
    b = streamof(false, "x", 1, 1, 2, v);
    EXPECT_EQ(readback(Bytes(b.begin(), b.end() - 3)), 5);
    b[51 + 4] = 9; // rows far beyond the file
    EXPECT_EQ(readback(b), 5);
    b = streamof(false, "x", 1, 1, 2, v);
    b[12] = 2; // a function
    EXPECT_EQ(readback(b), 7);
    EXPECT_EQ(readback(Bytes{}), 8);
    EXPECT_EQ(mo_counts.live, 0);
}

TEST_F(LumoFiles, StringsAndSharedPointersComeBackShared) {
    MObj* s = m_mkmat("", MT_STRING, 1, 3);
    m_sel(s)[0] = sel_make("", 0);
    m_sel(s)[1] = sel_make("a b", 3);
    m_sel(s)[2] = sel_make("x\0y", 3); // an embedded NUL
    MObj* t = m_mkmat("", MT_REAL, 1, 1);
    m_rel(t)[0] = 0.1;
    MObj* p = m_mkmat("", MT_POINTER, 1, 4);
    mo_hold(t);
    mo_hold(t);
    mo_hold(s);
    m_pel(p)[0] = t;
    m_pel(p)[1] = s;
    m_pel(p)[3] = t; // shared
    const std::string path = dir + "/p.lmat";
    FILE* fp = fopen(path.c_str(), "wb");
    ASSERT_EQ(moio_write(fp, p, "p"), 0);
    fclose(fp);
    mo_freemat(p);
    EXPECT_EQ(mo_counts.live, 0);
    // the target is written once: its 8 bytes of 0.1 appear once
    const Bytes b = slurp(path);
    const Bytes d01{0x9a, 0x99, 0x99, 0x99, 0x99, 0x99, 0xb9, 0x3f};
    size_t hits = 0;
    for (size_t i = 0; i + 8 <= b.size(); i++) hits += !memcmp(&b[i], d01.data(), 8);
    EXPECT_EQ(hits, 1u);
    fp = fopen(path.c_str(), "rb");
    MObj* q = nullptr;
    std::string name;
    ASSERT_EQ(moio_read(fp, &q, &name), 0);
    fclose(fp);
    ASSERT_EQ(q->eltype, MT_POINTER);
    MObj** e = m_pel(q);
    ASSERT_TRUE(e[0] && e[1] && !e[2] && e[3]);
    EXPECT_EQ(e[0], e[3]);
    EXPECT_EQ(e[0]->count, 2);
    EXPECT_EQ(m_rel(e[0])[0], 0.1);
    ASSERT_EQ(e[1]->eltype, MT_STRING);
    EXPECT_EQ(m_sel(e[1])[0]->len, 0);
    EXPECT_STREQ(m_sel(e[1])[1]->s, "a b");
    EXPECT_EQ(m_sel(e[1])[2]->len, 3);
    EXPECT_EQ(memcmp(m_sel(e[1])[2]->s, "x\0y", 3), 0);
    mo_freemat(q);
    EXPECT_EQ(mo_counts.live, 0);
}

// Mutated files through both readers: no crash, no object left behind.
TEST_F(LumoFiles, MutatedFilesNeverBreakTheReaders) {
    ASSERT_EQ(run("real scalar m(real scalar x) { return(x + 1.5) }"), 0);
    ASSERT_EQ(run("string scalar m2(string s) { return(s + \"!\") }"), 0);
    const std::string p = save("lm.llib", false, {"m", "m2"});
    const Bytes lib = slurp(p);
    MObj* s = m_mkmat("", MT_POINTER, 1, 2);
    MObj* t = m_mkmat("", MT_STRING, 2, 1);
    m_sel(t)[0] = sel_make("abc", 3);
    mo_hold(t);
    m_pel(s)[0] = t;
    const std::string mp = dir + "/s.lmat";
    FILE* fp = fopen(mp.c_str(), "wb");
    ASSERT_EQ(moio_write(fp, s, "s"), 0);
    fclose(fp);
    mo_freemat(s);
    const Bytes mat = slurp(mp);
    std::mt19937 rng(20261123);
    for (int k = 0; k < 3000; k++) {
        const bool islib = k % 2 == 0;
        Bytes b = islib ? lib : mat;
        const int muts = 1 + static_cast<int>(rng() % 6);
        for (int j = 0; j < muts; j++) {
            const size_t at = rng() % b.size();
            switch (rng() % 4) {
            case 0: b[at] = static_cast<uint8_t>(rng()); break;
            case 1: b[at] ^= static_cast<uint8_t>(1u << (rng() % 8)); break;
            case 2: b.resize(at + 1); break;
            default: b[at] = static_cast<uint8_t>(rng() % 3 ? 0 : 0xff); break;
            }
        }
        if (islib) {
            spit(p, b);
            m_dropallfcns();
            load(p, "m");
            load(p, "m2");
        } else {
            spit(mp, b);
            FILE* f = fopen(mp.c_str(), "rb");
            MObj* o = nullptr;
            std::string n;
            while (moio_read(f, &o, &n) == 0) mo_freemat(o);
            fclose(f);
        }
        ASSERT_EQ(mo_counts.live, 0) << k;
    }
}

} // namespace

namespace {

// Unlinked temporaries and rings of pointers are released; what a name or
// an outside count reaches is kept.
TEST_F(LumoFiles, UnreachableRingsAndTemporariesAreReleased) {
    m_curdepth = 0;
    MObj* keep = m_mkmat("kept", MT_POINTER, 1, 1); // named: count 1
    MObj* t = m_mkmat("", MT_REAL, 1, 1);           // reached through keep
    MObj* lost = m_mkmat("", MT_REAL, 2, 2);        // count 0, unlinked
    MObj* r1 = m_mkmat("", MT_POINTER, 1, 1);       // r1 and r2 point at each other
    MObj* r2 = m_mkmat("", MT_POINTER, 1, 2);
    ASSERT_TRUE(keep && t && lost && r1 && r2);
    EXPECT_EQ(keep->count, 1);
    mo_hold(t);
    m_pel(keep)[0] = t;
    mo_hold(r2);
    m_pel(r1)[0] = r2;
    mo_hold(r1);
    m_pel(r2)[0] = r1;
    mo_hold(t); // the ring also points at a kept object
    m_pel(r2)[1] = t;
    EXPECT_EQ(mo_counts.live, 5);
    EXPECT_EQ(m_freeunlinkedmats(), 3);
    EXPECT_EQ(mo_counts.live, 2);
    EXPECT_EQ(t->count, 1);
    EXPECT_EQ(m_pel(keep)[0], t);
    // held from outside the store: kept, with what it reaches
    MObj* held = m_mkmat("", MT_POINTER, 1, 1);
    MObj* u = m_mkmat("", MT_STRING, 1, 1);
    mo_hold(held);
    mo_hold(u);
    m_pel(held)[0] = u;
    EXPECT_EQ(m_freeunlinkedmats(), 0);
    mo_release(held);
    EXPECT_EQ(mo_counts.live, 2);
    // deeper than the interactive level nothing is touched
    MObj* deep = m_mkmat("", MT_REAL, 1, 1);
    m_curdepth = 2;
    EXPECT_EQ(m_freeunlinkedmats(), 0);
    m_curdepth = 0;
    EXPECT_EQ(m_freeunlinkedmats(), 1);
    (void)deep;
    EXPECT_EQ(mo_counts.live, 2);
}

} // namespace
