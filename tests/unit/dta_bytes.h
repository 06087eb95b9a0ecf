// Helpers of the dataset-file tests: a byte builder in either byte order, a
// fresh data area, and small dataset makers.
#pragma once
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "app/link.h"
#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/labels/label.h"
#include "kernel/dict/dict.h"

struct Bytes {
    std::vector<uint8_t> b;
    bool big = false; // high byte first
    void u8(unsigned v) { b.push_back(static_cast<uint8_t>(v)); }
    void le(uint64_t v, int n) {
        for (int i = 0; i < n; ++i) {
            int sh = big ? 8 * (n - 1 - i) : 8 * i;
            b.push_back(static_cast<uint8_t>(v >> sh));
        }
    }
    void i16(int v) { le(static_cast<uint16_t>(v), 2); }
    void i32(int64_t v) { le(static_cast<uint32_t>(v), 4); }
    void f32bits(uint32_t u) { le(u, 4); }
    void f64bits(uint64_t u) { le(u, 8); }
    void f32(float f) {
        uint32_t u;
        std::memcpy(&u, &f, 4);
        f32bits(u);
    }
    void f64(double d) {
        uint64_t u;
        std::memcpy(&u, &d, 8);
        f64bits(u);
    }
    void str(const std::string& s, size_t width) {
        for (size_t i = 0; i < width; ++i)
            b.push_back(i < s.size() ? static_cast<uint8_t>(s[i]) : 0);
    }
    void raw(const std::string& s) { b.insert(b.end(), s.begin(), s.end()); }
};

inline std::vector<uint8_t> slurp(const std::string& path) {
    std::vector<uint8_t> out;
    FILE* f = std::fopen(path.c_str(), "rb");
    if (!f) return out;
    uint8_t buf[4096];
    size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) out.insert(out.end(), buf, buf + n);
    std::fclose(f);
    return out;
}

inline void spill(const std::string& path, const std::vector<uint8_t>& b) {
    FILE* f = std::fopen(path.c_str(), "wb");
    ASSERT_TRUE(f);
    if (!b.empty()) std::fwrite(b.data(), 1, b.size(), f);
    std::fclose(f);
}

// A data area and dictionary of their own for each test.
struct DtaFixture : ::testing::Test {
    std::string dir;
    void SetUp() override {
        korvu::dminit();
        korvu::totalmemory = 32u << 20;
        korvu::maxmaxvar = korvu::DEFAULT_MAXVAR;
        korvu::matsize = korvu::DEFAULT_MATSIZE;
        ASSERT_EQ(korvu::news_alloc(), 0);
        korvu::link_all(); // the product's wiring
        korvu::sysflag = 0;
        korvu::virtualflg = 0;
        korvu::updata = 0;
        korvu::datalbl[0] = 0;
        char tmpl[] = "/tmp/dtatest.XXXXXX";
        ASSERT_TRUE(mkdtemp(tmpl));
        dir = tmpl;
    }
    void TearDown() override {
        korvu::drop_all(0);
        korvu::news_free();
        korvu::dmshutdown();
        std::string cmd = "rm -rf '" + dir + "'";
        ASSERT_EQ(std::system(cmd.c_str()), 0);
    }
    std::string path(const char* name) const { return dir + "/" + name; }
};

// A variable at the end, with name and format.
inline int addvar_named(int code, const char* name, const char* fmt) {
    int rc = korvu::alcvar(code);
    if (rc) return rc;
    int v = korvu::nvar;
    std::memset(korvu::varname(v), 0, korvu::NAMELEN1);
    std::snprintf(korvu::varname(v), korvu::NAMELEN1, "%s", name);
    std::memset(korvu::fmtname(v), 0, korvu::FMTLEN1);
    std::snprintf(korvu::fmtname(v), korvu::FMTLEN1, "%s", fmt);
    std::memset(korvu::lblname(v), 0, korvu::NAMELEN1);
    return 0;
}

inline int setobs(int n) {
    if (n > korvu::maxobs) {
        int rc = korvu::repartobs(n - korvu::maxobs);
        if (rc) return rc;
    }
    korvu::nobs = n;
    return 0;
}

inline uint64_t bitsof(double x) {
    uint64_t u;
    std::memcpy(&u, &x, 8);
    return u;
}
