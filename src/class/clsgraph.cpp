// The two classes coded here for the graphics layer. `style`: an object that
// takes its attributes from a named style of the current scheme, kept under
// `.__SCHEME.<class>.<style>`; `grid`: a table of cells by row and column.
// Classes that inherit from them get their members through a table.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "class/clslang.h"
#include "class/clsscheme.h"
#include "data/area/missing.h"
#include "kernel/errors/errors.h"
#include "output/spout.h"

namespace korvu {

static clskey style_ct = nullkey, grid_ct = nullkey;

static std::string trim(const std::string& s) {
    size_t b = s.find_first_not_of(' '), e = s.find_last_not_of(' ');
    return b == std::string::npos ? "" : s.substr(b, e - b + 1);
}

static clskey* member(clskey inst, const char* name) {
    return cls_find_name_in_class(name, inst);
}

static const char* ownclass(clskey inst) {
    return cls_classnm(inst);
}

// The scheme's entry of this object's class: `.__SCHEME.<class>`.
// The scheme is read from its file the first time a style is asked for.
static clskey scheme_of(clskey inst) {
    clskey root = cls_scheme_root();
    if (!root || cls_ntype(cls_node(root)) != CLS_CLASS) return nullkey;
    clskey* h = cls_find_name_in_class(ownclass(inst), root);
    clskey v = h ? cls_drill(*h) : nullkey;
    return v && cls_ntype(cls_node(v)) == CLS_CLASS ? v : nullkey;
}

// Copies the attributes of style `name` onto the object; a note when the
// scheme has no such style, and the object keeps its defaults.
static int _read_style(clskey inst, const std::string& name) {
    clskey sch = scheme_of(inst);
    clskey* sh = sch ? cls_find_name_in_class(name.c_str(), sch) : nullptr;
    clskey st = sh ? cls_drill(*sh) : nullkey;
    if (!st || cls_ntype(cls_node(st)) != CLS_CLASS) {
        c_outlev = 1;
        std::string note = "{txt}(note:  named style " + name +
                           " not found in the current scheme for class " + ownclass(inst) +
                           ",  default attributes used)\n";
        spoutptl(note.c_str());
        return 0;
    }
    ClsInstance* in = reinterpret_cast<ClsInstance*>(cls_ndata(cls_node(st)));
    ClsType* ct = reinterpret_cast<ClsType*>(cls_ndata(cls_node(in->classtype)));
    clskey pim = reinterpret_cast<ClsInstance*>(cls_ndata(cls_node(ct->prototype)))->instancemv;
    auto copyone = [&](const char* nm, clskey value) -> int {
        // the style's own bookkeeping stays the object's
        if (!strcmp(nm, "stylename") || !strcmp(nm, "stylenames")) return 0;
        clskey* dst = member(inst, nm);
        if (!dst) return 0; // not an attribute of this object: left alone
        clskey v;
        if (int rc = cls_newvalue(&v, cls_drill(value), 0)) return rc;
        return cls_hold_key(dst, v);
    };
    for (int32_t i = 0; i <= cls_arr_last(pim); i++) {
        clskey a = cls_array_valuekey(pim, i);
        if (!a) continue;
        clskey* h = cls_find_name_in_class(cls_nname(cls_node(a)), st);
        if (h)
            if (int rc = copyone(cls_nname(cls_node(a)), *h)) return rc;
    }
    for (int32_t i = 0; i <= cls_arr_last(in->dynamicmv); i++) {
        clskey a = cls_array_valuekey(in->dynamicmv, i);
        if (a)
            if (int rc = copyone(cls_nname(cls_node(a)), a)) return rc;
    }
    return 0;
}

static int setstyle(clskey inst, const std::string& args) {
    std::string a = trim(args);
    // `setstyle name` or `setstyle, style(name)`
    if (!a.empty() && a[0] == ',') {
        a = trim(a.substr(1));
        if (a.compare(0, 6, "style(") != 0 || a.back() != ')') return error(198);
        a = trim(a.substr(6, a.size() - 7));
    }
    if (a.empty()) return required("style name");
    if (clskey* h = member(inst, "stylename"))
        if (int rc = cls_hold_str(h, a.c_str())) return rc;
    return _read_style(inst, a);
}

static int _restyle(clskey inst) {
    clskey* h = member(inst, "stylename");
    const char* s = h ? cls_get_str(*h) : nullptr;
    if (!s || !*s) return 0;
    return _read_style(inst, s);
}

// `.stylenames` gets the names of the styles the scheme has for the class.
static int _populate_stylenames(clskey inst) {
    clskey* h = member(inst, "stylenames");
    if (!h) return error(4012);
    clskey arr;
    if (int rc = cls_newarray(&arr)) return rc;
    if (clskey sch = scheme_of(inst)) {
        ClsInstance* in = reinterpret_cast<ClsInstance*>(cls_ndata(cls_node(sch)));
        ClsType* ct = reinterpret_cast<ClsType*>(cls_ndata(cls_node(in->classtype)));
        clskey pim = reinterpret_cast<ClsInstance*>(cls_ndata(cls_node(ct->prototype)))->instancemv;
        for (clskey names : {pim, in->dynamicmv})
            for (int32_t i = 0; i <= cls_arr_last(names); i++)
                if (clskey a = cls_array_valuekey(names, i))
                    if (int rc = cls_arr_push_str(arr, cls_nname(cls_node(a)))) return rc;
    }
    return cls_hold_key(h, arr);
}

static const char* const style_words[] = {"setstyle", "_read_style", "_restyle",
                                          "_populate_stylenames"};
static const char* const grid_words[] = {"dims", "put", "get"};

bool cls_builtin_has(clskey ct, const char* word) {
    if (!strcmp(word, "null")) return true;
    if (cls_type_is_of_type(ct, "style"))
        for (const char* w : style_words)
            if (!strcmp(word, w)) return true;
    if (cls_type_is_of_type(ct, "grid"))
        for (const char* w : grid_words)
            if (!strcmp(word, w)) return true;
    return false;
}

static int cls_style(clskey inst, const char* word, const char* args, int* found) {
    *found = 1;
    if (!strcmp(word, "setstyle")) return setstyle(inst, args);
    if (!strcmp(word, "_read_style")) return _read_style(inst, trim(args));
    if (!strcmp(word, "_restyle")) return _restyle(inst);
    if (!strcmp(word, "_populate_stylenames")) return _populate_stylenames(inst);
    *found = 0;
    return 0;
}

// grid: `.g.dims r c` sizes it; `.g.put r c value` and `.g.get r c` (the
// value, through macro expansion) reach one cell; cells are kept row-wise.
static int cellindex(clskey inst, const std::string& args, int32_t* idx, std::string* rest) {
    char* e = nullptr;
    long r = strtol(args.c_str(), &e, 10);
    long c = strtol(e, &e, 10);
    *rest = trim(e);
    double nr = cls_get_num(*member(inst, "nrows")), nc = cls_get_num(*member(inst, "ncols"));
    if (r < 1 || c < 1 || r > nr || c > nc) return error(4001);
    *idx = static_cast<int32_t>((r - 1) * static_cast<long>(nc) + (c - 1));
    return 0;
}

static int cls_grid(clskey inst, const char* word, const char* args, char* dst, size_t n,
                    int* found) {
    *found = 1;
    std::string a = trim(args);
    if (!strcmp(word, "dims")) {
        char* e = nullptr;
        long r = strtol(a.c_str(), &e, 10);
        long c = strtol(e, &e, 10);
        if (r < 0 || c < 0 || r * c > 10000000) return error(4000);
        if (int rc = cls_hold_num(member(inst, "nrows"), static_cast<double>(r))) return rc;
        if (int rc = cls_hold_num(member(inst, "ncols"), static_cast<double>(c))) return rc;
        clskey arr;
        if (int rc = cls_newarray(&arr)) return rc;
        return cls_hold_key(member(inst, "cells"), arr);
    }
    if (!strcmp(word, "put") || !strcmp(word, "get")) {
        int32_t idx = 0;
        std::string rest;
        if (int rc = cellindex(inst, a, &idx, &rest)) return rc;
        clskey cells = cls_drill(*member(inst, "cells"));
        if (word[0] == 'g') {
            clskey v = cls_drill(cls_array_valuekey(cells, idx));
            if (dst && n) {
                if (v && cls_ntype(cls_node(v)) == CLS_DOUBLE)
                    snprintf(dst, n, "%.17g", cls_get_num(v));
                else
                    snprintf(dst, n, "%s", v ? (cls_get_str(v) ? cls_get_str(v) : "") : "");
            }
            return 0;
        }
        clskey v;
        if (int rc = cls_rvalue(rest, &v)) return rc;
        return cls_add_to_array(cells, idx, v);
    }
    *found = 0;
    return 0;
}

static int cls_null(const char* word, int* found) {
    *found = !strcmp(word, "null");
    return 0;
}

int cls_builtin_member(clskey inst, const char* word, const char* args, char* dst, size_t n,
                       int* found) {
    *found = 0;
    inst = cls_drill(inst);
    if (!inst || cls_ntype(cls_node(inst)) != CLS_CLASS) return 0;
    clskey ct = reinterpret_cast<ClsInstance*>(cls_ndata(cls_node(inst)))->classtype;
    int rc = cls_null(word, found);
    if (*found) return rc;
    if (cls_type_is_of_type(ct, "style")) {
        rc = cls_style(inst, word, args, found);
        if (*found) return rc;
    }
    if (cls_type_is_of_type(ct, "grid")) return cls_grid(inst, word, args, dst, n, found);
    return 0;
}

int cls_make_builtin_classes() {
    clskey v;
    if (int rc = cls_newclasstype("style", &style_ct)) return rc;
    if (cls_newstring("", &v) || cls_addattrib(style_ct, v, "stylename", 0)) return 950;
    if (cls_newarray(&v) || cls_addattrib(style_ct, v, "stylenames", 0)) return 950;
    if (int rc = cls_newclasstype("grid", &grid_ct)) return rc;
    if (cls_newnumber(0, &v) || cls_addattrib(grid_ct, v, "nrows", 0)) return 950;
    if (cls_newnumber(0, &v) || cls_addattrib(grid_ct, v, "ncols", 0)) return 950;
    if (cls_newarray(&v) || cls_addattrib(grid_ct, v, "cells", 0)) return 950;
    return 0;
}

} // namespace korvu
