// The class object store: arrays of blocks, strings in place and by
// reference, the hash of top-level names, sharing until written, and counts
// that bring the store back to empty.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "class/clsstore.h"
#include "data/area/missing.h"
#include "kernel/dict/dict.h"

using namespace korvu;

namespace {

struct ClassStore : ::testing::Test {
    void SetUp() override {
        dminit();
        cls_init();
    }
    void TearDown() override {
        cls_discard();
        EXPECT_EQ(cls_nnodes, 0);
        EXPECT_EQ(cls_nbytes, 0);
        dmshutdown();
    }
};

const ClsArray& arr(clskey a) {
    return *reinterpret_cast<const ClsArray*>(cls_ptr(a, nullptr, nullptr, nullptr));
}

clskey num(double x) {
    clskey k;
    EXPECT_EQ(cls_newnumber(x, &k), 0);
    return k;
}

TEST_F(ClassStore, ArrayBlocksGrowByLevels) {
    clskey a;
    ASSERT_EQ(cls_newarray(&a), 0);
    EXPECT_EQ(arr(a).last, -1);
    EXPECT_EQ(cls_array_valuekey(a, -1), nullkey);
    EXPECT_EQ(cls_array_valuekey(a, 0), nullkey);
    // element 0 of an empty array makes one block of 10
    clskey one = num(1);
    ASSERT_EQ(cls_add_to_array(a, 0, one), 0);
    EXPECT_EQ(arr(a).capacity, 10);
    EXPECT_EQ(cls_nnodes, 3); // array, block, number
    // element 12 makes a second level: a new top holding the old block first
    clskey two = num(2);
    ASSERT_EQ(cls_add_to_array(a, 12, two), 0);
    EXPECT_EQ(arr(a).capacity, 100);
    EXPECT_EQ(arr(a).last, 12);
    EXPECT_EQ(cls_nnodes, 6); // and a new top and the block of 10..19
    EXPECT_EQ(cls_array_valuekey(a, 0), one);
    EXPECT_EQ(cls_array_valuekey(a, 12), two);
    // holes and indexes past the last element
    EXPECT_EQ(cls_array_valuekey(a, 5), nullkey);
    EXPECT_EQ(cls_array_valuekey(a, 13), nullkey);
    EXPECT_EQ(cls_array_valuekey(a, 100), nullkey);
    EXPECT_EQ(cls_array_nels(a), 2);
    // element 1000 needs a fourth level: capacity 10 * 10 * 10 * 10
    ASSERT_EQ(cls_add_to_array(a, 1000, num(3)), 0);
    EXPECT_EQ(arr(a).capacity, 10000);
    EXPECT_EQ(cls_get_num(cls_array_valuekey(a, 12)), 2);
    EXPECT_EQ(cls_get_num(cls_array_valuekey(a, 1000)), 3);
    // dropping the last element settles on the one before it
    ASSERT_EQ(cls_array_delete_el(a, 1000), 0);
    EXPECT_EQ(arr(a).last, 12);
    ASSERT_EQ(cls_array_delete_el(a, 12), 0);
    EXPECT_EQ(arr(a).last, 0);
    ASSERT_EQ(cls_array_pop(a), 0);
    EXPECT_EQ(arr(a).last, -1);
    EXPECT_EQ(cls_unlink(a), 0);
    EXPECT_EQ(cls_nnodes, 0);
}

TEST_F(ClassStore, StringsShorterInPlaceLongerBehindTheSameKey) {
    clskey g;
    ASSERT_EQ(cls_make_global("s", &g), 0);
    clskey* holder = reinterpret_cast<clskey*>(cls_ptr(g, nullptr, nullptr, nullptr));
    ASSERT_EQ(cls_hold_str(holder, "abcdefghij"), 0); // 11 bytes: a 16-byte node
    clskey k = *holder;
    size_t size;
    cls_ptr(k, nullptr, &size, nullptr);
    EXPECT_EQ(size, 16u);
    ASSERT_EQ(cls_set_str(k, "xyz"), 0);
    EXPECT_EQ(*holder, k);
    EXPECT_STREQ(cls_get_str(k), "xyz");
    // a longer text: the holder keeps its key, which now leads to the text
    const char* longer = "a string that is much longer than sixteen bytes";
    ASSERT_EQ(cls_set_str(k, longer), 0);
    EXPECT_EQ(*holder, k);
    EXPECT_STREQ(cls_get_str(k), longer);
    EXPECT_STREQ(cls_get_str(cls_keyofnm("s")), longer);
    // the wrong type
    EXPECT_EQ(cls_set_num(k, 1), 4005);
    EXPECT_EQ(cls_get_num(k), misval);
    EXPECT_EQ(cls_get_str(num(1)), nullptr);
}

TEST_F(ClassStore, NamesOfEqualHashShareASlot) {
    // "aaa" and "iho" both hash to 1293 (worked out separately: h = byte + 31 h)
    EXPECT_EQ(cls_hash("aaa"), 1293u);
    EXPECT_EQ(cls_hash("iho"), 1293u);
    clskey a, b;
    ASSERT_EQ(cls_make_global("aaa", &a), 0);
    ASSERT_EQ(cls_make_global("iho", &b), 0);
    EXPECT_EQ(cls_hslot(1293), b); // the newer heads the chain
    EXPECT_EQ(cls_find_global("aaa"), a);
    EXPECT_EQ(cls_find_global("iho"), b);
    ASSERT_EQ(cls_dynrem(b), 0);
    EXPECT_EQ(cls_hslot(1293), a);
    EXPECT_EQ(cls_find_global("aaa"), a);
    EXPECT_EQ(cls_find_global("iho"), nullkey);
}

TEST_F(ClassStore, UnlinkOfNullkeyDoesNothing) {
    clskey k = num(4);
    int64_t before = cls_nnodes;
    EXPECT_EQ(cls_unlink(nullkey), 0);
    EXPECT_EQ(cls_refct(nullkey), 0);
    cls_incref(nullkey);
    EXPECT_EQ(cls_nnodes, before);
    EXPECT_EQ(cls_refct(k), 1);
}

TEST_F(ClassStore, InstancesShareValuesUntilWritten) {
    clskey ct;
    ASSERT_EQ(cls_newclasstype("pt", &ct), 0);
    ASSERT_EQ(cls_addattrib(ct, num(5), "x", 0), 0);
    ASSERT_EQ(cls_addattrib(ct, num(7), "y", 0), 0);
    ASSERT_EQ(cls_addattrib(ct, num(0), "n", 1), 0);
    EXPECT_EQ(cls_addattrib(ct, num(1), "x", 0), 4017);
    int64_t base = cls_nnodes;
    clskey i1, i2;
    ASSERT_EQ(cls_newinstance(ct, &i1), 0);
    ASSERT_EQ(cls_newinstance(ct, &i2), 0);
    clskey* x1 = cls_find_name_in_class("x", i1);
    clskey* x2 = cls_find_name_in_class("x", i2);
    ASSERT_TRUE(x1 && x2);
    EXPECT_EQ(*x1, *x2); // one node of 5 for the class and both instances
    EXPECT_EQ(cls_refct(*x1), 3);
    ASSERT_EQ(cls_hold_num(x1, 6), 0);
    EXPECT_NE(*x1, *x2);
    EXPECT_EQ(cls_get_num(*x1), 6);
    EXPECT_EQ(cls_get_num(*x2), 5);
    // written again, an unshared value stays where it is
    clskey before = *x1;
    ASSERT_EQ(cls_hold_num(x1, 8), 0);
    EXPECT_EQ(*x1, before);
    // the classwide member is one value for all
    clskey* n1 = cls_find_name_in_class("n", i1);
    clskey* n2 = cls_find_name_in_class("n", i2);
    EXPECT_EQ(n1, n2);
    EXPECT_EQ(cls_find_name_in_class("z", i1), nullptr);
    // a dynamic member belongs to one instance
    ASSERT_EQ(cls_add_dynamic_attrib(i1, num(3), "z"), 0);
    EXPECT_EQ(cls_add_dynamic_attrib(i1, num(3), "z"), 4017);
    EXPECT_EQ(cls_add_dynamic_attrib(i1, num(3), "y"), 4017);
    EXPECT_EQ(cls_get_num(*cls_find_name_in_class("z", i1)), 3);
    EXPECT_EQ(cls_find_name_in_class("z", i2), nullptr);
    // a deep copy owns its values; releasing all comes back to the class alone
    clskey c;
    ASSERT_EQ(cls_newvalue(&c, i1, 0), 0);
    EXPECT_NE(*cls_find_name_in_class("x", c), *x1);
    EXPECT_EQ(cls_get_num(*cls_find_name_in_class("x", c)), 8);
    EXPECT_EQ(cls_get_num(*cls_find_name_in_class("z", c)), 3);
    cls_unlink(c);
    cls_unlink(i1);
    cls_unlink(i2);
    EXPECT_EQ(cls_nnodes, base);
}

TEST_F(ClassStore, SubclassesTakeTheMembersOfTheirSuperclass) {
    clskey base, sub;
    ASSERT_EQ(cls_newclasstype("base", &base), 0);
    ASSERT_EQ(cls_addattrib(base, num(1), "a", 0), 0);
    ASSERT_EQ(cls_addattrib(base, num(2), "b", 0), 0);
    ASSERT_EQ(cls_newclasstype("sub", &sub), 0);
    ASSERT_EQ(cls_addattrib(sub, num(20), "b", 0), 0); // overrides base's b
    ASSERT_EQ(cls_addsuper(sub, base), 0);
    EXPECT_TRUE(cls_type_is_of_type(sub, "base"));
    EXPECT_FALSE(cls_type_is_of_type(base, "sub"));
    clskey i;
    ASSERT_EQ(cls_newinstance(sub, &i), 0);
    EXPECT_EQ(cls_get_num(*cls_find_name_in_class("a", i)), 1);
    EXPECT_EQ(cls_get_num(*cls_find_name_in_class("b", i)), 20);
    EXPECT_STREQ(cls_classnm(i), "sub");
    cls_unlink(i);
}

// 100,000 instances made and released, each with a member that is an
// instance, an array with holes and a string written: the store ends as it began.
TEST_F(ClassStore, ManyObjectsLeaveTheStoreAsItWas) {
    clskey inner, outer;
    ASSERT_EQ(cls_newclasstype("inner", &inner), 0);
    ASSERT_EQ(cls_addattrib(inner, num(1), "v", 0), 0);
    ASSERT_EQ(cls_newclasstype("outer", &outer), 0);
    clskey proto;
    ASSERT_EQ(cls_newinstance(inner, &proto), 0);
    ASSERT_EQ(cls_addattrib(outer, proto, "in", 0), 0);
    clskey a, s;
    ASSERT_EQ(cls_newarray(&a), 0);
    ASSERT_EQ(cls_addattrib(outer, a, "list", 0), 0);
    ASSERT_EQ(cls_newstring("", &s), 0);
    ASSERT_EQ(cls_addattrib(outer, s, "name", 0), 0);
    int64_t base = cls_nnodes, bytes = cls_nbytes;
    for (int i = 0; i < 100000; i++) {
        clskey o;
        ASSERT_EQ(cls_newinstance(outer, &o), 0);
        clskey* in = cls_find_name_in_class("in", o);
        ASSERT_EQ(cls_hold_num(cls_find_name_in_class("v", cls_drill(*in)), i), 0);
        clskey list = cls_drill(*cls_find_name_in_class("list", o));
        ASSERT_EQ(cls_add_to_array(list, i % 37, num(i)), 0);
        ASSERT_EQ(cls_hold_str(cls_find_name_in_class("name", o), "a name of some length"), 0);
        if (i % 2) {
            clskey c;
            ASSERT_EQ(cls_newvalue(&c, o, 0), 0);
            cls_unlink(c);
        }
        cls_unlink(o);
    }
    EXPECT_EQ(cls_nnodes, base);
    EXPECT_EQ(cls_nbytes, bytes);
}

TEST_F(ClassStore, KeysTravelAsText) {
    clskey k = num(1);
    char buf[48];
    key_to_ref(k, buf, sizeof buf);
    char want[48];
    snprintf(want, sizeof want, "__key(%llx)", static_cast<unsigned long long>(k));
    EXPECT_STREQ(buf, want);
    EXPECT_TRUE(cls_valid_key(k));
    const char* end = nullptr;
    EXPECT_EQ(ref_to_key(buf, &end), k);
    EXPECT_EQ(*end, 0);
    key_to_ref_array(k, 3, buf, sizeof buf);
    EXPECT_EQ(std::string(buf), std::string(want) + "[3]");
    cls_unlink(k);
    EXPECT_FALSE(cls_valid_key(k)); // a freed key is no longer registered
    EXPECT_EQ(ref_to_key("__key(zz)", nullptr), nullkey);
}

} // namespace
