// Class definitions (`class name { ... }` in `.class` files and do-files)
// and the `class` command's subcommands.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "class/clslang.h"
#include "kernel/cmds/builtins.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/flow/flow.h"
#include "kernel/loop/brk.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/loop.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/program/program.h"
#include "output/spout.h"

namespace korvu {

static std::string trim(const std::string& s) {
    size_t b = s.find_first_not_of(' '), e = s.find_last_not_of(' ');
    return b == std::string::npos ? "" : s.substr(b, e - b + 1);
}

int cls_autoload(const char* name) {
    char path[1024];
    if (!srchado(name, "class", 1, path, sizeof path)) return 0;
    char saved_cmd[34];
    memcpy(saved_cmd, cmd, sizeof saved_cmd);
    uint8_t saved_out = s_outlev;
    snprintf(cmd, sizeof cmd, "%s", name);
    int rc = autoload("class", 0);
    memcpy(cmd, saved_cmd, sizeof saved_cmd);
    s_outlev = saved_out;
    if (rc) return rc;
    return cls_findclasstype_loaded(name) != nullkey;
}

int cls_findclasstype(const char* name, clskey* out) {
    *out = cls_findclasstype_loaded(name);
    if (*out) return 0;
    if (strlen(name) > 32 || !cls_chkname(name)) return 4018;
    int rc = cls_autoload(name);
    if (rc > 1) return rc;
    *out = cls_findclasstype_loaded(name);
    return *out ? 0 : 4018;
}

// Runs one command line as if it had been read (for `_cls` lines).
int cls_runline(const std::string& text) {
    snprintf(console, conslen, "%s", text.c_str());
    settok(console);
    gettok(prsestd);
    snprintf(cmd, sizeof cmd, "%.32s", token);
    return selreq();
}

// Options behind the closing brace: `, inherit(name ...)`.
static int class_options(clskey ct, const std::string& opts) {
    std::string o = trim(opts);
    if (o.empty()) return 0;
    if (o[0] != ',') return error(198);
    o = trim(o.substr(1));
    if (o.compare(0, 8, "inherit(") != 0 || o.back() != ')') {
        return errorf(198, "option %s not allowed\n", o.c_str());
    }
    std::string names = o.substr(8, o.size() - 9);
    if (names.size() > 660) return error(4000);
    for (size_t i = 0; i < names.size();) {
        size_t j = names.find(' ', i);
        if (j == std::string::npos) j = names.size();
        std::string nm = names.substr(i, j - i);
        i = j + 1;
        if (nm.empty()) continue;
        clskey sup;
        if (int rc = cls_findclasstype(nm.c_str(), &sup)) {
            std::string prefix = nm + " ";
            return error2part(prefix.c_str(), rc, 0);
        }
        if (sup == ct) return error(4015);
        if (int rc = cls_addsuper(ct, sup)) return error(rc);
    }
    return 0;
}

static bool section_word(const std::string& line, const char* word, int minlen) {
    size_t colon = line.find(':');
    if (colon == std::string::npos) return false;
    std::string w = trim(line.substr(0, colon));
    return trim(line.substr(colon + 1)).empty() && cmdcmp(w.c_str(), word, minlen);
}

static int read_block(const std::string& name) {
    if (!cls_chkname(name.c_str())) {
        std::string prefix = name + " ";
        return error2(1, name.c_str());
    }
    clskey ct = cls_findclasstype_loaded(name.c_str());
    bool skip = false, taken = false;
    if (ct) {
        // a file read again: the definition stands; typed again: taken
        skip = true;
        taken = !autoload_level;
    } else if (int rc = cls_newclasstype(name.c_str(), &ct)) {
        return rc;
    }
    clskey saved_active = active_class_key, saved_ct = active_clstype_key;
    if (!skip) {
        active_clstype_key = ct;
        active_class_key = reinterpret_cast<ClsType*>(cls_ndata(cls_node(ct)))->prototype;
        reinterpret_cast<ClsType*>(cls_ndata(cls_node(ct)))->version = vernum;
    }
    bool classwide = false;
    int rc = 0;
    std::string opts;
    for (;;) {
        if (getreq(1)) {
            rc = stopflag ? 1 : error(612);
            break;
        }
        if (stopflag) {
            rc = 1;
            break;
        }
        if (!skip && !rc) macexp();
        std::string line = trim(console);
        if (line.empty() || line[0] == '*') continue;
        if (line[0] == '}') {
            opts = line.substr(1);
            break;
        }
        if (skip || rc) continue;
        if (section_word(line, "classwide", 5)) {
            classwide = true;
            continue;
        }
        if (section_word(line, "instancespecific", 8)) {
            classwide = false;
            continue;
        }
        if (line.compare(0, 5, "_cls ") == 0) {
            rc = cls_runline(line.substr(5));
            continue;
        }
        if (line.compare(0, 8, "version ") == 0) {
            rc = cls_runline(line);
            reinterpret_cast<ClsType*>(cls_ndata(cls_node(ct)))->version = vernum;
            continue;
        }
        Decl d;
        if ((rc = cls_parse_decl(line, &d))) continue;
        clskey v;
        if ((rc = cls_decl_value(d, &v))) continue;
        if ((rc = cls_addattrib(ct, v, d.name.c_str(), classwide))) {
            std::string prefix = d.name + " ";
            rc = error2part(prefix.c_str(), rc, 0);
        }
    }
    active_class_key = saved_active;
    active_clstype_key = saved_ct;
    if (skip) return rc ? rc : taken ? error2(3, name.c_str()) : 0;
    if (!rc) rc = class_options(ct, opts);
    if (rc) cls_dynrem(ct); // a class that fails is removed
    return rc;
}

// --- subcommands ------------------------------------------------------------------------

static int class_exit(const std::string& rest) {
    if (!sys_is_cls) return cexitcmd(0);
    clsrtn_clear();
    std::string r = trim(rest);
    if (!r.empty()) {
        clskey v;
        if (int rc = cls_rvalue(r, &v)) return rc;
        korvu_clsrtn = v;
    }
    return cexitcmd(0);
}

static std::vector<std::string> words(const std::string& s) {
    std::vector<std::string> w;
    for (size_t i = 0; i < s.size();) {
        size_t j = s.find(' ', i);
        if (j == std::string::npos) j = s.size();
        if (j > i) w.push_back(s.substr(i, j - i));
        i = j + 1;
    }
    return w;
}

static std::vector<clskey> toplevel_names() {
    std::vector<clskey> out;
    for (int i = 0; i < CLS_NSLOTS; i++)
        for (clskey k = cls_hslot(i); k; k = reinterpret_cast<clskey>(cls_node(k)->fwd))
            if (cls_ntype(cls_node(k)) == CLS_KEY && cls_nname(cls_node(k))[0] != '\x01')
                out.push_back(k);
    return out;
}

static int class_free(const std::string& rest) {
    std::vector<std::string> w = words(rest);
    if (w.empty()) {
        for (clskey k : toplevel_names())
            if (int rc = cls_dynrem(k)) return rc;
        return 0;
    }
    for (auto& n : w) {
        std::string nm = n[0] == '.' ? n.substr(1) : n;
        if (!cls_find_global(nm.c_str())) {
            std::string prefix = n + " ";
            return error2part(prefix.c_str(), 4012, 0);
        }
    }
    for (auto& n : w) {
        std::string nm = n[0] == '.' ? n.substr(1) : n;
        if (int rc = cls_dynrem(cls_find_global(nm.c_str()))) return rc;
    }
    return 0;
}

static void inspect_value(const std::string& label, clskey v, int indent) {
    v = cls_drill(v);
    std::string pad(static_cast<size_t>(indent), ' ');
    int t = v ? cls_ntype(cls_node(v)) : 0;
    char buf[64];
    std::string text;
    if (!v)
        text = "(empty)";
    else if (t == CLS_DOUBLE) {
        double x = cls_get_num(v);
        if (x >= 0x1p1023)
            text = ".";
        else
            snprintf(buf, sizeof buf, "%.17g", x), text = buf;
    } else if (t == CLS_STRING)
        text = std::string("\"") + cls_get_str(v) + "\"";
    else if (t == CLS_ARRAY)
        text = "array of " + std::to_string(cls_arr_last(v) + 1);
    else if (t == CLS_CLASS || t == CLS_CLASSTYPE)
        text = std::string(t == CLS_CLASS ? "instance of " : "class ") + cls_classnm(v);
    else
        text = cls_map9_type(t);
    spoutf("%s%-20s %-8s %s\n", pad.c_str(), label.c_str(), v ? cls_map9_type(t) : "",
           text.c_str());
    if (indent > 16) return;
    if (t == CLS_ARRAY) {
        for (int32_t i = 0; i <= cls_arr_last(v); i++) {
            char lab[24];
            snprintf(lab, sizeof lab, "[%d]", i + 1);
            inspect_value(lab, cls_array_valuekey(v, i), indent + 4);
        }
    } else if (t == CLS_CLASS) {
        ClsInstance* in = reinterpret_cast<ClsInstance*>(cls_ndata(cls_node(v)));
        ClsType* ct = reinterpret_cast<ClsType*>(cls_ndata(cls_node(in->classtype)));
        clskey pim = reinterpret_cast<ClsInstance*>(cls_ndata(cls_node(ct->prototype)))->instancemv;
        for (int32_t i = 0; i <= cls_arr_last(pim); i++) {
            clskey a = cls_array_valuekey(pim, i);
            if (!a) continue;
            clskey* h = cls_find_name_in_class(cls_nname(cls_node(a)), v);
            char lab[40];
            snprintf(lab, sizeof lab, ".%s", cls_nname(cls_node(a)));
            inspect_value(lab, h ? *h : nullkey, indent + 4);
        }
        for (int32_t i = 0; i <= cls_arr_last(in->dynamicmv); i++) {
            clskey a = cls_array_valuekey(in->dynamicmv, i);
            if (!a) continue;
            char lab[40];
            snprintf(lab, sizeof lab, ".%s", cls_nname(cls_node(a)));
            inspect_value(lab, a, indent + 4);
        }
    }
}

static int class_inspect(const std::string& rest) {
    std::vector<std::string> w = words(rest);
    if (w.empty()) return required("name");
    c_outlev = 1;
    for (auto& n : w) {
        ClsRef r{};
        if (int rc = cls_find_report(n.c_str(), false, &r)) return rc;
        inspect_value(n, r.value, 0);
    }
    return 0;
}

static int class_toplevel() {
    c_outlev = 1;
    std::vector<std::string> names;
    for (clskey k : toplevel_names()) names.push_back(cls_nname(cls_node(k)));
    std::sort(names.begin(), names.end());
    for (auto& n : names) {
        clskey v = cls_drill(cls_find_global(n.c_str()));
        const char* cn = cls_classnm(v);
        spoutf("  .%-24s %s\n", n.c_str(), cn ? cn : cls_map9_type(v ? cls_ntype(cls_node(v)) : 0));
    }
    return 0;
}

static int class_dmm() {
    c_outlev = 1;
    spoutf("class store: %ld nodes, %ld bytes of data\n", static_cast<long>(cls_nnodes),
           static_cast<long>(cls_nbytes));
    char buf[32];
    snprintf(buf, sizeof buf, "%ld", static_cast<long>(cls_nnodes));
    return macresave("S_CLSNODES", buf);
}

static int class_pgmdir() {
    c_outlev = 1;
    for (void* v = dmnext(nullptr, nullptr, DM_PROGRAM, nullptr); v;
         v = dmnext(v, nullptr, DM_PROGRAM, nullptr)) {
        const PgmRec* p = static_cast<const PgmRec*>(v);
        if (!p->clsprog) continue;
        spoutf("%8d  %s.%s\n", static_cast<int>(dmsize(v)), p->owner, dmname(v));
    }
    return 0;
}

// A block passed over while lines are skipped: read to its closing brace.
static int pass_block() {
    for (;;) {
        if (getreq(1)) return stopflag ? 1 : error(612);
        std::string line = trim(console);
        if (!line.empty() && line[0] == '}') return 0;
    }
}

int stclass(int) {
    std::string rest = trim(wheretok());
    settok(nullptr);
    if (!procflg) {
        size_t brace = rest.find('{');
        bool block = brace != std::string::npos && trim(rest.substr(brace + 1)).empty();
        return block ? pass_block() : 0;
    }
    if (!rest.empty() && rest[0] == '{') {
        if (!(autoload_level && reading_cls_pgm && sys_pgmclass[0])) {
            return errtext(198, "class command must be followed by a "
                                "name or command must appear in an class-file.\n");
        }
        return read_block(sys_pgmclass);
    }
    size_t sp = rest.find_first_of(" {");
    std::string word = rest.substr(0, sp);
    std::string after = sp == std::string::npos ? "" : trim(rest.substr(sp));
    if (!after.empty() && after[0] == '{') {
        if (trim(after.substr(1)).size()) return braceerror(1);
        return read_block(word);
    }
    if (word == "exit") return class_exit(after);
    if (word == "free") return class_free(after);
    if (word == "inspect") return class_inspect(after);
    if (word == "toplevel") return class_toplevel();
    if (word == "_dmm") return class_dmm();
    if (word == "pgmdir") return class_pgmdir();
    int found = 0;
    int rc = class_subcommand(word, after, &found);
    if (found) return rc;
    return errtext(198, "not a class definition or subcommand\n");
}

// `_cls cmd`: a command run as written (inside a class block it is run there).
int clscmd_direct(int) {
    std::string rest = trim(wheretok());
    if (rest.empty()) return 0;
    return cls_runline(rest);
}

} // namespace korvu
