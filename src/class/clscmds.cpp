// The `class` subcommands that work on objects by name (`modify`, `nameof`,
// `nameoflocal`, `new`, `set`, `korvu`, `try`, `undo`) and the log of
// changes behind `class set logging` and `class undo`.
//
// The log is the top-level array `.__LOG` of command lines. Each change of a
// value while logging is on adds the line that puts the old value back; the
// changes made by one command line are preceded by the marker "<undolines>".
// `class undo` runs the lines after the last marker, newest first, and takes
// them and the marker off the log.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <unordered_set>
#include <vector>

#include "class/clslang.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/loop.h"
#include "output/spout.h"
#include "results/stores.h"

namespace korvu {

clskey log_key = nullkey;
int32_t stlog_level = 0; // 0 off, 1 changes made by command lines, 2 all changes

static bool log_mark_pending = false;
static bool log_replaying = false;
static std::vector<clskey> log_held; // old objects named by lines of the log

static const char str_undolines[] = "<undolines>";

static std::string trim(const std::string& s) {
    size_t b = s.find_first_not_of(' '), e = s.find_last_not_of(' ');
    return b == std::string::npos ? "" : s.substr(b, e - b + 1);
}

// A name as a line of the class language writes it: behind a dot.
static std::string dotted(const std::string& t) {
    return t.empty() || t[0] == '.' ? t : "." + t;
}

// `.__LOG`, made when asked for; nullkey when it is not there.
static clskey log_array(bool make) {
    log_key = nullkey;
    clskey n = cls_find_global("__LOG");
    clskey v = cls_drill(n);
    if (v && cls_ntype(cls_node(v)) == CLS_ARRAY) return log_key = v;
    if (!make) return nullkey;
    if (!n && cls_make_global("__LOG", &n)) return nullkey;
    clskey arr;
    if (cls_newarray(&arr)) return nullkey;
    if (cls_hold_key(reinterpret_cast<clskey*>(cls_ndata(cls_node(n))), arr)) return nullkey;
    return log_key = arr;
}

void cls_log_newline() {
    if (stlog_level && !cls_loc && !log_replaying) log_mark_pending = true;
}

void cls_log_forget() {
    // every object went with `discard`: the held keys are gone too
    log_held.clear();
    log_key = nullkey;
    stlog_level = 0;
    log_mark_pending = false;
}

static void log_drop() {
    if (clskey n = cls_find_global("__LOG")) cls_dynrem(n);
    for (clskey k : log_held) cls_unlink(k);
    log_held.clear();
    log_key = nullkey;
    log_mark_pending = false;
}

static std::string quoted(const char* s) {
    if (!strchr(s, '"')) return std::string("\"") + s + "\"";
    return std::string("`\"") + s + "\"'";
}

// The last member's name in a dotted name: `.a.b[2].c` gives c.
static std::string lastname(const std::string& name) {
    size_t dot = name.rfind('.');
    std::string n = dot == std::string::npos ? name : name.substr(dot + 1);
    return n.substr(0, n.find('['));
}

int cls_log_change(const std::string& lhs, const ClsRef& dst) {
    if (!stlog_level || log_replaying) return 0;
    if (stlog_level == 1 && cls_loc) return 0;
    char buf[64];
    std::string target;
    // keys behind a dot, so that the line is a class command
    if (dst.arr)
        target = std::string(".") + key_to_ref_array(dst.arr, dst.dex + 1, buf, sizeof buf);
    else if (dst.top)
        target = "." + lastname(lhs);
    else if (dst.owner)
        target = "." + std::string(key_to_ref(dst.owner, buf, sizeof buf)) + "." + lastname(lhs);
    else
        return 0; // a name the log cannot reach again (a local object)
    std::string line;
    clskey old = dst.value;
    if (!old) {
        if (dst.top)
            line = "class free " + lastname(lhs);
        else if (dst.arr)
            line = "." + std::string(key_to_ref(dst.arr, buf, sizeof buf)) + ".Arrdropel " +
                   std::to_string(dst.dex + 1);
        else
            return 0;
    } else if (cls_ntype(cls_node(old)) == CLS_DOUBLE) {
        line = target + " = " + cls_numtext(cls_get_num(old), true);
    } else if (cls_ntype(cls_node(old)) == CLS_STRING) {
        line = target + " = " + quoted(cls_get_str(old));
    } else {
        cls_incref(old);
        log_held.push_back(old);
        line = target + " = " + key_to_ref(old, buf, sizeof buf);
    }
    clskey log = log_array(true);
    if (!log) return errtext(4000, "Log error\n");
    if (log_mark_pending || cls_arr_last(log) < 0) {
        if (int rc = cls_arr_push_str(log, str_undolines)) return rc;
        log_mark_pending = false;
    }
    return cls_arr_push_str(log, line.c_str());
}

// --- the subcommands -------------------------------------------------------------

static int class_set(const std::string& rest) {
    std::string r = trim(rest);
    size_t sp = r.find(' ');
    std::string what = r.substr(0, sp), how = sp == std::string::npos ? "" : trim(r.substr(sp));
    if (what != "logging") {
        if (what.empty()) return required("setting");
        return errorf(198, "class set %s: no such setting\n", what.c_str());
    }
    if (how == "on" || how == "allon") {
        if (!log_array(true)) return errtext(4000, "Log error\n");
        stlog_level = how == "on" ? 1 : 2;
        return 0;
    }
    if (how == "off") {
        stlog_level = 0;
        log_drop();
        return 0;
    }
    return errtext(198, "class set logging takes on, off or allon\n");
}

static int class_undo(const std::string& rest) {
    if (!trim(rest).empty()) return errtext(198, "class undo takes no arguments\n");
    clskey log = log_array(false);
    if (!log) return 0;
    clskey saved_active = active_class_key, saved_ct = active_clstype_key;
    active_class_key = active_clstype_key = nullkey;
    log_replaying = true;
    int rc = 0;
    for (;;) {
        log = log_array(false);
        int32_t last = cls_arr_last(log);
        if (!log || last < 0) break;
        const char* s = cls_get_str(cls_array_valuekey(log, last));
        std::string line = s ? s : "";
        cls_array_delete_el(log, last);
        if (line == str_undolines) break;
        if ((rc = cls_runline(line))) {
            errtext(rc, "Log error\n");
            break;
        }
    }
    log_replaying = false;
    active_class_key = saved_active;
    active_clstype_key = saved_ct;
    return rc;
}

static int class_modify(const std::string& rest) {
    std::string r = trim(rest);
    size_t eq = r.find('=');
    if (eq == std::string::npos || eq == 0)
        return errtext(198, "class modify: name = value expected\n");
    std::string lhs = dotted(trim(r.substr(0, eq)));
    cls_log_newline();
    return cls_assign(lhs, r.substr(eq + 1));
}

// Result of a query: shown, and kept in r(name).
static int answer(const std::string& text) {
    retval_clear();
    if (int rc = retval_set_local("name", text.c_str())) return rc;
    uint8_t old = c_outlev;
    c_outlev = 1;
    spout21(text.c_str());
    newline();
    c_outlev = old;
    return 0;
}

// A name by which the top level reaches the value: breadth first over the
// top-level names (in order), the members of instances and array elements.
static std::string name_of(clskey target) {
    struct Item {
        std::string name;
        clskey value;
    };
    std::vector<std::string> tops;
    for (int i = 0; i < CLS_NSLOTS; i++)
        for (clskey k = cls_hslot(i); k; k = reinterpret_cast<clskey>(cls_node(k)->fwd))
            if (cls_ntype(cls_node(k)) == CLS_KEY && cls_nname(cls_node(k))[0] != '\x01')
                tops.push_back(cls_nname(cls_node(k)));
    std::sort(tops.begin(), tops.end());
    std::vector<Item> queue;
    for (auto& t : tops) queue.push_back({"." + t, cls_drill(cls_find_global(t.c_str()))});
    std::unordered_set<clskey> seen;
    for (size_t q = 0; q < queue.size() && queue.size() < 200000; q++) {
        Item it = queue[q];
        if (!it.value) continue;
        if (it.value == target) return it.name;
        if (!seen.insert(it.value).second) continue;
        int t = cls_ntype(cls_node(it.value));
        if (t == CLS_ARRAY) {
            for (int32_t i = 0; i <= cls_arr_last(it.value); i++)
                if (clskey e = cls_drill(cls_array_valuekey(it.value, i)))
                    queue.push_back({it.name + "[" + std::to_string(i + 1) + "]", e});
        } else if (t == CLS_CLASS) {
            ClsInstance* in = reinterpret_cast<ClsInstance*>(cls_ndata(cls_node(it.value)));
            ClsType* ct = reinterpret_cast<ClsType*>(cls_ndata(cls_node(in->classtype)));
            clskey pim =
                reinterpret_cast<ClsInstance*>(cls_ndata(cls_node(ct->prototype)))->instancemv;
            for (clskey names : {pim, in->dynamicmv})
                for (int32_t i = 0; i <= cls_arr_last(names); i++) {
                    clskey a = cls_array_valuekey(names, i);
                    if (!a) continue;
                    const char* nm = cls_nname(cls_node(a));
                    clskey* h = cls_find_name_in_class(nm, it.value);
                    if (h && *h) queue.push_back({it.name + "." + nm, cls_drill(*h)});
                }
        }
    }
    return "";
}

static int class_nameof(const std::string& rest) {
    std::string r = trim(rest);
    if (r.empty()) return required("name or key");
    ClsRef ref{};
    if (int rc = cls_find_report(dotted(r).c_str(), false, &ref)) return rc;
    return answer(ref.value ? name_of(ref.value) : "");
}

static int class_nameoflocal(const std::string& rest) {
    std::string r = trim(rest);
    if (r.empty()) return required("name");
    if (r[0] == '.') r = r.substr(1);
    std::string ln = "Local." + r;
    ClsRef ref{};
    if (int rc = cls_find(("." + ln).c_str(), false, &ref)) {
        std::string prefix = "." + ln + " ";
        return error2part(prefix.c_str(), rc, 0);
    }
    char buf[64];
    return answer(ref.value ? key_to_ref(ref.value, buf, sizeof buf) : "");
}

static int class_new(const std::string& rest) {
    std::string r = trim(rest);
    if (r.empty()) return required("class name");
    size_t sp = r.find(' ');
    std::string cname = r.substr(0, sp), args = sp == std::string::npos ? "" : trim(r.substr(sp));
    if (cname[0] == '.') cname = cname.substr(1);
    clskey ct;
    if (int rc = cls_findclasstype(cname.c_str(), &ct)) {
        std::string prefix = cname + " ";
        return error2part(prefix.c_str(), rc, 0);
    }
    clskey inst;
    if (int rc = cls_newinstance(ct, &inst)) return error(rc);
    char name[40];
    snprintf(name, sizeof name, "K%lx", static_cast<unsigned long>(inst));
    clskey n;
    if (int rc = cls_make_global(name, &n)) {
        cls_unlink(inst);
        return error(rc);
    }
    *reinterpret_cast<clskey*>(cls_ndata(cls_node(n))) = inst;
    int found = 0;
    if (int rc = cls_run_member(inst, "new", args.c_str(), &found)) {
        cls_dynrem(n);
        return rc;
    }
    return answer(name);
}

// A line run with no object active: names are those of the top level.
static int class_korvu(const std::string& rest) {
    std::string r = trim(rest);
    if (r.empty()) return 0;
    clskey saved_active = active_class_key, saved_ct = active_clstype_key;
    int32_t saved_loc = cls_loc;
    active_class_key = active_clstype_key = nullkey;
    cls_loc = 0;
    int rc = cls_runline(r);
    active_class_key = saved_active;
    active_clstype_key = saved_ct;
    cls_loc = saved_loc;
    return rc;
}

// Runs a member call when its object and member are there; does nothing
// otherwise.
static int class_try(const std::string& rest) {
    std::string r = trim(rest);
    if (r.empty()) return 0;
    std::string line = dotted(r);
    size_t e = line.find_first_of(" \"'`:;,={}");
    std::string tok = line.substr(0, e);
    std::string after = e == std::string::npos ? "" : trim(line.substr(e));
    bool assignment = !after.empty() && after[0] == '=' && (after.size() < 2 || after[1] != '=');
    ClsRef ref{};
    if (!cls_find(tok.c_str(), false, &ref)) return cls_runline(line);
    if (assignment) return 0;
    size_t dot = tok.rfind('.');
    if (dot == std::string::npos || dot == 0) return 0;
    std::string base = tok.substr(0, dot), word = tok.substr(dot + 1);
    ClsRef b{};
    if (cls_find(base.c_str(), false, &b) || !b.value) return 0;
    if (!cls_has_member_call(b.value, word.c_str())) return 0;
    return cls_runline(line);
}

int class_subcommand(const std::string& word, const std::string& rest, int* found) {
    *found = 1;
    if (word == "modify") return class_modify(rest);
    if (word == "nameof") return class_nameof(rest);
    if (word == "nameoflocal") return class_nameoflocal(rest);
    if (word == "new") return class_new(rest);
    if (word == "set") return class_set(rest);
    if (word == "korvu") return class_korvu(rest);
    if (word == "try") return class_try(rest);
    if (word == "undo") return class_undo(rest);
    *found = 0;
    return 0;
}

} // namespace korvu
