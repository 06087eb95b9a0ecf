// The scheme reader: `<name>.scheme` files on the ado path into `.__SCHEME`.
#include "class/clsscheme.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "class/clslang.h"
#include "data/area/missing.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/program/program.h"

namespace korvu {

static std::string current_scheme = "default";
static bool tried_current = false; // the current scheme's file was looked for

static const char str_holder[] = "__schemenode";
static const int MAXINCLUDE = 10;

static std::string trim(const std::string& s) {
    size_t b = s.find_first_not_of(" \t\r\n"), e = s.find_last_not_of(" \t\r\n");
    return b == std::string::npos ? "" : s.substr(b, e - b + 1);
}

// The class of the scheme's plain levels: no members of its own.
static int holder_type(clskey* out) {
    *out = cls_findclasstype_loaded(str_holder);
    if (*out) return 0;
    return cls_newclasstype(str_holder, out);
}

static int new_holder(clskey* out) {
    clskey ct;
    if (int rc = holder_type(&ct)) return rc;
    return cls_newinstance(ct, out);
}

// The member `name` of instance `parent`, made when absent: an instance of
// class `cname` when that is a class, else a plain level.
static int level(clskey parent, const std::string& name, const std::string& cname, clskey* out) {
    if (clskey* h = cls_find_name_in_class(name.c_str(), parent)) {
        clskey v = cls_drill(*h);
        if (v && cls_ntype(cls_node(v)) == CLS_CLASS) {
            *out = v;
            return 0;
        }
        return 4014; // a value stands where a level is wanted
    }
    clskey child = nullkey, ct = nullkey;
    if (!cname.empty() && !cls_findclasstype(cname.c_str(), &ct)) {
        if (int rc = cls_newinstance(ct, &child)) return rc;
    } else if (int rc = new_holder(&child)) {
        return rc;
    }
    if (int rc = cls_add_dynamic_attrib(parent, child, name.c_str())) return rc;
    *out = child;
    return 0;
}

static int set_leaf(clskey parent, const std::string& name, const std::string& value) {
    clskey v;
    std::string text = value;
    bool isstr = true;
    if (text.size() >= 2 && text[0] == '"' && text.back() == '"') {
        text = text.substr(1, text.size() - 2);
    } else {
        char* e = nullptr;
        double x = strtod(text.c_str(), &e);
        if (text == ".") {
            isstr = false;
            x = misval;
            v = 0;
        } else if (e && !*e && !text.empty()) {
            isstr = false;
        }
        if (!isstr) {
            if (clskey* h = cls_find_name_in_class(name.c_str(), parent)) return cls_hold_num(h, x);
            if (int rc = cls_newnumber(x, &v)) return rc;
            return cls_add_dynamic_attrib(parent, v, name.c_str());
        }
    }
    if (clskey* h = cls_find_name_in_class(name.c_str(), parent))
        return cls_hold_str(h, text.c_str());
    if (int rc = cls_newstring(text.c_str(), &v)) return rc;
    return cls_add_dynamic_attrib(parent, v, name.c_str());
}

static std::vector<std::string> split_path(const std::string& path) {
    std::vector<std::string> parts;
    size_t i = 0;
    for (;;) {
        size_t d = path.find('.', i);
        parts.push_back(path.substr(i, d == std::string::npos ? std::string::npos : d - i));
        if (d == std::string::npos) break;
        i = d + 1;
    }
    return parts;
}

static int read_file(const char* name, clskey root, int nest) {
    if (nest > MAXINCLUDE) return errorf(198, "scheme %s: #include nested too deeply\n", name);
    char path[1024];
    if (!srchado(name, "scheme", 1, path, sizeof path))
        return errorf(601, "scheme %s not found\n", name);
    FILE* f = fopen(path, "r");
    if (!f) return errorf(603, "scheme %s could not be opened\n", name);
    char buf[4096];
    int lineno = 0, rc = 0;
    while (!rc && fgets(buf, sizeof buf, f)) {
        lineno++;
        if (stopflag) {
            rc = 1;
            break;
        }
        std::string line = trim(buf);
        if (line.empty() || line[0] == '*') continue;
        if (line.compare(0, 9, "#include ") == 0) {
            rc = read_file(trim(line.substr(9)).c_str(), root, nest + 1);
            continue;
        }
        size_t sp = line.find_first_of(" \t");
        std::string p = line.substr(0, sp);
        std::string value = sp == std::string::npos ? "" : trim(line.substr(sp));
        std::vector<std::string> parts = split_path(p);
        bool ok = !value.empty();
        for (auto& part : parts) ok = ok && cls_chkname(part.c_str());
        if (!ok) {
            rc = errorf(198, "scheme %s, line %d: path and value expected\n", name, lineno);
            break;
        }
        clskey at = root;
        for (size_t i = 0; i + 1 < parts.size() && !rc; i++)
            rc = level(at, parts[i], i == 1 ? parts[0] : std::string(), &at);
        if (!rc) rc = set_leaf(at, parts.back(), value);
        if (rc && rc >= 4000)
            rc = errorf(rc, "scheme %s, line %d: %s cannot be set\n", name, lineno, p.c_str());
    }
    fclose(f);
    return rc;
}

int cls_scheme_load(const char* name) {
    char path[1024];
    if (!cls_chkname(name) || !srchado(name, "scheme", 1, path, sizeof path))
        return errorf(601, "scheme %s not found\n", name);
    clskey root;
    if (int rc = new_holder(&root)) return rc;
    if (int rc = read_file(name, root, 0)) {
        cls_unlink(root);
        return rc;
    }
    // in place of the scheme there was
    clskey n = cls_find_global("__SCHEME");
    if (!n && cls_make_global("__SCHEME", &n)) {
        cls_unlink(root);
        return error(950);
    }
    return cls_hold_key(reinterpret_cast<clskey*>(cls_ndata(cls_node(n))), root);
}

int cls_set_scheme(const char* name) {
    if (int rc = cls_scheme_load(name)) return rc;
    current_scheme = name;
    tried_current = true;
    return 0;
}

const char* cls_scheme_current() {
    return current_scheme.c_str();
}

clskey cls_scheme_root() {
    clskey v = cls_drill(cls_find_global("__SCHEME"));
    if (v || tried_current) return v;
    tried_current = true;
    char path[1024];
    if (!srchado(current_scheme.c_str(), "scheme", 1, path, sizeof path)) return nullkey;
    if (cls_scheme_load(current_scheme.c_str())) return nullkey;
    return cls_drill(cls_find_global("__SCHEME"));
}

void cls_scheme_forget() {
    tried_current = false;
}

} // namespace korvu
