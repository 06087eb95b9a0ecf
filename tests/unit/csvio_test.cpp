// Delimited text: the number reader against values worked by hand, the type
// boundaries of the storage types, names, and whole files through the reader
// and the writer (random doubles and awkward texts must come back bit for bit).
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <random>

#include "capture.h"
#include "data/area/missing.h"
#include "data/area/storage.h"
#include "data/io/io.h"
#include "dta_bytes.h"
#include "kernel/parse/cmdparse.h"

using namespace korvu;

namespace {

using CsvIo = DtaFixture;

int num(const char* s, double* x) {
    return csv_number(s, s + std::strlen(s), x);
}

void writefile(const std::string& p, const std::string& text) {
    std::ofstream f(p, std::ios::binary);
    f << text;
}

} // namespace

TEST(CsvNumber, FormsOfNumbersAndMissing) {
    double x;
    EXPECT_EQ(num("42", &x), 1);
    EXPECT_EQ(x, 42.0);
    EXPECT_EQ(num("  -17 ", &x), 1);
    EXPECT_EQ(x, -17.0);
    EXPECT_EQ(num("+3.5", &x), 1);
    EXPECT_EQ(x, 3.5);
    EXPECT_EQ(num("1e3", &x), 1);
    EXPECT_EQ(x, 1000.0);
    EXPECT_EQ(num(".25", &x), 1);
    EXPECT_EQ(x, 0.25);
    EXPECT_EQ(num("-.5E-2", &x), 1);
    EXPECT_EQ(x, -0.005);
    // 2^53 + 1 is not a double: it rounds to even, 2^53
    EXPECT_EQ(num("9007199254740993", &x), 1);
    EXPECT_EQ(x, 9007199254740992.0);
    // correctly rounded: 0.1 is 0x1.999999999999ap-4
    EXPECT_EQ(num("0.1", &x), 1);
    EXPECT_EQ(x, 0x1.999999999999ap-4);
    for (const char* m : {"", ".", "NA", "N/A", "NaN", "NULL", "null", "  "}) {
        EXPECT_EQ(num(m, &x), 2) << m;
        EXPECT_EQ(x, misval) << m;
    }
    EXPECT_EQ(num(".c", &x), 2);
    EXPECT_EQ(missing_letter(x), 3);
    for (const char* t :
         {"abc", "1,5", "12a", "inf", "-inf", "nan1", "0x10", "1e400", "--1", "+", "-", "1 2"})
        EXPECT_EQ(num(t, &x), 0) << t;
}

TEST(CsvNumber, SmallestExactType) {
    // integer limits of byte, int and long, and where float stops being exact
    EXPECT_EQ(csv_numtype(true, -127, 100, true, false), KV_BYTE);
    EXPECT_EQ(csv_numtype(true, -128, 100, true, false), KV_INT);
    EXPECT_EQ(csv_numtype(true, 0, 101, true, false), KV_INT);
    EXPECT_EQ(csv_numtype(true, -32767, 32740, true, false), KV_INT);
    EXPECT_EQ(csv_numtype(true, -32768, 0, true, false), KV_LONG);
    EXPECT_EQ(csv_numtype(true, 0, 32741, true, false), KV_LONG);
    EXPECT_EQ(csv_numtype(true, -2147483647.0, 2147483620.0, false, false), KV_LONG);
    EXPECT_EQ(csv_numtype(true, 0, 2147483621.0, false, false), KV_DOUBLE);
    EXPECT_EQ(csv_numtype(true, 0, 4294967296.0, true, false), KV_FLOAT); // 2^32 is a float
    EXPECT_EQ(csv_numtype(false, 0.5, 1.25, true, false), KV_FLOAT);
    EXPECT_EQ(csv_numtype(false, 0.5, 1.25, true, true), KV_DOUBLE);
    EXPECT_EQ(csv_numtype(false, 0.1, 0.1, false, false), KV_DOUBLE);
}

TEST(CsvNames, ValidFromHeaderText) {
    EXPECT_EQ(csv_validname("first name", 0), "first_name");
    EXPECT_EQ(csv_validname(" padded ", 0), "padded");
    EXPECT_EQ(csv_validname("2nd", 0), "v2nd");
    EXPECT_EQ(csv_validname("Sepal.Length", 1), "sepal_length");
    EXPECT_EQ(csv_validname("Sepal.Length", 2), "SEPAL_LENGTH");
    EXPECT_EQ(csv_validname("_keep_", 0), "_keep_");
    EXPECT_EQ(csv_validname("", 0), "");
    EXPECT_EQ(csv_validname("%", 0), "");
    EXPECT_EQ(csv_validname(std::string(40, 'a'), 0), std::string(32, 'a'));
    // invalid characters inside become _, at the ends they go
    EXPECT_EQ(csv_validname("caf\xC3\xA9", 0), "caf");
    EXPECT_EQ(csv_validname("(a%b)", 0), "a_b");
}

TEST_F(CsvIo, AFailedReadLeavesTheData) {
    const std::string good = path("good.csv"), bad = path("bad.csv");
    writefile(good, "a,b\n1,x\n2,y\n");
    CsvReadOpts o;
    {
        CapturedOutput c;
        ASSERT_EQ(csv_read(good.c_str(), o), 0);
    }
    ASSERT_EQ(nvar, 2);
    ASSERT_EQ(nobs, 2);
    struct Bad {
        const char* text;
        const char* says;
    } bads[] = {{"a,b\n1,2\n3\n", "line 3 "},
                {"a,b\n\n1,\"2\n", "line 3 "},
                {"a,b\n1,\"2\"3\n", "line 2 "},
                {"", "no data"}};
    for (const Bad& t : bads) {
        writefile(bad, t.text);
        CapturedOutput c;
        EXPECT_NE(csv_read(bad.c_str(), o), 0) << t.text;
        EXPECT_NE(c.take().find(t.says), std::string::npos) << t.text;
        EXPECT_EQ(nvar, 2);
        EXPECT_EQ(nobs, 2);
        char buf[8];
        EXPECT_STREQ(skorvu_data(2, 2, buf), "y");
        EXPECT_EQ(korvu_data(1, 2), 2.0);
    }
}

TEST_F(CsvIo, RandomDoublesAndTextsComeBackExactly) {
    std::mt19937_64 g(12345);
    std::uniform_int_distribution<uint64_t> bits;
    std::uniform_int_distribution<int> ch(0, 11);
    const char alphabet[] = {'a', 'b', ',', '"', '\n', ' ', 'z', '\t', ';', '\r', 'q', '0'};
    const int n = 2000;
    // a file of random finite doubles (by their bits) and random awkward text
    std::string text = "x,s\n";
    std::vector<double> xs;
    std::vector<std::string> ss;
    for (int i = 0; i < n; ++i) {
        // first the edges: signed zero, whole numbers around the switch to
        // exponents, the smallest denormal, the largest storable double
        const double edges[] = {-0.0,
                                0.0,
                                100000,
                                -100000,
                                1e15,
                                9999999999999998,
                                1e16,
                                -1e16,
                                9007199254740994,
                                0x1p-1074,
                                0x1.fffffffffffffp1022};
        double x;
        if (i < static_cast<int>(std::size(edges))) {
            x = edges[i];
        } else {
            do {
                uint64_t u = bits(g);
                std::memcpy(&x, &u, 8);
            } while (!std::isfinite(x) || std::fabs(x) > 0x1.fffffffffffffp1022);
        }
        xs.push_back(x);
        char b[40];
        std::snprintf(b, sizeof b, "%.17g", x);
        std::string s = "w";
        for (int k = 0; k < 1 + i % 20; ++k) s += alphabet[ch(g)];
        ss.push_back(s);
        std::string q = "\"";
        for (char c : s) q += c == '"' ? std::string("\"\"") : std::string(1, c);
        text += std::string(b) + "," + q + "\"\n";
    }
    const std::string f1 = path("r1.csv"), f2 = path("r2.csv");
    writefile(f1, text);
    CsvReadOpts o;
    {
        CapturedOutput c;
        ASSERT_EQ(csv_read(f1.c_str(), o), 0);
    }
    ASSERT_EQ(nobs, n);
    ASSERT_EQ(typlist[0], KV_DOUBLE);
    std::vector<char> buf(300);
    for (int i = 0; i < n; ++i) {
        ASSERT_EQ(korvu_data(1, i + 1), xs[i]) << i;
        ASSERT_EQ(std::signbit(korvu_data(1, i + 1)), std::signbit(xs[i])) << i;
        ASSERT_EQ(std::string(skorvu_data(2, i + 1, buf.data())), ss[i]) << i;
    }
    // written and read again: the same bits and texts
    CsvWriteOpts w;
    nobs1 = 1, nobs2 = nobs, ifclause = 0;
    ASSERT_EQ(csv_write(f2.c_str(), {1, 2}, w), 0);
    {
        CapturedOutput c;
        ASSERT_EQ(csv_read(f2.c_str(), o), 0);
    }
    ASSERT_EQ(nobs, n);
    for (int i = 0; i < n; ++i) {
        ASSERT_EQ(korvu_data(1, i + 1), xs[i]) << i;
        ASSERT_EQ(std::signbit(korvu_data(1, i + 1)), std::signbit(xs[i])) << i;
        ASSERT_EQ(std::string(skorvu_data(2, i + 1, buf.data())), ss[i]) << i;
    }
}
