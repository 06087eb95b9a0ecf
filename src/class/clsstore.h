// The class object store: every object, number, string, array, class type and
// class instance is a node with a key (its address), a reference count and a
// type. Named top-level nodes live in a hash table of 7919 slots; all other
// nodes are threaded on one doubly linked list. Values are shared between
// clones until written (copy on write); references (type 5 nodes) alias a
// value so that every holder of the reference sees a change.
#pragma once
#include <cstddef>
#include <cstdint>

namespace korvu {

using clskey = uint64_t;
inline constexpr clskey nullkey = 0;

// Node types.
enum : int {
    CLS_DOUBLE = 1,
    CLS_STRING = 2,
    CLS_CLASS = 3,
    CLS_CODE = 4,
    CLS_KEY = 5,
    CLS_ARRAY = 6,
    CLS_CLASSTYPE = 7,
    CLS_ATTRIBUTE = 8,
    CLS_CONTEXT = 9,
    CLS_ARRAYNODE = 10,
    CLS_ENCODING = 11,
    CLS_TMPSTRING = 12,
    CLS_BLOB = 13,
};

// Node header; the 32-byte name (when flagged) and then the data follow it.
struct ClsNode {
    ClsNode* fwd;
    ClsNode* back;
    uint32_t flags; // bit 31 named, 30 in the hash, 29 exported, 25-28 type, 0-24 size
    int32_t refct;
};
inline constexpr uint32_t CLSF_NAMED = 1u << 31;
inline constexpr uint32_t CLSF_HASHED = 1u << 30;
inline constexpr uint32_t CLSF_EXPORTED = 1u << 29;
inline constexpr uint32_t CLSF_SIZEMASK = (1u << 25) - 1;
inline constexpr int CLS_NAMELEN = 32;
inline constexpr int CLS_NSLOTS = 7919;
inline constexpr int CLS_BLOCK = 10;

struct ClsInstance {
    int32_t num_attribs;
    int32_t num_dynamics;
    clskey instancemv;
    clskey dynamicmv;
    clskey classtype;
};
struct ClsType {
    int32_t num_inherits;
    int32_t num_class_attribs;
    clskey superclass;
    clskey classmv;
    clskey prototype;
    int32_t version; // vernum of the definition
    int32_t pad;
};
struct ClsArray {
    int32_t blocksize;
    int32_t capacity;
    int32_t last; // index of the last element, -1 when empty
    int32_t pad;
    clskey top;
};

// --- globals of the store ----------------------------------------------------
extern ClsNode* tnode; // the node just reached by cls_ptr
extern clskey active_class_key, active_clstype_key;
extern clskey target_clstype_key;
extern clskey oncopy_src_key;
extern clskey reference_key;
extern int32_t reference_dex;
extern int32_t cls_rc;
extern int32_t cls_loc;
extern int32_t depth;        // nesting of cloning
extern int64_t cls_nnodes;   // nodes alive, for the leak checks
extern int64_t cls_nbytes;   // their data bytes
extern int32_t cls_discards; // counts `cls_discard`: keys held across it are gone

// Runs a member program of an instance (set by the language side; null: none).
// Returns the code; `found` out is 0 when the class has no such program.
extern int (*cls_member_hook)(clskey inst, const char* pgm, const char* args, int* found);

// --- nodes ---------------------------------------------------------------------
int cls_init();
void cls_dyninit();
int cls_discard();
int cls_store(int type, const char* name, size_t size, const void* data, clskey* out);
inline ClsNode* cls_node(clskey k) {
    return reinterpret_cast<ClsNode*>(k);
}
inline int cls_ntype(const ClsNode* n) {
    return static_cast<int>((n->flags >> 25) & 15);
}
inline size_t cls_nsize(const ClsNode* n) {
    return n->flags & CLSF_SIZEMASK;
}
inline char* cls_ndata(ClsNode* n) {
    return reinterpret_cast<char*>(n + 1) + ((n->flags & CLSF_NAMED) ? CLS_NAMELEN : 0);
}
inline const char* cls_nname(const ClsNode* n) {
    return (n->flags & CLSF_NAMED) ? reinterpret_cast<const char*>(n + 1) : "";
}
void* cls_ptr(clskey key, int* typeout, size_t* sizeout, const char** nameout);
void* cls_ptr_drill(clskey key, int* typeout, size_t* sizeout, const char** nameout);
clskey cls_drill(clskey key); // follows references to the value
clskey cls_keyof(const void* data);
const char* cls_map9_type(int type);
int cls_parsetype(const char* word, int report);
bool cls_valid_key(clskey key);
char* key_to_ref(clskey key, char* dst, size_t n);
char* key_to_ref_array(clskey key, int index, char* dst, size_t n);
clskey ref_to_key(const char* text, const char** end); // nullkey when not a key form

// --- counts ----------------------------------------------------------------------
void cls_incref(clskey k);
void cls_decref(clskey k);
void cls_setref(clskey k, int32_t n);
int32_t cls_refct(clskey k);
int cls_unlink(clskey k);
int cls_unlink0(clskey k);

// --- typed creators -------------------------------------------------------------
int cls_newnumber(double x, clskey* out);
int cls_newstring(const char* s, clskey* out);
int cls_newblob(const void* p, size_t n, clskey* out);
int cls_newarray(clskey* out);
int cls_newref(clskey target, const char* name, clskey* out); // takes over one count
int cls_newclasstype(const char* name, clskey* out);
int cls_newinstance(clskey classtype, clskey* out); // cloned from the prototype

// --- arrays ------------------------------------------------------------------------
// The slot of element i (from 0); with grow, the array grows to hold it.
clskey* cls_array_slot(clskey arr, int32_t i, bool grow);
clskey cls_array_valuekey(clskey arr, int32_t i);
int32_t cls_arr_last(clskey arr);
int cls_add_to_array(clskey arr, int32_t i, clskey value); // takes over one count
int cls_array_push(clskey arr, clskey value);
int cls_array_pop(clskey arr);
int cls_array_delete_el(clskey arr, int32_t i);
int cls_array_clear(clskey arr);
int32_t cls_array_nels(clskey arr); // elements that are not holes
int32_t cls_find_str_in_array(clskey arr, const char* s);
int32_t cls_find_name_in_array(clskey arr, const char* name);

// --- values -------------------------------------------------------------------------
// Writes into a holder (a slot that keeps a key): in place when the value is
// not shared and fits, otherwise by a new node in the holder.
int cls_hold_num(clskey* holder, double x);
int cls_hold_str(clskey* holder, const char* s);
int cls_hold_key(clskey* holder, clskey value); // takes over one count of value
// The last holder of a chain of references.
clskey* cls_holder_drill(clskey* holder, clskey* ownerref);
int cls_newvalue(clskey* out, clskey src, int copyname);
int cls_clonevalueref(clskey* out, clskey src);
int cls_clone1_instance(clskey* out, clskey inst);

// --- classes --------------------------------------------------------------------------
clskey cls_findclasstype_loaded(const char* name);
const char* cls_classnm(clskey key); // class name of an instance or a class type
int cls_addattrib(clskey classtype, clskey value, const char* name, int classwide);
int cls_add_dynamic_attrib(clskey inst, clskey value, const char* name);
int cls_addsuper(clskey classtype, clskey super);
// Member lookup; the holder of the member's key, or null.
clskey* cls_find_name_in_class(const char* name, clskey inst);
clskey* cls_find_name_in_classtype(const char* name, clskey classtype);
bool cls_type_is_of_type(clskey classtype, const char* name);
bool cls_has_member(clskey classtype, const char* name);

// --- top-level names -------------------------------------------------------------------
uint32_t cls_hash(const char* name);
clskey cls_find_global(const char* name);           // the named node (type 5) or nullkey
int cls_make_global(const char* name, clskey* out); // a new named holder
int cls_dynrem(clskey named);                       // out of the hash, unlinked
clskey cls_hslot(int i);                            // first node of slot i

// --- the access interface of the graphics engine ---------------------------------------
clskey cls_keyofnm(const char* name);
double cls_get_num(clskey k);
const char* cls_get_str(clskey k);
const void* cls_get_blob(clskey k, size_t* n);
int cls_set_num(clskey k, double x);
int cls_set_str(clskey k, const char* s);
int cls_arr_setnum(clskey arr, int32_t i, double x);
int cls_arr_setstr(clskey arr, int32_t i, const char* s);
clskey cls_arr_key(clskey arr, int32_t i);
int32_t cls_arrindexof(clskey arr, const char* s);
int cls_arr_push_str(clskey arr, const char* s);
int32_t cls_arr_nels(clskey arr);
int cls_type(clskey k);
size_t cls_len(clskey k);

} // namespace korvu
