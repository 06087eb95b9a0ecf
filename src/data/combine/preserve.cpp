// preserve and restore. The live preserve of a frame is `psvfctr`, the
// counter its temporary file was named by; the dictionary entry of kind 16
// named by that number in decimal holds what the restore needs besides the
// file: memory size, the changed flag, how the data were kept, and the name
// and date of the dataset's file.
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "data/area/areahooks.h"
#include "data/area/dataarea.h"
#include "data/combine/combine.h"
#include "data/combine/combine_internal.h"
#include "data/dta/dta.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/flow/dofile.h"
#include "kernel/loop/brk.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/cmdparse.h"
#include "output/spout.h"

namespace korvu {

namespace {

// How the data were kept.
enum : uint8_t { KEPT_NONE = 0, KEPT_FILE = 1, KEPT_EMPTY = 2 };

// The fixed head of the entry; the text of S_FN follows it.
struct PsvHead {
    uint64_t totalmemory;
    uint8_t updata;
    uint8_t kept;    // KEPT_*
    uint8_t fnknown; // S_FN was set
    char fndate[18];
};

void entryname(char* dst, size_t n, int32_t ctr) {
    std::snprintf(dst, n, "%d", ctr);
}

// Puts back the dataset's file name and date as the entry has them.
void put_fn(const PsvHead& h, const char* fn) {
    if (h.fnknown) {
        macresave("S_FN", fn);
        macresave("S_FNDATE", h.fndate);
        std::snprintf(filesp, sizeof filesp, "%s", fn);
    } else {
        macresave("S_FN", "");
        macresave("S_FNDATE", "");
        filesp[0] = 0;
    }
}

// The saved dataset back into memory, silently and without a break; the
// estimation results stay.
int load_saved(const char* file) {
    UseOpts o;
    o.label = true;
    o.orphans = true;
    void (*discard)() = dahooks.discard_results;
    dahooks.discard_results = nullptr;
    const int32_t stop = stopflag, alt = altstopflag;
    stopflag = 0;
    altstopflag = 0;
    const int32_t rate = poll_rate;
    poll_rate = 2147483647; // no event handling in the middle of a restore
    int rc = dta_use(file, o);
    poll_rate = rate;
    stopflag = stop;
    altstopflag = alt;
    dahooks.discard_results = discard;
    return rc;
}

} // namespace

int syspreserve(int changed) {
    if (psvfctr != -1) return error(621);
    PsvHead h{};
    h.totalmemory = totalmemory;
    h.updata = updata;
    const char* fn = macptr("S_FN");
    const char* fd = macptr("S_FNDATE");
    h.fnknown = fn && *fn;
    if (fd) std::snprintf(h.fndate, sizeof h.fndate, "%s", fd);
    std::string fname = h.fnknown ? fn : "";
    h.kept = changed ? KEPT_NONE : nvar == 0 ? KEPT_EMPTY : KEPT_FILE;

    char tmp[FNLEN];
    const int32_t ctr = tmpfctr;
    if (int rc = mktmpfn(tmp, sizeof tmp)) return error(rc);
    char name[16];
    entryname(name, sizeof name, ctr);
    std::string blob(sizeof h + fname.size() + 1, '\0');
    std::memcpy(blob.data(), &h, sizeof h);
    std::memcpy(blob.data() + sizeof h, fname.c_str(), fname.size());
    if (!dmsave(name, DM_ESTPRESERVE, 0, blob.data(), blob.size())) return error(950);
    psvfctr = ctr;
    if (h.kept != KEPT_FILE) return 0;

    SaveOpts o;
    o.replace = true;
    o.label = true;
    o.orphans = true;
    o.all = true;
    o.emptyok = true;
    const uint8_t lev = s_outlev;
    s_outlev = 5;
    int rc = syssave(tmp, o);
    s_outlev = lev;
    updata = h.updata;
    put_fn(h, fname.c_str());
    if (rc) {
        ::unlink(tmp);
        if (void* e = dmfind(name, DM_ESTPRESERVE, nullptr)) dmrm(e);
        psvfctr = -1;
        return rc == 1 ? 1 : errtext(rc, "data could not be preserved\n");
    }
    return 0;
}

// Empties the data as `drop _all` does, but keeps the results: an empty
// dataset coming back is not a new dataset.
static void drop_keeping_results() {
    void (*discard)() = dahooks.discard_results;
    dahooks.discard_results = nullptr;
    drop_all(0);
    dahooks.discard_results = discard;
}

int restore(int flags) {
    if (psvfctr == -1) {
        if (flags & RESTORE_AUTO) return 0;
        return error(622);
    }
    char name[16];
    entryname(name, sizeof name, psvfctr);
    char tmp[FNLEN];
    gettmpfn(tmp, sizeof tmp, 't', psvfctr);
    void* e = dmfind(name, DM_ESTPRESERVE, nullptr);
    if (!e) { // the entry went (a cleared dictionary): nothing to bring back
        ::unlink(tmp);
        psvfctr = -1;
        return (flags & RESTORE_AUTO) ? 0 : error(622);
    }
    PsvHead h;
    std::memcpy(&h, e, sizeof h);
    std::string fn = static_cast<const char*>(e) + sizeof h;
    if (!(flags & RESTORE_NOT)) {
        const uint8_t lev = s_outlev;
        s_outlev = 5;
        int rc = 0;
        if (h.kept == KEPT_FILE) {
            rc = load_saved(tmp);
            if (rc >= 900 && rc < 1000) {
                news_realloc(h.totalmemory);
                rc = load_saved(tmp);
            }
        } else if (h.kept == KEPT_EMPTY) {
            drop_keeping_results();
        }
        s_outlev = lev;
        i_nvar = nvar;
        if (rc) {
            // the file and the entry stay, so that the restore can be tried again
            return errorf(rc, "preserved data could not be restored; they remain in %s\n", tmp);
        }
        updata = h.updata;
        put_fn(h, fn.c_str());
    }
    if (!(flags & RESTORE_PRESERVE) || (flags & RESTORE_NOT)) {
        ::unlink(tmp);
        dmrm(e);
        psvfctr = -1;
    }
    return 0;
}

int snapshot_save(Snapshot& s) {
    char tmp[FNLEN];
    if (int rc = mktmpfn(tmp, sizeof tmp)) return error(rc);
    s.updata = updata;
    s.fn = macptr("S_FN") ? macptr("S_FN") : "";
    s.fndate = macptr("S_FNDATE") ? macptr("S_FNDATE") : "";
    s.filesp = filesp;
    s.file.clear();
    if (!nvar) return 0;
    SaveOpts o;
    o.replace = o.label = o.orphans = o.all = o.emptyok = true;
    const uint8_t lev = s_outlev;
    s_outlev = 5;
    int rc = syssave(tmp, o);
    s_outlev = lev;
    updata = s.updata;
    macresave("S_FN", s.fn.c_str());
    macresave("S_FNDATE", s.fndate.c_str());
    std::snprintf(filesp, sizeof filesp, "%s", s.filesp.c_str());
    if (rc) {
        ::unlink(tmp);
        return errtext(rc, "data could not be kept aside\n");
    }
    s.file = tmp;
    return 0;
}

int snapshot_load(const Snapshot& s) {
    const uint8_t lev = s_outlev;
    s_outlev = 5;
    int rc = 0;
    if (!s.file.empty()) {
        rc = load_saved(s.file.c_str());
    } else {
        drop_keeping_results();
    }
    s_outlev = lev;
    i_nvar = nvar;
    updata = s.updata;
    macresave("S_FN", s.fn.c_str());
    macresave("S_FNDATE", s.fndate.c_str());
    std::snprintf(filesp, sizeof filesp, "%s", s.filesp.c_str());
    if (!s.file.empty()) ::unlink(s.file.c_str());
    return rc;
}

void link_combine() {
    frame_hooks.restore = restore;
}

} // namespace korvu
