// The dictionary: adding, finding, the hit-count rule, renaming, retyping,
// wiping a type, the temporary file, and the message when memory runs out.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "kernel/dict/dict.h"

using namespace korvu;

namespace {

struct Dict : ::testing::Test {
    void SetUp() override { dminit(); }
    void TearDown() override {
        EXPECT_TRUE(dmcheck());
        dmshutdown();
        dmsetalloc(nullptr);
        dm_rm_hook = nullptr;
    }
};

void* addstr(const char* name, int type, const char* text) {
    size_t n = std::strlen(text) + 1;
    return dmsave(name, type, static_cast<int>(n), text, n);
}

} // namespace

TEST_F(Dict, HeaderIsNinetySixBytesBeforeTheValue) {
    void* v = dmadd("x", 2, 7, 10);
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(reinterpret_cast<char*>(v) - reinterpret_cast<char*>(dmhdr(v)), 96);
    EXPECT_STREQ(dmname(v), "x");
    EXPECT_EQ(dmtype(v), 2);
    EXPECT_EQ(dmtag(v), 7);
    EXPECT_EQ(dmsize(v), 10u);
    // The value is aligned for doubles.
    EXPECT_EQ(reinterpret_cast<uintptr_t>(v) % 8, 0u);
}

TEST_F(Dict, HashIsTimesThirtyOnePlusByte) {
    // "ab" = 97 * 31 + 98 = 3105; the empty name hashes to 0.
    EXPECT_EQ(dmhash("ab"), 3105u);
    EXPECT_EQ(dmhash(""), 0u);
    // Wraps in 32 bits: computed by hand in 64 bits and reduced.
    uint64_t h = 0;
    for (const char* p = "a_rather_long_name_of_32_chars__"; *p; ++p)
        h = (h * 31 + static_cast<unsigned char>(*p)) & 0xffffffffu;
    EXPECT_EQ(dmhash("a_rather_long_name_of_32_chars__"), static_cast<uint32_t>(h));
}

TEST_F(Dict, AddFindAndUse) {
    addstr("alpha", 2, "hello");
    int tag = 0;
    char* v = static_cast<char*>(dmfind("alpha", 2, &tag));
    ASSERT_NE(v, nullptr);
    EXPECT_STREQ(v, "hello");
    EXPECT_EQ(tag, 6);
    EXPECT_EQ(dmfind("alpha", 15, nullptr), nullptr);
    EXPECT_EQ(dmfind("alph", 2, nullptr), nullptr);
    EXPECT_EQ(dmfind0("alpha", 2), v);

    char buf[16] = "xxxxxxxxxxxxxxx";
    EXPECT_EQ(dmuse("alpha", 2, &tag, buf, -1), v); // tag bytes
    EXPECT_STREQ(buf, "hello");
    std::memset(buf, 'x', 15);
    dmuse("alpha", 2, nullptr, buf, 3);
    EXPECT_EQ(std::string(buf, 4), "helx");
    EXPECT_EQ(dmuse("nothere", 2, nullptr, buf, -1), nullptr);
}

TEST_F(Dict, SameNameInTwoTypesIsIndependent) {
    void* g = addstr("x", 2, "global");
    void* s = addstr("x", 15, "scalar");
    EXPECT_EQ(dmfind("x", 2, nullptr), g);
    EXPECT_EQ(dmfind("x", 15, nullptr), s);
    // The newest is at the front of the bucket.
    EXPECT_EQ(dmfindany("x"), s);
    EXPECT_EQ(dmnamenext(s, -1), g);
    EXPECT_EQ(dmnamenext(s, 2), g);
    EXPECT_EQ(dmnamenext(s, 15), nullptr);
    dmrm(s);
    EXPECT_EQ(dmfind("x", 15, nullptr), nullptr);
    EXPECT_STREQ(static_cast<char*>(dmfind("x", 2, nullptr)), "global");
}

TEST_F(Dict, ZeroSizeValueHasAPointer) {
    void* v = dmadd("empty", 2, 0, 0);
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(dmfind("empty", 2, nullptr), v);
    EXPECT_EQ(dmsize(v), 0u);
}

TEST_F(Dict, ReaddKeepsOrRenewsTheBlock) {
    void* v = dmadd("m", 2, 1, 10000);
    // 10000 - min(max(8000/2 capped at 1024), 128) = 8976 > 8000: a new block.
    void* w = dmreadd("m", 2, 2, 8000);
    ASSERT_NE(w, nullptr);
    EXPECT_EQ(dmallocsize(w), 8000u);
    EXPECT_EQ(dmcount(2), 1);
    // 9000 on a 10000 block stays.
    dmrm(w);
    v = dmadd("m", 2, 1, 10000);
    w = dmreadd("m", 2, 5, 9000);
    EXPECT_EQ(w, v);
    EXPECT_EQ(dmsize(w), 9000u);
    EXPECT_EQ(dmallocsize(w), 10000u);
    EXPECT_EQ(dmtag(w), 5);
    // Growing never keeps the block.
    void* x = dmreadd("m", 2, 5, 10001);
    EXPECT_EQ(dmallocsize(x), 10001u);
    // Small blocks: 128 bytes of slack at least (200 - 128 = 72).
    void* y = dmreadd("m", 2, 1, 200);
    EXPECT_EQ(dmreadd("m", 2, 1, 72), y);
    EXPECT_NE(dmreadd("m", 2, 1, 71), nullptr);
    EXPECT_EQ(dmallocsize(dmfind0("m", 2)), 71u);
    // Absent: simply added.
    EXPECT_NE(dmreadd("new", 2, 1, 5), nullptr);
    EXPECT_EQ(dmcount(2), 2);
}

TEST_F(Dict, EleventhFindMovesToFront) {
    void* a = addstr("k", 2, "a");
    // Find another name in the same bucket: build one with an equal hash mod 20009.
    // Names "k" and any whose hash differs by a multiple of 20009 share a bucket.
    std::string other;
    for (int i = 0; i < 1000000 && other.empty(); ++i) {
        std::string c = "n" + std::to_string(i);
        if (dmhash(c.c_str()) % dm_nbucket == dmhash("k") % dm_nbucket) other = c;
    }
    ASSERT_FALSE(other.empty());
    addstr(other.c_str(), 2, "b");
    DmItem* ha = dmhdr(a);
    ASSERT_NE(ha->nprev, nullptr); // not first: the other one is newer
    for (int i = 0; i < 10; ++i) dmfind("k", 2, nullptr);
    EXPECT_NE(ha->nprev, nullptr); // ten finds: still behind
    dmfind0("k", 2);               // no side effects
    EXPECT_NE(ha->nprev, nullptr);
    dmfind("k", 2, nullptr); // the eleventh
    EXPECT_EQ(ha->nprev, nullptr);
    EXPECT_EQ(dmfindany("k"), a);
}

TEST_F(Dict, RenameRehashes) {
    void* v = addstr("before", 2, "val");
    dmrename(v, "after");
    EXPECT_EQ(dmfind("before", 2, nullptr), nullptr);
    EXPECT_EQ(dmfind("after", 2, nullptr), v);
    EXPECT_STREQ(dmname(v), "after");
    EXPECT_EQ(dmhdr(v)->hash, dmhash("after"));
}

TEST_F(Dict, RetypeAndRetypeAll) {
    void* a = addstr("a", 3100, "1");
    void* b = addstr("b", 3100, "2");
    void* c = addstr("c", 21, "3");
    dmretype(a, 15);
    EXPECT_EQ(dmfind("a", 3100, nullptr), nullptr);
    EXPECT_EQ(dmfind("a", 15, nullptr), a);
    EXPECT_EQ(dmcount(3100), 1);

    addstr("d", 3100, "4");
    dmretypeall(3100, 21);
    EXPECT_EQ(dmcount(3100), 0);
    EXPECT_EQ(dmcount(21), 3);
    EXPECT_EQ(dmfind("b", 21, nullptr), b);
    EXPECT_EQ(dmfind("d", 21, nullptr), dmfind0("d", 21));
    EXPECT_EQ(dmfind("c", 21, nullptr), c);
    // The moved list stands in front, in its own order.
    char name[40];
    void* v = dmnext(nullptr, name, 21, nullptr);
    EXPECT_STREQ(name, "d");
    v = dmnext(v, name, 21, nullptr);
    EXPECT_STREQ(name, "b");
    v = dmnext(v, name, 21, nullptr);
    EXPECT_STREQ(name, "c");
    EXPECT_EQ(dmnext(v, name, 21, nullptr), nullptr);
    dmretypeall(3100, 21); // empty: nothing happens
    EXPECT_EQ(dmcount(21), 3);
}

TEST_F(Dict, ZapByType) {
    for (int i = 0; i < 100; ++i) addstr(("l" + std::to_string(i)).c_str(), 3060, "x");
    for (int i = 0; i < 50; ++i) addstr(("l" + std::to_string(i)).c_str(), 2, "y");
    dmzap(3060);
    EXPECT_EQ(dmcount(3060), 0);
    EXPECT_EQ(dmcount(2), 50);
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(dmfind(("l" + std::to_string(i)).c_str(), 3060, nullptr), nullptr);
    EXPECT_STREQ(static_cast<char*>(dmfind("l7", 2, nullptr)), "y");
    dmzap(3061); // empty
    dmzap(-1);   // out of range
    EXPECT_EQ(dmcount(-1), 50);
}

TEST_F(Dict, WalkAllTypesInAscendingOrder) {
    addstr("z", 30, "1");
    addstr("y", 2, "2");
    addstr("x", 2, "3");
    addstr("w", 3059, "4");
    std::vector<std::pair<int, std::string>> seen;
    char name[40];
    int type;
    for (void* v = dmnext(nullptr, name, -1, &type); v; v = dmnext(v, name, -1, &type))
        seen.emplace_back(type, name);
    std::vector<std::pair<int, std::string>> want = {{2, "x"}, {2, "y"}, {30, "z"}, {3059, "w"}};
    EXPECT_EQ(seen, want);
}

TEST_F(Dict, CopyAndMemory) {
    addstr("src", 2, "payload");
    void* d = dmcp("dst", 21, "src", 2, 0);
    ASSERT_NE(d, nullptr);
    EXPECT_STREQ(static_cast<char*>(d), "payload");
    EXPECT_EQ(dmtag(d), 8);
    // A missing source leaves the target unless asked to remove it.
    EXPECT_EQ(dmcp("dst", 21, "none", 2, 0), nullptr);
    EXPECT_NE(dmfind0("dst", 21), nullptr);
    EXPECT_EQ(dmcp("dst", 21, "none", 2, 1), nullptr);
    EXPECT_EQ(dmfind0("dst", 21), nullptr);

    uint64_t a, u;
    dmreadd("big", 2, 0, 1000);
    dmreadd("big", 2, 0, 900); // kept: 1000 allocated, 900 used
    dmmemory(&a, &u);
    EXPECT_EQ(a, 8u + 1000u);
    EXPECT_EQ(u, 8u + 900u);
    dmmemory(nullptr, &u);
    dmmemory(&a, nullptr);
}

TEST_F(Dict, RemovalHookSeesRunningProgram) {
    static void* running = nullptr;
    void* p = dmadd("myprog", 7, 0, 100);
    running = p;
    dm_rm_hook = [](void* item) {
        if (item == running) running = nullptr;
    };
    dmrm(nullptr);
    EXPECT_EQ(running, p);
    dmrm(p);
    EXPECT_EQ(running, nullptr);
    running = dmadd("again", 7, 0, 10);
    dmzap(7);
    EXPECT_EQ(running, nullptr);
}

TEST_F(Dict, ManyItemsNameAndTypeLookup) {
    // Tens of thousands of names over several types; each is found in its type
    // and not in the others.
    const int n = 40000;
    char name[40];
    for (int i = 0; i < n; ++i) {
        std::snprintf(name, sizeof name, "item%d", i);
        int type = 3059 + i % 5;
        int val = i;
        ASSERT_NE(dmsave(name, type, i, &val, sizeof val), nullptr);
    }
    EXPECT_EQ(dmcount(-1), n);
    for (int round = 0; round < 3; ++round)
        for (int i = 0; i < n; ++i) {
            std::snprintf(name, sizeof name, "item%d", i);
            int tag = -1;
            int* v = static_cast<int*>(dmfind(name, 3059 + i % 5, &tag));
            ASSERT_NE(v, nullptr);
            ASSERT_EQ(*v, i);
            ASSERT_EQ(tag, i);
            ASSERT_EQ(dmfind(name, 3059 + (i + 1) % 5, nullptr), nullptr);
        }
    EXPECT_TRUE(dmcheck());
    dmzap(3061);
    EXPECT_EQ(dmcount(-1), n - n / 5);
    EXPECT_EQ(dmfind("item2", 3061, nullptr), nullptr);
    EXPECT_NE(dmfind("item3", 3062, nullptr), nullptr);
}

TEST_F(Dict, TemporaryFileRoundTrip) {
    std::map<std::pair<int, std::string>, std::string> want;
    char name[40];
    for (int i = 0; i < 3000; ++i) {
        std::snprintf(name, sizeof name, "v%d", i);
        int type = i % 3 == 0 ? 2 : i % 3 == 1 ? 3059 : 9;
        std::string val(static_cast<size_t>(i % 50), static_cast<char>('a' + i % 26));
        if (i == 7) val.assign(30000, 'q'); // more than one 12000-byte step
        dmsave(name, type, 100 + i, val.data(), val.size());
        want[{type, name}] = val;
    }
    dmreadd("v0", 2, 100, 0); // used size below allocated: only used bytes go out

    char fn[] = "/tmp/korvu_dict_testXXXXXX";
    int fd = mkstemp(fn);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(dmwrite(fd), 0);
    close(fd);
    dmshutdown();
    EXPECT_EQ(dmcount(-1), 0);
    dminit();
    fd = open(fn, O_RDONLY);
    ASSERT_EQ(dmread(fd), 0);
    close(fd);
    unlink(fn);

    EXPECT_EQ(dmcount(-1), 3000);
    want[{2, "v0"}] = "";
    for (auto& [k, val] : want) {
        int tag = -1;
        void* v = dmfind(k.second.c_str(), k.first, &tag);
        ASSERT_NE(v, nullptr) << k.second;
        ASSERT_EQ(dmsize(v), val.size());
        ASSERT_EQ(std::string(static_cast<char*>(v), val.size()), val);
        ASSERT_EQ(tag, 100 + std::stoi(k.second.substr(1)));
    }
}

TEST_F(Dict, TemporaryFileShortReadAndFailedAdd) {
    dmsave("a", 2, 2, "x", 2);
    dmsave("b", 2, 2, "y", 2);
    char fn[] = "/tmp/korvu_dict_testXXXXXX";
    int fd = mkstemp(fn);
    ASSERT_EQ(dmwrite(fd), 0);
    off_t size = lseek(fd, 0, SEEK_END);
    EXPECT_EQ(size, 3 * 96 + 2 + 2);
    // Cut off the end record: a short read.
    ASSERT_EQ(ftruncate(fd, size - 10), 0);
    close(fd);
    dmshutdown();
    fd = open(fn, O_RDONLY);
    EXPECT_EQ(dmread(fd), 1);
    close(fd);
    dmshutdown();

    // A failing allocation skips the item and reads on.
    dmsave("a", 2, 2, "x", 2);
    dmsave("b", 2, 2, "y", 2);
    fd = open(fn, O_WRONLY | O_TRUNC);
    ASSERT_EQ(dmwrite(fd), 0);
    close(fd);
    dmshutdown();
    static int calls;
    calls = 0;
    dmsetalloc([](size_t n) -> void* { return ++calls == 1 ? nullptr : std::malloc(n); });
    fd = open(fn, O_RDONLY);
    EXPECT_EQ(dmread(fd), 2);
    close(fd);
    unlink(fn);
    EXPECT_EQ(dmcount(-1), 1);
}

TEST_F(Dict, TemporaryFileSaveAndRestore) {
    dmsave("keep", 2, 5, "kept", 5);
    char fn[1200];
    ASSERT_EQ(dmtmpsave(fn, sizeof fn), 0);
    EXPECT_EQ(dmcount(-1), 0);
    EXPECT_EQ(access(fn, F_OK), 0);
    ASSERT_EQ(dmtmprestore(fn), 0);
    EXPECT_STREQ(static_cast<char*>(dmfind("keep", 2, nullptr)), "kept");
    EXPECT_NE(access(fn, F_OK), 0); // removed
    EXPECT_EQ(dmtmprestore(fn), 1); // vanished
}

TEST_F(Dict, OutOfMemoryReturnsNull) {
    dmsetalloc([](size_t) -> void* { return nullptr; });
    EXPECT_EQ(dmadd("x", 2, 0, 10), nullptr);
    EXPECT_EQ(dmsave("_x", 3059, 0, "ab", 3), nullptr);
    EXPECT_EQ(dmreadd("x", 20, 0, 10), nullptr);
    EXPECT_EQ(dmcount(-1), 0);
    dmsetalloc(nullptr);
    EXPECT_NE(dmadd("x", 2, 0, 10), nullptr);
}
