// The class object store: nodes, counts, arrays, cloning and member lookup.
#include "class/clsstore.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unordered_map>
#include <vector>

#include "data/area/missing.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "output/spout.h"

namespace korvu {

ClsNode* tnode = nullptr;
clskey active_class_key = nullkey, active_clstype_key = nullkey;
clskey target_clstype_key = nullkey;
clskey oncopy_src_key = nullkey;
clskey reference_key = nullkey;
int32_t reference_dex = -1;
int32_t cls_rc = 0;
int32_t cls_loc = 0;
int32_t depth = 0;
int64_t cls_nnodes = 0;
int64_t cls_nbytes = 0;
int32_t cls_discards = 0;
int (*cls_member_hook)(clskey, const char*, const char*, int*) = nullptr;

static ClsNode* hslots[CLS_NSLOTS];
static ClsNode qadnode0_store; // the sentinel of the list of unnamed nodes
static ClsNode* qadnode0 = &qadnode0_store;
static ClsNode* qadnodef = &qadnode0_store;
static bool discarding = false;

// Member index of each class type: name to position in the prototype's
// instance array (>= 0) or in the classwide array (-1 - position).
struct MemberIndex {
    std::unordered_map<std::string, int32_t> pos;
    bool built = false;
};
static std::unordered_map<clskey, MemberIndex> member_index;

uint32_t cls_hash(const char* name) {
    uint32_t h = 0;
    for (const unsigned char* p = reinterpret_cast<const unsigned char*>(name); *p; p++)
        h = *p + h * 31u;
    return h % CLS_NSLOTS;
}

// --- nodes -------------------------------------------------------------------

static void list_add(ClsNode* n) {
    n->back = qadnodef;
    n->fwd = nullptr;
    qadnodef->fwd = n;
    qadnodef = n;
}

static void list_remove(ClsNode* n) {
    if (n->back) n->back->fwd = n->fwd;
    if (n->fwd)
        n->fwd->back = n->back;
    else
        qadnodef = n->back;
}

static void hash_add(ClsNode* n) {
    uint32_t h = cls_hash(cls_nname(n));
    n->back = nullptr;
    n->fwd = hslots[h];
    if (hslots[h]) hslots[h]->back = n;
    hslots[h] = n;
    n->flags |= CLSF_HASHED;
}

static void hash_remove(ClsNode* n) {
    uint32_t h = cls_hash(cls_nname(n));
    if (n->back)
        n->back->fwd = n->fwd;
    else
        hslots[h] = n->fwd;
    if (n->fwd) n->fwd->back = n->back;
    n->flags &= ~CLSF_HASHED;
}

static int newnode(int type, const char* name, bool hashed, size_t size, const void* data,
                   clskey* out) {
    *out = nullkey;
    if (size > CLSF_SIZEMASK) return error(4052);
    size_t extra = name ? CLS_NAMELEN : 0;
    ClsNode* n = static_cast<ClsNode*>(malloc(sizeof(ClsNode) + extra + size));
    if (!n) return error(950);
    n->flags = (static_cast<uint32_t>(type) << 25) | static_cast<uint32_t>(size);
    n->refct = 1;
    if (name) {
        n->flags |= CLSF_NAMED;
        char* nm = reinterpret_cast<char*>(n + 1);
        memset(nm, 0, CLS_NAMELEN);
        strncpy(nm, name, CLS_NAMELEN - 1);
    }
    char* d = cls_ndata(n);
    if (data)
        memcpy(d, data, size);
    else
        memset(d, 0, size);
    if (name && hashed)
        hash_add(n);
    else
        list_add(n);
    cls_nnodes++;
    cls_nbytes += static_cast<int64_t>(size);
    *out = reinterpret_cast<clskey>(n);
    return 0;
}

int cls_store(int type, const char* name, size_t size, const void* data, clskey* out) {
    if (type == CLS_STRING || type == CLS_TMPSTRING) size = size < 8 ? 8 : (size + 7) & ~size_t{7};
    return newnode(type, name && *name ? name : nullptr, true, size, data, out);
}

static void freenode(ClsNode* n) {
    if (n->flags & CLSF_HASHED)
        hash_remove(n);
    else
        list_remove(n);
    if (n->flags & CLSF_EXPORTED) {
        char nm[40];
        snprintf(nm, sizeof nm, "K%lx", static_cast<unsigned long>(reinterpret_cast<clskey>(n)));
        if (void* v = dmfind0(nm, DM_CLSKEY)) dmrm(v);
    }
    if (cls_ntype(n) == CLS_CLASSTYPE) member_index.erase(reinterpret_cast<clskey>(n));
    cls_nnodes--;
    cls_nbytes -= static_cast<int64_t>(cls_nsize(n));
    if (tnode == n) tnode = nullptr;
    free(n);
}

void cls_dyninit() {
    memset(hslots, 0, sizeof hslots);
    memset(&qadnode0_store, 0, sizeof qadnode0_store);
    qadnode0 = &qadnode0_store;
    qadnodef = qadnode0;
    member_index.clear();
    cls_nnodes = cls_nbytes = 0;
}

int cls_init() {
    cls_dyninit();
    active_class_key = active_clstype_key = nullkey;
    return 0;
}

clskey cls_hslot(int i) {
    return reinterpret_cast<clskey>(hslots[i]);
}

void* cls_ptr(clskey key, int* typeout, size_t* sizeout, const char** nameout) {
    if (!key) return nullptr;
    ClsNode* n = cls_node(key);
    tnode = n;
    if (typeout) *typeout = cls_ntype(n);
    if (sizeout) *sizeout = cls_nsize(n);
    if (nameout) *nameout = cls_nname(n);
    return cls_ndata(n);
}

clskey cls_drill(clskey key) {
    while (key && cls_ntype(cls_node(key)) == CLS_KEY) {
        reference_key = key;
        reference_dex = -1;
        key = *reinterpret_cast<clskey*>(cls_ndata(cls_node(key)));
    }
    return key;
}

void* cls_ptr_drill(clskey key, int* typeout, size_t* sizeout, const char** nameout) {
    return cls_ptr(cls_drill(key), typeout, sizeout, nameout);
}

clskey cls_keyof(const void* data) {
    // a named node has its name between the header and the data; the named
    // flag stands in the header, so try the unnamed layout first
    const ClsNode* n = reinterpret_cast<const ClsNode*>(data) - 1;
    if (!(n->flags & CLSF_NAMED)) return reinterpret_cast<clskey>(n);
    const char* p = static_cast<const char*>(data) - CLS_NAMELEN;
    return reinterpret_cast<clskey>(reinterpret_cast<const ClsNode*>(p) - 1);
}

const char* cls_map9_type(int type) {
    static constexpr const char* words[] = {
        "",          "double",    "string",  "class",     "code",     "key",    "array",
        "classtype", "attribute", "context", "arraynode", "encoding", "string", "blob"};
    return type >= 0 && type <= 13 ? words[type] : "unknown";
}

int cls_parsetype(const char* word, int report) {
    if (!strcmp(word, "double") || !strcmp(word, "number")) return CLS_DOUBLE;
    if (!strcmp(word, "string")) return CLS_STRING;
    if (!strcmp(word, "class")) return CLS_CLASS;
    if (!strcmp(word, "code")) return CLS_CODE;
    if (!strcmp(word, "array")) return CLS_ARRAY;
    if (report) {
        return -errorf(198, "%s not a valid attribute type\n", word);
    }
    return 0;
}

char* key_to_ref(clskey key, char* dst, size_t n) {
    snprintf(dst, n, "__key(%lx)", static_cast<unsigned long>(key));
    if (key && !(cls_node(key)->flags & CLSF_EXPORTED)) {
        char nm[40];
        snprintf(nm, sizeof nm, "K%lx", static_cast<unsigned long>(key));
        if (dmadd(nm, DM_CLSKEY, 0, 0)) cls_node(key)->flags |= CLSF_EXPORTED;
    }
    return dst;
}

char* key_to_ref_array(clskey key, int index, char* dst, size_t n) {
    char k[40];
    key_to_ref(key, k, sizeof k);
    snprintf(dst, n, "%s[%d]", k, index);
    return dst;
}

bool cls_valid_key(clskey key) {
    if (!key) return false;
    char nm[40];
    snprintf(nm, sizeof nm, "K%lx", static_cast<unsigned long>(key));
    return dmfind0(nm, DM_CLSKEY) != nullptr;
}

clskey ref_to_key(const char* text, const char** end) {
    if (strncmp(text, "__key(", 6) != 0) return nullkey;
    char* e = nullptr;
    unsigned long v = strtoul(text + 6, &e, 16);
    if (!e || *e != ')') return nullkey;
    if (end) *end = e + 1;
    return static_cast<clskey>(v);
}

// --- counts ------------------------------------------------------------------

void cls_incref(clskey k) {
    if (k) cls_node(k)->refct++;
}
void cls_decref(clskey k) {
    if (k) cls_node(k)->refct--;
}
void cls_setref(clskey k, int32_t n) {
    if (k) cls_node(k)->refct = n;
}
int32_t cls_refct(clskey k) {
    return k ? cls_node(k)->refct : 0;
}

int cls_unlink(clskey k) {
    if (!k || cls_node(k) == qadnode0) return 0;
    if (--cls_node(k)->refct <= 0) return cls_unlink0(k);
    return 0;
}

static void unlink_blocks(clskey blk, int32_t cap, int32_t bs) {
    if (!blk) return;
    clskey* e = reinterpret_cast<clskey*>(cls_ndata(cls_node(blk)));
    for (int i = 0; i < bs; i++) {
        if (cap > bs)
            unlink_blocks(e[i], cap / bs, bs);
        else
            cls_unlink(e[i]);
    }
    freenode(cls_node(blk));
}

int cls_unlink0(clskey k) {
    if (!k || cls_node(k) == qadnode0) return 0;
    ClsNode* n = cls_node(k);
    switch (cls_ntype(n)) {
    case CLS_DOUBLE:
    case CLS_STRING:
    case CLS_TMPSTRING:
    case CLS_BLOB: freenode(n); return 0;
    case CLS_CODE:
    case CLS_ATTRIBUTE:
    case CLS_ENCODING: return 0;
    case CLS_KEY: {
        clskey t = *reinterpret_cast<clskey*>(cls_ndata(n));
        freenode(n);
        return cls_unlink(t);
    }
    case CLS_ARRAY: {
        ClsArray a = *reinterpret_cast<ClsArray*>(cls_ndata(n));
        freenode(n);
        unlink_blocks(a.top, a.capacity, a.blocksize);
        return 0;
    }
    case CLS_CLASS: {
        ClsInstance* in = reinterpret_cast<ClsInstance*>(cls_ndata(n));
        ClsType* ct = in->classtype ? reinterpret_cast<ClsType*>(cls_ndata(cls_node(in->classtype)))
                                    : nullptr;
        bool proto = ct && ct->prototype == k;
        if (!proto && !discarding && cls_member_hook) {
            int found = 0;
            n->refct = 1; // alive while its destructor runs
            cls_member_hook(k, "destructor", "", &found);
            if (n->refct > 1) { // the destructor kept a reference to it
                n->refct--;
                return 0;
            }
        }
        ClsInstance copy = *in;
        freenode(n);
        cls_unlink(copy.instancemv);
        cls_unlink(copy.dynamicmv);
        if (!proto) cls_unlink(copy.classtype);
        return 0;
    }
    case CLS_CLASSTYPE: {
        ClsType ct = *reinterpret_cast<ClsType*>(cls_ndata(n));
        cls_unlink0(ct.prototype); // it reads the class type, so first
        freenode(n);
        cls_unlink(ct.superclass);
        cls_unlink(ct.classmv);
        return 0;
    }
    case CLS_CONTEXT: return errtext(4051, "attempt to cls_unlink() a context\n");
    case CLS_ARRAYNODE: return errtext(4051, "attempt to cls_unlink() an array node \n");
    default: return errtext(4051, "attempt to cls_unlink() an object of unknown type\n");
    }
}

// --- typed creators ------------------------------------------------------------

int cls_newnumber(double x, clskey* out) {
    return newnode(CLS_DOUBLE, nullptr, false, sizeof x, &x, out);
}

int cls_newstring(const char* s, clskey* out) {
    if (!s) s = "";
    size_t len = strlen(s) + 1;
    size_t size = len < 8 ? 8 : (len + 7) & ~size_t{7};
    if (int rc = newnode(CLS_STRING, nullptr, false, size, nullptr, out)) return rc;
    memcpy(cls_ndata(cls_node(*out)), s, len);
    return 0;
}

int cls_newblob(const void* p, size_t n, clskey* out) {
    return newnode(CLS_BLOB, nullptr, false, n, p, out);
}

int cls_newarray(clskey* out) {
    ClsArray a{CLS_BLOCK, 0, -1, 0, nullkey};
    return newnode(CLS_ARRAY, nullptr, false, sizeof a, &a, out);
}

int cls_newref(clskey target, const char* name, clskey* out) {
    if (!target) return 4312;
    return newnode(CLS_KEY, name, false, sizeof target, &target, out);
}

static ClsType* ctype(clskey ct) {
    return reinterpret_cast<ClsType*>(cls_ndata(cls_node(ct)));
}
static ClsInstance* inst_of(clskey k) {
    return reinterpret_cast<ClsInstance*>(cls_ndata(cls_node(k)));
}
static ClsArray* arr_of(clskey k) {
    return reinterpret_cast<ClsArray*>(cls_ndata(cls_node(k)));
}

int cls_newclasstype(const char* name, clskey* out) {
    ClsType t{};
    if (int rc = newnode(CLS_CLASSTYPE, name, true, sizeof t, &t, out)) return rc;
    clskey ct = *out;
    clskey sup, cmv, proto;
    ClsInstance in{0, 0, nullkey, nullkey, ct};
    int rc = cls_newarray(&sup);
    if (!rc) rc = cls_newarray(&cmv);
    if (!rc) rc = newnode(CLS_CLASS, nullptr, false, sizeof in, &in, &proto);
    if (rc) return rc;
    ClsType* p = ctype(ct);
    p->superclass = sup;
    p->classmv = cmv;
    p->prototype = proto;
    return 0;
}

// --- arrays ------------------------------------------------------------------------

static int newblock(clskey* out) {
    return newnode(CLS_ARRAYNODE, nullptr, false, sizeof(clskey) * CLS_BLOCK, nullptr, out);
}

clskey* cls_array_slot(clskey arr, int32_t i, bool grow) {
    if (!arr || i < 0) return nullptr;
    ClsArray* a = arr_of(arr);
    if (i >= a->capacity) {
        if (!grow) return nullptr;
        if (!a->top) {
            if (newblock(&a->top)) return nullptr;
            a->capacity = a->blocksize;
        }
        while (i >= a->capacity) {
            clskey nt;
            if (newblock(&nt)) return nullptr;
            reinterpret_cast<clskey*>(cls_ndata(cls_node(nt)))[0] = a->top;
            a->top = nt;
            a->capacity *= a->blocksize;
        }
    }
    clskey blk = a->top;
    int32_t cap = a->capacity;
    while (cap > a->blocksize) {
        int32_t sub = cap / a->blocksize;
        clskey* e = reinterpret_cast<clskey*>(cls_ndata(cls_node(blk)));
        clskey& child = e[i / sub];
        if (!child) {
            if (!grow || newblock(&child)) return nullptr;
        }
        blk = child;
        i %= sub;
        cap = sub;
    }
    return reinterpret_cast<clskey*>(cls_ndata(cls_node(blk))) + i;
}

clskey cls_array_valuekey(clskey arr, int32_t i) {
    if (!arr || i < 0 || i > arr_of(arr)->last) return nullkey;
    clskey* s = cls_array_slot(arr, i, false);
    return s ? *s : nullkey;
}

int32_t cls_arr_last(clskey arr) {
    return arr ? arr_of(arr)->last : -1;
}

int cls_add_to_array(clskey arr, int32_t i, clskey value) {
    clskey* s = cls_array_slot(arr, i, true);
    if (!s) {
        cls_unlink(value);
        return 4000;
    }
    clskey old = *s;
    *s = value;
    ClsArray* a = arr_of(arr);
    if (i > a->last) a->last = i;
    return cls_unlink(old);
}

int cls_array_push(clskey arr, clskey value) {
    return cls_add_to_array(arr, arr_of(arr)->last + 1, value);
}

static void settle_last(ClsArray* a, clskey arr) {
    while (a->last >= 0 && !cls_array_valuekey(arr, a->last)) a->last--;
}

int cls_array_pop(clskey arr) {
    ClsArray* a = arr_of(arr);
    if (a->last < 0) return 0;
    return cls_array_delete_el(arr, a->last);
}

int cls_array_delete_el(clskey arr, int32_t i) {
    ClsArray* a = arr_of(arr);
    if (i < 0 || i > a->last) return 0;
    clskey* s = cls_array_slot(arr, i, false);
    if (!s) return 0;
    clskey old = *s;
    *s = nullkey;
    if (i == a->last) {
        a->last--;
        settle_last(a, arr);
    }
    return cls_unlink(old);
}

int cls_array_clear(clskey arr) {
    ClsArray a = *arr_of(arr);
    ClsArray* p = arr_of(arr);
    p->top = nullkey;
    p->capacity = 0;
    p->last = -1;
    unlink_blocks(a.top, a.capacity, a.blocksize);
    return 0;
}

int32_t cls_array_nels(clskey arr) {
    int32_t n = 0;
    for (int32_t i = 0; i <= cls_arr_last(arr); i++)
        if (cls_array_valuekey(arr, i)) n++;
    return n;
}

int32_t cls_find_str_in_array(clskey arr, const char* s) {
    for (int32_t i = 0; i <= cls_arr_last(arr); i++) {
        clskey v = cls_drill(cls_array_valuekey(arr, i));
        if (v && cls_ntype(cls_node(v)) == CLS_STRING && !strcmp(cls_ndata(cls_node(v)), s))
            return i;
    }
    return -1;
}

int32_t cls_find_name_in_array(clskey arr, const char* name) {
    for (int32_t i = 0; i <= cls_arr_last(arr); i++) {
        clskey v = cls_array_valuekey(arr, i);
        if (v && !strncmp(cls_nname(cls_node(v)), name, CLS_NAMELEN)) return i;
    }
    return -1;
}

// --- values ----------------------------------------------------------------------

clskey* cls_holder_drill(clskey* holder, clskey* ownerref) {
    if (ownerref) *ownerref = nullkey;
    while (*holder && cls_ntype(cls_node(*holder)) == CLS_KEY) {
        if (ownerref) *ownerref = *holder;
        holder = reinterpret_cast<clskey*>(cls_ndata(cls_node(*holder)));
    }
    return holder;
}

int cls_hold_key(clskey* holder, clskey value) {
    clskey* h = cls_holder_drill(holder, nullptr);
    clskey old = *h;
    *h = value;
    return cls_unlink(old);
}

int cls_hold_num(clskey* holder, double x) {
    clskey* h = cls_holder_drill(holder, nullptr);
    clskey v = *h;
    if (v && cls_ntype(cls_node(v)) == CLS_DOUBLE && cls_node(v)->refct == 1) {
        memcpy(cls_ndata(cls_node(v)), &x, sizeof x);
        return 0;
    }
    clskey nv;
    if (int rc = cls_newnumber(x, &nv)) return rc;
    *h = nv;
    return cls_unlink(v);
}

int cls_hold_str(clskey* holder, const char* s) {
    if (!s) s = "";
    clskey* h = cls_holder_drill(holder, nullptr);
    clskey v = *h;
    if (v && cls_ntype(cls_node(v)) == CLS_STRING && cls_node(v)->refct == 1 &&
        cls_nsize(cls_node(v)) > strlen(s)) {
        memmove(cls_ndata(cls_node(v)), s, strlen(s) + 1);
        return 0;
    }
    clskey nv;
    if (int rc = cls_newstring(s, &nv)) return rc;
    *h = nv;
    return cls_unlink(v);
}

static int clone_instance(clskey* out, clskey src, bool deep);

// A new array whose elements come from src's through `one`.
template <class F> static int copy_array(clskey* out, clskey src, F one) {
    if (int rc = cls_newarray(out)) return rc;
    for (int32_t i = 0; i <= cls_arr_last(src); i++) {
        clskey e = cls_array_valuekey(src, i);
        if (!e) continue;
        clskey c;
        if (int rc = one(e, &c)) return rc;
        if (int rc = cls_add_to_array(*out, i, c)) return rc;
    }
    return 0;
}

// Dynamic members keep their names: each is a named reference around a value.
template <class F> static int copy_named(clskey* out, clskey src, F one) {
    if (!src) return *out = nullkey, 0;
    return copy_array(out, src, [&](clskey e, clskey* c) {
        clskey v;
        if (int rc = one(cls_drill(e), &v)) return rc;
        return cls_newref(v, cls_nname(cls_node(e)), c);
    });
}

int cls_newvalue(clskey* out, clskey src, int copyname) {
    *out = nullkey;
    if (!src) return 0;
    ClsNode* n = cls_node(src);
    switch (cls_ntype(n)) {
    case CLS_DOUBLE:
    case CLS_STRING:
    case CLS_TMPSTRING:
    case CLS_BLOB: return newnode(cls_ntype(n), nullptr, false, cls_nsize(n), cls_ndata(n), out);
    case CLS_KEY: {
        clskey v;
        if (int rc = cls_newvalue(&v, cls_drill(src), 0)) return rc;
        if (!copyname) return *out = v, 0;
        return cls_newref(v, nullptr, out);
    }
    case CLS_ARRAY:
        return copy_array(out, src, [](clskey e, clskey* c) { return cls_newvalue(c, e, 0); });
    case CLS_CLASS: {
        if (int rc = clone_instance(out, src, true)) return rc;
        if (cls_member_hook) {
            clskey saved = oncopy_src_key;
            oncopy_src_key = src;
            int found = 0;
            int rc = cls_member_hook(*out, "oncopy", "", &found);
            oncopy_src_key = saved;
            if (rc) {
                cls_unlink(*out);
                *out = nullkey;
                return rc;
            }
        }
        return 0;
    }
    case CLS_CLASSTYPE: return cls_newinstance(src, out);
    default: return 4005;
    }
}

int cls_clonevalueref(clskey* out, clskey src) {
    *out = nullkey;
    src = cls_drill(src);
    if (!src) return 0;
    switch (cls_ntype(cls_node(src))) {
    case CLS_ARRAY:
        return copy_array(out, src, [](clskey e, clskey* c) { return cls_clonevalueref(c, e); });
    case CLS_CLASS: return clone_instance(out, src, false);
    default:
        cls_incref(src);
        *out = src;
        return 0;
    }
}

// A new instance of src's class: its members deep copies (copy) or clones.
static int clone_instance(clskey* out, clskey src, bool deep) {
    ClsInstance in = *inst_of(src);
    ClsInstance ni{in.num_attribs, in.num_dynamics, nullkey, nullkey, in.classtype};
    if (int rc = newnode(CLS_CLASS, nullptr, false, sizeof ni, &ni, out)) return rc;
    cls_incref(in.classtype);
    depth++;
    auto one = [deep](clskey e, clskey* c) {
        return deep ? cls_newvalue(c, cls_drill(e), 0) : cls_clonevalueref(c, e);
    };
    clskey imv = nullkey, dmv = nullkey;
    int rc = 0;
    if (in.instancemv) rc = copy_array(&imv, in.instancemv, one);
    inst_of(*out)->instancemv = imv;
    if (!rc && in.dynamicmv) rc = copy_named(&dmv, in.dynamicmv, one);
    inst_of(*out)->dynamicmv = dmv;
    depth--;
    if (rc) {
        cls_unlink(*out);
        *out = nullkey;
    }
    return rc;
}

int cls_clone1_instance(clskey* out, clskey inst) {
    ClsInstance in = *inst_of(inst);
    ClsInstance ni{in.num_attribs, in.num_dynamics, nullkey, nullkey, in.classtype};
    if (int rc = newnode(CLS_CLASS, nullptr, false, sizeof ni, &ni, out)) return rc;
    cls_incref(in.classtype);
    auto askey = [](clskey e, clskey* c) { return cls_incref(e), *c = e, 0; };
    clskey imv = nullkey, dmv = nullkey;
    int rc = 0;
    if (in.instancemv)
        rc = copy_array(&imv, in.instancemv, [](clskey e, clskey* c) {
            e = cls_drill(e);
            cls_incref(e);
            *c = e;
            return 0;
        });
    inst_of(*out)->instancemv = imv;
    if (!rc && in.dynamicmv) rc = copy_array(&dmv, in.dynamicmv, askey);
    inst_of(*out)->dynamicmv = dmv;
    return rc;
}

int cls_newinstance(clskey classtype, clskey* out) {
    return clone_instance(out, ctype(classtype)->prototype, false);
}

// --- classes ------------------------------------------------------------------------

clskey cls_findclasstype_loaded(const char* name) {
    for (ClsNode* n = hslots[cls_hash(name)]; n; n = n->fwd)
        if (cls_ntype(n) == CLS_CLASSTYPE && !strncmp(cls_nname(n), name, CLS_NAMELEN))
            return reinterpret_cast<clskey>(n);
    return nullkey;
}

const char* cls_classnm(clskey key) {
    key = cls_drill(key);
    if (!key) return nullptr;
    ClsNode* n = cls_node(key);
    if (cls_ntype(n) == CLS_CLASSTYPE) return cls_nname(n);
    if (cls_ntype(n) == CLS_CLASS) return cls_nname(cls_node(inst_of(key)->classtype));
    return nullptr;
}

static MemberIndex& index_of(clskey ct) {
    MemberIndex& mi = member_index[ct];
    if (!mi.built) {
        mi.pos.clear();
        ClsType* t = ctype(ct);
        clskey imv = inst_of(t->prototype)->instancemv;
        for (int32_t i = 0; i <= cls_arr_last(imv); i++)
            if (clskey e = cls_array_valuekey(imv, i)) mi.pos.emplace(cls_nname(cls_node(e)), i);
        for (int32_t i = 0; i <= cls_arr_last(t->classmv); i++)
            if (clskey e = cls_array_valuekey(t->classmv, i))
                mi.pos.emplace(cls_nname(cls_node(e)), -1 - i);
        mi.built = true;
    }
    return mi;
}

bool cls_has_member(clskey ct, const char* name) {
    MemberIndex& mi = index_of(ct);
    return mi.pos.count(name) != 0;
}

int cls_addattrib(clskey ct, clskey value, const char* name, int classwide) {
    if (!value) return 4312;
    if (cls_has_member(ct, name)) {
        cls_unlink(value);
        return 4017;
    }
    clskey a;
    if (int rc = cls_newref(value, name, &a)) return rc;
    ClsType* t = ctype(ct);
    member_index[ct].built = false;
    if (classwide) {
        t->num_class_attribs++;
        return cls_array_push(t->classmv, a);
    }
    ClsInstance* p = inst_of(t->prototype);
    if (!p->instancemv && cls_newarray(&p->instancemv)) return 950;
    p->num_attribs++;
    return cls_array_push(p->instancemv, a);
}

int cls_add_dynamic_attrib(clskey inst, clskey value, const char* name) {
    if (!value) return 4312;
    ClsInstance* in = inst_of(inst);
    if (cls_has_member(in->classtype, name) ||
        (in->dynamicmv && cls_find_name_in_array(in->dynamicmv, name) >= 0)) {
        cls_unlink(value);
        return 4017;
    }
    clskey a;
    if (int rc = cls_newref(value, name, &a)) return rc;
    if (!in->dynamicmv && cls_newarray(&in->dynamicmv)) return 950;
    in->num_dynamics++;
    return cls_array_push(in->dynamicmv, a);
}

int cls_addsuper(clskey ct, clskey super) {
    ClsType* t = ctype(ct);
    cls_incref(super);
    if (int rc = cls_array_push(t->superclass, super)) return rc;
    t->num_inherits++;
    ClsType* s = ctype(super);
    clskey simv = inst_of(s->prototype)->instancemv;
    for (int32_t i = 0; i <= cls_arr_last(simv); i++) {
        clskey e = cls_array_valuekey(simv, i);
        if (!e) continue;
        const char* nm = cls_nname(cls_node(e));
        if (cls_has_member(ct, nm)) continue; // the subclass's own member overrides
        clskey v;
        if (int rc = cls_clonevalueref(&v, e)) return rc;
        if (int rc = cls_addattrib(ct, v, nm, 0)) return rc;
    }
    return 0;
}

bool cls_type_is_of_type(clskey ct, const char* name) {
    if (!ct) return false;
    if (!strncmp(cls_nname(cls_node(ct)), name, CLS_NAMELEN)) return true;
    ClsType* t = ctype(ct);
    for (int32_t i = 0; i <= cls_arr_last(t->superclass); i++)
        if (cls_type_is_of_type(cls_array_valuekey(t->superclass, i), name)) return true;
    return false;
}

// The classwide member of ct or of its superclasses.
static clskey* classwide_holder(clskey ct, const char* name) {
    ClsType* t = ctype(ct);
    MemberIndex& mi = index_of(ct);
    auto it = mi.pos.find(name);
    if (it != mi.pos.end() && it->second < 0) {
        clskey a = cls_array_valuekey(t->classmv, -1 - it->second);
        reference_key = t->classmv;
        reference_dex = -1 - it->second;
        return reinterpret_cast<clskey*>(cls_ndata(cls_node(a)));
    }
    for (int32_t i = 0; i <= cls_arr_last(t->superclass); i++)
        if (clskey* h = classwide_holder(cls_array_valuekey(t->superclass, i), name)) return h;
    return nullptr;
}

clskey* cls_find_name_in_class(const char* name, clskey inst) {
    ClsInstance* in = inst_of(inst);
    if (in->dynamicmv) {
        int32_t i = cls_find_name_in_array(in->dynamicmv, name);
        if (i >= 0) {
            reference_key = in->dynamicmv;
            reference_dex = i;
            return reinterpret_cast<clskey*>(
                cls_ndata(cls_node(cls_array_valuekey(in->dynamicmv, i))));
        }
    }
    ClsType* t = ctype(in->classtype);
    MemberIndex& mi = index_of(in->classtype);
    auto it = mi.pos.find(name);
    if (it != mi.pos.end() && it->second >= 0) {
        int32_t i = it->second;
        if (t->prototype == inst) {
            clskey a = cls_array_valuekey(in->instancemv, i);
            return reinterpret_cast<clskey*>(cls_ndata(cls_node(a)));
        }
        if (!in->instancemv && cls_newarray(&in->instancemv)) return nullptr;
        reference_key = in->instancemv;
        reference_dex = i;
        clskey* s = cls_array_slot(in->instancemv, i, true);
        if (s && i > arr_of(in->instancemv)->last) arr_of(in->instancemv)->last = i;
        return s;
    }
    return classwide_holder(in->classtype, name);
}

clskey* cls_find_name_in_classtype(const char* name, clskey ct) {
    if (clskey* h = classwide_holder(ct, name)) return h;
    return cls_find_name_in_class(name, ctype(ct)->prototype);
}

// --- top-level names ------------------------------------------------------------------

clskey cls_find_global(const char* name) {
    for (ClsNode* n = hslots[cls_hash(name)]; n; n = n->fwd)
        if (cls_ntype(n) == CLS_KEY && !strncmp(cls_nname(n), name, CLS_NAMELEN))
            return reinterpret_cast<clskey>(n);
    return nullkey;
}

int cls_make_global(const char* name, clskey* out) {
    clskey none = nullkey;
    return newnode(CLS_KEY, name, true, sizeof none, &none, out);
}

int cls_dynrem(clskey named) {
    if (!named) return 0;
    ClsNode* n = cls_node(named);
    if (n->flags & CLSF_HASHED) {
        hash_remove(n);
        list_add(n);
    }
    return cls_unlink(named);
}

int cls_discard() {
    cls_discards++;
    discarding = true;
    // the names first, so that values go with their counts
    for (int i = 0; i < CLS_NSLOTS; i++) {
        while (ClsNode* n = hslots[i]) {
            if (cls_ntype(n) == CLS_KEY) {
                cls_dynrem(reinterpret_cast<clskey>(n));
                continue;
            }
            // a class type: out of the hash; it goes when its subclasses and
            // instances have let it go, or in the sweep below
            hash_remove(n);
            list_add(n);
            cls_unlink(reinterpret_cast<clskey>(n));
        }
    }
    // whatever cycles of references kept alive
    while (qadnode0->fwd) freenode(qadnode0->fwd);
    member_index.clear();
    discarding = false;
    active_class_key = active_clstype_key = nullkey;
    return 0;
}

// --- the access interface ---------------------------------------------------------------

clskey cls_keyofnm(const char* name) {
    while (*name == '.') name++;
    return cls_drill(cls_find_global(name));
}

double cls_get_num(clskey k) {
    k = cls_drill(k);
    if (!k || cls_ntype(cls_node(k)) != CLS_DOUBLE) return misval;
    double x;
    memcpy(&x, cls_ndata(cls_node(k)), sizeof x);
    return x;
}

const char* cls_get_str(clskey k) {
    k = cls_drill(k);
    if (!k || cls_ntype(cls_node(k)) != CLS_STRING) return nullptr;
    return cls_ndata(cls_node(k));
}

const void* cls_get_blob(clskey k, size_t* n) {
    k = cls_drill(k);
    if (!k || cls_ntype(cls_node(k)) != CLS_BLOB) return nullptr;
    if (n) *n = cls_nsize(cls_node(k));
    return cls_ndata(cls_node(k));
}

// By key: the value node itself changes, so that every holder sees it.
int cls_set_num(clskey k, double x) {
    k = cls_drill(k);
    if (!k || cls_ntype(cls_node(k)) != CLS_DOUBLE) return 4005;
    memcpy(cls_ndata(cls_node(k)), &x, sizeof x);
    return 0;
}

int cls_set_str(clskey k, const char* s) {
    k = cls_drill(k);
    if (!k || cls_ntype(cls_node(k)) != CLS_STRING) return 4005;
    if (!s) s = "";
    if (cls_nsize(cls_node(k)) > strlen(s)) {
        memmove(cls_ndata(cls_node(k)), s, strlen(s) + 1);
        return 0;
    }
    // too long for its node: the node becomes a reference to a new string, so
    // that every holder of the old key sees the new text
    clskey ns;
    if (int rc = cls_newstring(s, &ns)) return rc;
    ClsNode* n = cls_node(k);
    n->flags = (n->flags & ~(15u << 25)) | (static_cast<uint32_t>(CLS_KEY) << 25);
    memcpy(cls_ndata(n), &ns, sizeof ns);
    return 0;
}

int cls_arr_setnum(clskey arr, int32_t i, double x) {
    clskey* s = cls_array_slot(cls_drill(arr), i, true);
    if (!s) return 4000;
    if (i > arr_of(cls_drill(arr))->last) arr_of(cls_drill(arr))->last = i;
    return cls_hold_num(s, x);
}

int cls_arr_setstr(clskey arr, int32_t i, const char* str) {
    clskey* s = cls_array_slot(cls_drill(arr), i, true);
    if (!s) return 4000;
    if (i > arr_of(cls_drill(arr))->last) arr_of(cls_drill(arr))->last = i;
    return cls_hold_str(s, str);
}

clskey cls_arr_key(clskey arr, int32_t i) {
    return cls_array_valuekey(cls_drill(arr), i);
}

int32_t cls_arrindexof(clskey arr, const char* s) {
    return cls_find_str_in_array(cls_drill(arr), s) + 1;
}

int cls_arr_push_str(clskey arr, const char* s) {
    clskey v;
    if (int rc = cls_newstring(s, &v)) return rc;
    return cls_array_push(cls_drill(arr), v);
}

int32_t cls_arr_nels(clskey arr) {
    return cls_arr_last(cls_drill(arr)) + 1;
}

int cls_type(clskey k) {
    k = cls_drill(k);
    return k ? cls_ntype(cls_node(k)) : 0;
}

size_t cls_len(clskey k) {
    k = cls_drill(k);
    if (!k) return 0;
    if (cls_ntype(cls_node(k)) == CLS_STRING) return strlen(cls_ndata(cls_node(k)));
    return cls_nsize(cls_node(k));
}

} // namespace korvu
