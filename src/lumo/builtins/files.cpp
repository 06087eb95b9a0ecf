// Files: handles on open files, reading and writing bytes and lines,
// seeking, and the path and directory helpers. Handles are small integers;
// at most 50 files are open at once (3611 beyond). The `_` forms return a
// negative code where the plain ones abort.
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "kernel/macro/macro.h"
#include "lumo/builtins/bi.h"
#include "lumo/io/lumofile.h"

namespace korvu {

inline constexpr int BI_MAXFILES = 50;
struct BiFile {
    FILE* fp;
    char mode; // 'r', 'w', 'a', 'u' (read and write)
};
static BiFile files[BI_MAXFILES];

// The code of a failed open: 601 not found, 602 exists (w mode has none),
// 603 could not be opened, 608 read-only.
static int opencode(int err) {
    switch (err) {
    case ENOENT: return 601;
    case EACCES:
    case EROFS: return 608;
    default: return 603;
    }
}

// Ends with code, aborting (plain) or returning -code (status form).
static void failwith(int n, bool status, int code) {
    if (status) return void(bi_realres(n, -code));
    static const struct {
        int code;
        const char* text;
    } texts[] = {
        {601, "file not found"},    {602, "file already exists"}, {603, "file could not be opened"},
        {608, "file is read-only"}, {691, "I/O error"},           {693, "could not write to file"}};
    for (const auto& t : texts)
        if (t.code == code) return m_custom_xeqerr(code, "%s", t.text);
    m_xeqerr(code);
}

// fopen(name, mode[, public]): mode "r", "w", "a" or "rw".
static void fileopen(int n, bool status) {
    std::string name, mode;
    if (!bi_getstr(n, 0, &name) || !bi_getstr(n, 1, &mode)) return;
    const char* cm = mode == "r"    ? "rb"
                     : mode == "w"  ? "wb"
                     : mode == "a"  ? "ab"
                     : mode == "rw" ? "r+b"
                                    : nullptr;
    if (!cm) return failwith(n, status, 3603);
    if (name.empty()) return failwith(n, status, 3602);
    int h = -1;
    for (int k = 0; k < BI_MAXFILES; k++)
        if (!files[k].fp) {
            h = k;
            break;
        }
    if (h < 0) return failwith(n, status, 3611);
    if (mode == "w") {
        // a new file only: an existing one is not overwritten
        struct stat st;
        if (stat(name.c_str(), &st) == 0) return failwith(n, status, 602);
    }
    FILE* fp = fopen(name.c_str(), cm);
    if (!fp && mode == "rw" && errno == ENOENT) fp = fopen(name.c_str(), "w+b");
    if (!fp) return failwith(n, status, opencode(errno));
    files[h] = BiFile{fp, mode == "rw" ? 'u' : mode[0]};
    bi_realres(n, h + 1);
}
static void bi_fopen(int n) {
    fileopen(n, false);
}
static void bi_ufopen(int n) {
    fileopen(n, true);
}

// The handle of argument k; null with 3601 (or the status) when not open.
static BiFile* handle(int n, int k, bool status) {
    double x;
    if (!bi_getreal(n, k, &x)) return nullptr;
    const int h = x >= 1 && x <= BI_MAXFILES ? static_cast<int>(x) - 1 : -1;
    if (h < 0 || x != h + 1 || !files[h].fp) {
        failwith(n, status, 3601);
        return nullptr;
    }
    return &files[h];
}

static void fileclose(int n, bool status) {
    BiFile* f = handle(n, 0, status);
    if (!f) return;
    const int rc = fclose(f->fp);
    f->fp = nullptr;
    if (rc) return failwith(n, status, 691);
    if (status) return void(bi_realres(n, 0));
    bi_voidres(n);
}
static void bi_fclose(int n) {
    fileclose(n, false);
}
static void bi_ufclose(int n) {
    fileclose(n, true);
}

// fget(fh[, max]): the next line without its end; at the end of the file
// a 0 x 0 string (J(0,0,"")); fgetnl keeps the newline.
static void lineread(int n, bool keepnl, bool status) {
    BiFile* f = handle(n, 0, status);
    if (!f) return;
    if (f->mode == 'w' || f->mode == 'a') return failwith(n, status, 3622);
    double mx = 32768;
    if (n == 2 && !bi_getreal(n, 1, &mx)) return;
    std::string line;
    int c = 0;
    bool any = false;
    while (static_cast<double>(line.size()) < mx && (c = fgetc(f->fp)) != EOF) {
        any = true;
        if (c == '\n') {
            if (keepnl) line += '\n';
            break;
        }
        line += static_cast<char>(c);
    }
    if (!any) return void(bi_result(n, bi_new(MT_STRING, 0, 0)));
    if (!keepnl && !line.empty() && line.back() == '\r') line.pop_back();
    bi_strres(n, line);
}
static void bi_fget(int n) {
    lineread(n, false, false);
}
static void bi_ufget(int n) {
    lineread(n, false, true);
}
static void bi_fgetnl(int n) {
    lineread(n, true, false);
}
static void bi_ufgetnl(int n) {
    lineread(n, true, true);
}
// fread(fh, len): up to len bytes; 0 x 0 at the end.
static void byteread(int n, bool status) {
    BiFile* f = handle(n, 0, status);
    int64_t len;
    if (!f || !bi_getint(n, 1, 0, 2147483647, &len)) return;
    if (f->mode == 'w' || f->mode == 'a') return failwith(n, status, 3622);
    std::string buf(static_cast<size_t>(len), '\0');
    const size_t got = fread(buf.data(), 1, buf.size(), f->fp);
    if (got == 0 && len > 0) return void(bi_result(n, bi_new(MT_STRING, 0, 0)));
    buf.resize(got);
    bi_strres(n, buf);
}
static void bi_fread(int n) {
    byteread(n, false);
}
static void bi_ufread(int n) {
    byteread(n, true);
}
// fput(fh, s): s and a newline; fwrite(fh, s): s alone.
static void write(int n, bool nl, bool status) {
    BiFile* f = handle(n, 0, status);
    std::string s;
    if (!f || !bi_getstr(n, 1, &s)) return;
    if (f->mode == 'r') return failwith(n, status, 3621);
    if (nl) s += '\n';
    if (fwrite(s.data(), 1, s.size(), f->fp) != s.size()) return failwith(n, status, 693);
    if (status) return void(bi_realres(n, 0));
    bi_voidres(n);
}
static void bi_fput(int n) {
    write(n, true, false);
}
static void bi_ufput(int n) {
    write(n, true, true);
}
static void bi_fwrite(int n) {
    write(n, false, false);
}
static void bi_ufwrite(int n) {
    write(n, false, true);
}
// fstatus(fh): 0, or -1 at the end of the file.
static void bi_fstatus(int n) {
    BiFile* f = handle(n, 0, false);
    if (!f) return;
    bi_realres(n, feof(f->fp) ? -1 : ferror(f->fp) ? -691 : 0);
}
// fseek(fh, offset, whence): whence -1 from the start, 0 from here, 1 from
// the end.
static void seek(int n, bool status) {
    BiFile* f = handle(n, 0, status);
    double off, wh;
    if (!f || !bi_getreal(n, 1, &off) || !bi_getreal(n, 2, &wh)) return;
    if (f->mode == 'a') return failwith(n, status, 3623);
    const int w = wh == -1 ? SEEK_SET : wh == 0 ? SEEK_CUR : wh == 1 ? SEEK_END : -1;
    if (w < 0 || off >= misval) return failwith(n, status, 3300);
    if (fseeko(f->fp, static_cast<off_t>(off), w)) return failwith(n, status, 3698);
    if (status) return void(bi_realres(n, 0));
    bi_voidres(n);
}
static void bi_fseek(int n) {
    seek(n, false);
}
static void bi_ufseek(int n) {
    seek(n, true);
}
// ftruncate(fh): cut the file at the present position.
static void truncate(int n, bool status) {
    BiFile* f = handle(n, 0, status);
    if (!f) return;
    if (f->mode == 'r') return failwith(n, status, 3621);
    fflush(f->fp);
    if (ftruncate(fileno(f->fp), ftello(f->fp))) return failwith(n, status, 691);
    if (status) return void(bi_realres(n, 0));
    bi_voidres(n);
}
static void bi_ftruncate(int n) {
    truncate(n, false);
}
static void bi_uftruncate(int n) {
    truncate(n, true);
}

static void bi_tmpfilename(int n) {
    char buf[4096];
    if (mktmpfn(buf, sizeof buf)) return m_xeqerr(3602);
    bi_strres(n, buf);
}
static void removefile(int n, bool status) {
    std::string name;
    if (!bi_getstr(n, 0, &name)) return;
    if (::unlink(name.c_str()) && errno != ENOENT) return failwith(n, status, 693);
    if (status) return void(bi_realres(n, 0));
    bi_voidres(n);
}
static void bi_unlink(int n) {
    removefile(n, false);
}
static void bi_uunlink(int n) {
    removefile(n, true);
}
static void bi_uchdir(int n) {
    std::string d;
    if (!bi_getstr(n, 0, &d)) return;
    bi_realres(n, chdir(d.c_str()) ? -170 : 0);
}
static void bi_urmdir(int n) {
    std::string d;
    if (!bi_getstr(n, 0, &d)) return;
    bi_realres(n, rmdir(d.c_str()) ? -693 : 0);
}
static void bi_umkdir(int n) {
    std::string d;
    double pub = 0;
    if (!bi_getstr(n, 0, &d)) return;
    if (n == 2 && !bi_getreal(n, 1, &pub)) return;
    bi_realres(n, mkdir(d.c_str(), pub != 0 ? 0755 : 0700) ? -693 : 0);
}
static void bi_pwd(int n) {
    char buf[4096];
    if (!getcwd(buf, sizeof buf)) return m_xeqerr(3621);
    std::string s = buf;
    if (s.empty() || s.back() != '/') s += '/';
    bi_strres(n, s);
}
static void bi_direxists(int n) {
    std::string d;
    if (!bi_getstr(n, 0, &d)) return;
    struct stat st;
    bi_realres(n, stat(d.c_str(), &st) == 0 && S_ISDIR(st.st_mode));
}
// dir(dirname, "files"|"dirs"|"other", pattern[, prefix]): the names, a
// column sorted.
static bool wildm(const char* p, const char* s) {
    for (; *p; p++, s++) {
        if (*p == '*') {
            for (; *s; s++)
                if (wildm(p + 1, s)) return true;
            return wildm(p + 1, s);
        }
        if (!*s || (*p != '?' && *p != *s)) return false;
    }
    return !*s;
}
static void bi_dir(int n) {
    std::string d, kind, pat;
    double prefix = 0;
    if (!bi_getstr(n, 0, &d) || !bi_getstr(n, 1, &kind) || !bi_getstr(n, 2, &pat)) return;
    if (n == 4 && !bi_getreal(n, 3, &prefix)) return;
    if (kind != "files" && kind != "dirs" && kind != "other") return m_xeqerr(3300);
    std::vector<std::string> names;
    if (DIR* dp = opendir(d.empty() ? "." : d.c_str())) {
        while (dirent* e = readdir(dp)) {
            const std::string nm = e->d_name;
            if (nm == "." || nm == "..") continue;
            struct stat st;
            const std::string full = (d.empty() ? "." : d) + "/" + nm;
            if (stat(full.c_str(), &st)) continue;
            const bool isdir = S_ISDIR(st.st_mode), isreg = S_ISREG(st.st_mode);
            if ((kind == "files" && !isreg) || (kind == "dirs" && !isdir) ||
                (kind == "other" && (isdir || isreg)))
                continue;
            if (!wildm(pat.c_str(), nm.c_str())) continue;
            names.push_back(prefix != 0 ? full : nm);
        }
        closedir(dp);
    }
    std::sort(names.begin(), names.end());
    MObj* o = bi_new(MT_STRING, static_cast<int64_t>(names.size()), 1);
    if (!o) return;
    for (size_t k = 0; k < names.size(); k++) m_sel(o)[k] = bi_cell(names[k]);
    bi_result(n, o);
}

// Paths.
static void bi_pathisurl(int n) {
    std::string s;
    if (!bi_getstr(n, 0, &s)) return;
    bi_realres(n, !s.compare(0, 7, "http://") || !s.compare(0, 8, "https://") ||
                      !s.compare(0, 6, "ftp://"));
}
static void bi_pathisabs(int n) {
    std::string s;
    if (!bi_getstr(n, 0, &s)) return;
    bi_realres(n, !s.empty() && (s[0] == '/' || s[0] == '~'));
}
static std::string suffix(const std::string& s) {
    const size_t slash = s.find_last_of('/');
    const size_t dot = s.find_last_of('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
    return s.substr(dot);
}
static void bi_pathsuffix(int n) {
    std::string s;
    if (bi_getstr(n, 0, &s)) bi_strres(n, suffix(s));
}
static void bi_pathrmsuffix(int n) {
    std::string s;
    if (bi_getstr(n, 0, &s)) bi_strres(n, s.substr(0, s.size() - suffix(s).size()));
}
static void bi_pathbasename(int n) {
    std::string s;
    if (!bi_getstr(n, 0, &s)) return;
    const size_t slash = s.find_last_of('/');
    bi_strres(n, slash == std::string::npos ? s : s.substr(slash + 1));
}
static void bi_pathjoin(int n) {
    std::string a, b;
    if (!bi_getstr(n, 0, &a) || !bi_getstr(n, 1, &b)) return;
    if (a.empty() || (!b.empty() && b[0] == '/')) return void(bi_strres(n, b));
    bi_strres(n, a.back() == '/' ? a + b : a + "/" + b);
}
// The suffixes the system's own files carry.
static void bi_pathkorvusuffix(int n) {
    std::string s;
    if (!bi_getstr(n, 0, &s)) return;
    const std::string x = suffix(s);
    static const char* const mine[] = {".dta", ".do",   ".ado",   ".hlp", ".ptag", ".gph",
                                       ".lo",  ".llib", ".class", ".dlg", ".idlg", ".smcl"};
    bool r = false;
    for (const char* m : mine) r |= x == m;
    bi_realres(n, r);
}
static void bi_pathasciisuffix(int n) {
    std::string s;
    if (!bi_getstr(n, 0, &s)) return;
    const std::string x = suffix(s);
    static const char* const text[] = {".do",  ".ado", ".hlp",   ".ptag", ".txt",  ".raw",
                                       ".csv", ".log", ".class", ".dlg",  ".idlg", ".out"};
    bool r = false;
    for (const char* m : text) r |= x == m;
    bi_realres(n, r);
}
// adosubdir(name): the letter directory of the ado tree ("a" for "abc").
static void bi_adosubdir(int n) {
    std::string s;
    if (!bi_getstr(n, 0, &s)) return;
    if (s.empty()) return void(bi_strres(n, ""));
    const char c = static_cast<char>(tolower(static_cast<unsigned char>(s[0])));
    bi_strres(n, std::string(1, (c >= 'a' && c <= 'z') ? c : '_'));
}

// fputmatrix(fh, X) and fgetmatrix(fh): one matrix in the object stream of
// the library files; at the end of the file fgetmatrix gives J(0, 0, .).
static int moiocode(int rc) {
    switch (rc) {
    case 3: return 693;  // could not write
    case 4: return 3900; // no memory
    case 7: return 3102; // a function
    case 2: return 3250; // a kind the stream does not hold (views, structures)
    default: return 610; // not a matrix stream
    }
}
static void putmatrix(int n, bool status) {
    BiFile* f = handle(n, 0, status);
    if (!f) return;
    if (f->mode == 'r') return failwith(n, status, 3621);
    MObj* x = bi_mat(n, 1);
    if (!x) return;
    if (int rc = fputmatrix(f->fp, x)) return failwith(n, status, moiocode(rc));
    if (status) return void(bi_realres(n, 0));
    bi_voidres(n);
}
static void bi_fputmatrix(int n) {
    putmatrix(n, false);
}
static void bi_ufputmatrix(int n) {
    putmatrix(n, true);
}
static void getmatrix(int n, bool status) {
    BiFile* f = handle(n, 0, status);
    if (!f) return;
    if (f->mode == 'w' || f->mode == 'a') return failwith(n, status, 3622);
    MObj* x = nullptr;
    if (int rc = fgetmatrix(f->fp, &x)) return failwith(n, status, moiocode(rc));
    bi_result(n, x);
}
static void bi_fgetmatrix(int n) {
    getmatrix(n, false);
}
static void bi_ufgetmatrix(int n) {
    getmatrix(n, true);
}

void bi_link_files(MBiFn* t) {
    t[bi_index("fputmatrix")] = bi_fputmatrix;
    t[bi_index("_fputmatrix")] = bi_ufputmatrix;
    t[bi_index("fgetmatrix")] = bi_fgetmatrix;
    t[bi_index("_fgetmatrix")] = bi_ufgetmatrix;
    t[bi_index("fopen")] = bi_fopen;
    t[bi_index("_fopen")] = bi_ufopen;
    t[bi_index("fclose")] = bi_fclose;
    t[bi_index("_fclose")] = bi_ufclose;
    t[bi_index("fget")] = bi_fget;
    t[bi_index("_fget")] = bi_ufget;
    t[bi_index("fgetnl")] = bi_fgetnl;
    t[bi_index("_fgetnl")] = bi_ufgetnl;
    t[bi_index("fread")] = bi_fread;
    t[bi_index("_fread")] = bi_ufread;
    t[bi_index("fput")] = bi_fput;
    t[bi_index("_fput")] = bi_ufput;
    t[bi_index("fwrite")] = bi_fwrite;
    t[bi_index("_fwrite")] = bi_ufwrite;
    t[bi_index("fstatus")] = bi_fstatus;
    t[bi_index("fseek")] = bi_fseek;
    t[bi_index("_fseek")] = bi_ufseek;
    t[bi_index("ftruncate")] = bi_ftruncate;
    t[bi_index("_ftruncate")] = bi_uftruncate;
    t[bi_index("tmpfilename")] = bi_tmpfilename;
    t[bi_index("unlink")] = bi_unlink;
    t[bi_index("_unlink")] = bi_uunlink;
    t[bi_index("_chdir")] = bi_uchdir;
    t[bi_index("_rmdir")] = bi_urmdir;
    t[bi_index("_mkdir")] = bi_umkdir;
    t[bi_index("pwd")] = bi_pwd;
    t[bi_index("dir")] = bi_dir;
    t[bi_index("direxists")] = bi_direxists;
    t[bi_index("pathisurl")] = bi_pathisurl;
    t[bi_index("pathisabs")] = bi_pathisabs;
    t[bi_index("pathasciisuffix")] = bi_pathasciisuffix;
    t[bi_index("pathkorvusuffix")] = bi_pathkorvusuffix;
    t[bi_index("pathsuffix")] = bi_pathsuffix;
    t[bi_index("pathrmsuffix")] = bi_pathrmsuffix;
    t[bi_index("pathbasename")] = bi_pathbasename;
    t[bi_index("pathjoin")] = bi_pathjoin;
    t[bi_index("adosubdir")] = bi_adosubdir;
}

} // namespace korvu
