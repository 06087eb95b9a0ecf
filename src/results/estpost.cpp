// ereturn post and repost, the hold table of estimates (_estimates) and
// held returns (_return).
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/area/storage.h"
#include "data/labels/label.h"
#include "data/sort/sort.h"
#include "data/vars/char.h"
#include "data/vars/vartab.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/flow/dofile.h"
#include "kernel/loop/brk.h"
#include "kernel/loop/limits.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "output/spout.h"
#include "results/estore.h"
#include "results/stores.h"

namespace korvu {

uint8_t hastmp_estheld = 0;

namespace {

// "last estimates not found", with its own code 301.
int noest() {
    error(301);
    return 301;
}

bool matrices_ready() {
    return matlink.load && matlink.save && matlink.drop;
}

int mats_notyet() {
    return errtext(199, "matrices not yet available\n");
}

bool has_eqnames(const DenseMat& b) {
    for (auto& n : b.colnames)
        if (n.find(':') != std::string::npos) return true;
    return false;
}

// The esample() variable: values 0 and 1 only; 0 or 471.
int check_esample(int v) {
    if (typlist[v - 1] <= 244) return error(471);
    if (typlist[v - 1] != KV_BYTE) return 0; // any value but 0 counts as 1
    for (int i = 1; i <= nobs; ++i) {
        double x = korvu_data(v, i);
        if (x != 0 && x != 1) return error(471);
    }
    return 0;
}

// Makes variable v the marker; a non-byte one is copied and then dropped.
int take_esample(int v) {
    if (typlist[v - 1] == KV_BYTE) return marker_adopt(v);
    std::string name = varname(v);
    int m;
    if (int rc = marker_new(&m)) return rc;
    v = sysfindvar(name.c_str());
    for (int i = 1; i <= nobs; ++i) store(m, i, korvu_data(v, i) != 0 ? 1 : 0);
    char_dropvar(varname(v));
    putvarlab(v, "");
    movevar(v, nvar);
    --nvar;
    i_nvar = nvar;
    return 0;
}

} // namespace

// ereturn post [b [V [Cns]]] [, clear depname() obs() dof() esample() properties()]
// ereturn repost [b = name] [V = name] [, esample() rename properties()]
int epostcmd(int repost) {
    std::string names[3];
    if (repost) {
        if (!lastest) return noest();
        bool seen[2] = {false, false};
        for (;;) {
            TokPos at;
            stattok(&at);
            gettok(prsestd);
            if (!token[0] || tokis(token, ",")) {
                resettok(&at);
                break;
            }
            int k = (tokis(token, "b") || tokis(token, "_b"))    ? 0
                    : (tokis(token, "V") || tokis(token, "VCE")) ? 1
                                                                 : -1;
            if (k < 0 || seen[k]) return error(198);
            seen[k] = true;
            if (gtokis('=')) return error(198);
            gettok(prsestd);
            if (!token[0]) return error(198);
            names[k] = token;
        }
    } else {
        for (int k = 0; k < 3; ++k) {
            TokPos at;
            stattok(&at);
            gettok(prsestd);
            if (!token[0] || iskey(token) || tokis(token, ",")) {
                resettok(&at);
                break;
            }
            names[k] = token;
        }
    }
    vable = ifable = oable = wgtable = 3;
    opable = 0;
    if (int rc = parse()) return rc;
    int clear = repost ? 0 : findopt("clear", 5, 0);
    int rename = repost ? findopt("rename", 6, 0) : 0;
    char depname[64] = "", props[512] = "", esname[64] = "";
    double obs = misval, dof = misval;
    bool haveprops = false;
    if (!repost) {
        findargn("depname", 3, depname, sizeof depname, 1);
        if (std::strlen(depname) > 54) return error(198);
        double v;
        if (findoptv("obs", 1, &v, 1, 0)) obs = v;
        if (findoptv("dof", 3, &v, 1, 0)) dof = v;
    }
    findargn("esample", 1, esname, sizeof esname, 1);
    {
        int before = lastopt;
        findargn("properties", 4, props, sizeof props, 64);
        haveprops = lastopt != before && lastopt != 0;
    }
    if (int rc = chkopt()) return rc;
    int esv = 0;
    if (esname[0]) {
        esv = korvu_findvar(esname, 0, 0);
        if (esv < 0) return -esv;
    }
    // properties: each word a name
    if (haveprops) {
        std::string p = props, w;
        for (size_t i = 0; i <= p.size(); ++i) {
            if (i == p.size() || p[i] == ' ') {
                if (!w.empty() && chkname(w.c_str(), 0)) return error(198);
                w.clear();
            } else {
                w += p[i];
            }
        }
    }
    DenseMat b, V, C;
    bool hb = !names[0].empty(), hv = !names[1].empty(), hc = !names[2].empty();
    if ((hb || hv || hc) && !matrices_ready()) return mats_notyet();
    if (hb && matlink.load(names[0].c_str(), DM_MATRIX, &b)) return matnotfound(names[0].c_str());
    if (hv && matlink.load(names[1].c_str(), DM_MATRIX, &V)) return matnotfound(names[1].c_str());
    if (hc && matlink.load(names[2].c_str(), DM_MATRIX, &C)) return matnotfound(names[2].c_str());
    if (repost) {
        DenseMat ob, oV;
        if (hb && (matlink.load("_b", ET_RECORD, &ob) || ob.rows != b.rows || ob.cols != b.cols))
            return error(503);
        if (hv && (matlink.load("VCE", ET_RECORD, &oV) || oV.rows != V.rows || oV.cols != V.cols))
            return error(503);
    }
    const char* label = repost ? "estimates repost" : "estimates post";
    if (hb) {
        if (b.rows != 1) return error(503);
        for (double x : b.x)
            if (x >= misval) return errtext(504, "estimates post:  matrix has missing values\n");
    }
    if (hv && (V.rows != V.cols || (hb && V.rows != b.cols))) return error(503);
    if (hc) {
        if (!hb || C.cols != b.cols + 1) return error(503);
        for (double x : C.x)
            if (x >= misval) return errtext(504, "estimates post:  matrix has missing values\n");
    }
    if (hb && !hv && !repost) {
        size_t named = 0;
        for (auto& n : b.colnames) named += n.find(':') != std::string::npos;
        if (named && named != b.colnames.size()) return error(507);
    }
    if (hv && hb && !repost) {
        for (int i = 0; i < V.rows; ++i)
            if (V.rownames[i] != b.colnames[i] || V.colnames[i] != b.colnames[i]) return error(507);
    }
    if (hv)
        if (int rc = vcheck(V, label)) return error(rc);
    if (esv)
        if (int rc = check_esample(esv)) return rc;
    // Nothing has changed so far; from here a failure leaves e() empty.
    // N defaults to e(N) when that is a whole number
    double N = RETVAL_NOTGIVEN;
    if (!repost && !clear) {
        double n = estval_get_double("N");
        if (n < misval && n == std::floor(n)) N = n;
    }
    if (repost) {
        if (hb) {
            if (rename) b.rownames.assign(1, "y1");
            DenseMat ob;
            matlink.load("_b", ET_RECORD, &ob);
            if (!rename) b.colnames = ob.colnames;
            if (matlink.save("_b", ET_RECORD, b)) return ab_est(1);
            matlink.drop(names[0].c_str(), DM_MATRIX);
        }
        if (hv) {
            DenseMat oV;
            matlink.load("VCE", ET_RECORD, &oV);
            if (!rename) V.rownames = oV.rownames, V.colnames = oV.colnames;
            if (matlink.save("VCE", ET_RECORD, V)) return ab_est(1);
            matlink.drop(names[1].c_str(), DM_MATRIX);
        }
        if (esv && take_esample(esv)) return ab_est(1);
        if (haveprops && estval_reset_local("properties", props)) return ab_est(1);
        return 0;
    }
    std::string esvname = esv ? varname(esv) : "";
    if (clear)
        ab_est(1);
    else
        estval_partial_clear_for_post();
    if (esv) {
        esv = sysfindvar(esvname.c_str());
        if (esv && take_esample(esv)) return ab_est(1);
        reset_sort(0);
    }
    bool eq = hb && has_eqnames(b);
    // the estimation record
    struct Gamma {
        int32_t N, k;
        uint8_t haseq, hasb, hasv;
        char dep[55];
    } g{};
    g.N = obs < misval ? static_cast<int32_t>(obs) : static_cast<int32_t>(N);
    g.k = hb ? b.cols : -1;
    g.haseq = eq, g.hasb = hb, g.hasv = hv;
    snprintf(g.dep, sizeof g.dep, "%s", depname);
    if (!dmsave("gamma", ET_RECORD, g.k, &g, sizeof g)) return ab_est(1);
    if (eq) {
        std::string eqs, last;
        for (auto& n : b.colnames) {
            std::string e = n.substr(0, n.find(':'));
            if (e != last) eqs += (eqs.empty() ? "" : " ") + e;
            last = e;
        }
        if (!dmsave("_bn", ET_RECORD, 0, eqs.c_str(), eqs.size() + 1)) return ab_est(1);
    }
    if (hb) {
        if (matlink.save("_b", ET_RECORD, b)) return ab_est(1);
        matlink.drop(names[0].c_str(), DM_MATRIX);
    }
    if (hv) {
        if (matlink.save("VCE", ET_RECORD, V)) return ab_est(1);
        matlink.drop(names[1].c_str(), DM_MATRIX);
    }
    if (hc) {
        if (matlink.save("Cns", ET_RECORD, C)) return ab_est(1);
        matlink.drop(names[2].c_str(), DM_MATRIX);
    }
    lastest = eq ? 19 : 18;
    lastest_op = 0;
    if (hb)
        for (auto& n : b.colnames)
            if (n.find('.') != std::string::npos) lastest_op = 1;
    if (std::strchr(depname, '.')) lastest_op = 1;
    if (obs < misval && estval_reset_scalar("N", obs)) return ab_est(1);
    if (dof < misval && estval_reset_scalar("df_r", dof)) return ab_est(1);
    if (depname[0] && estval_reset_local("depvar", depname)) return ab_est(1);
    const char* dflt = hv ? "b V" : hb ? "b" : "";
    if (estval_reset_local("properties", haveprops ? props : dflt)) return ab_est(1);
    return 0;
}

// --- the hold table --------------------------------------------------------------------

namespace {

struct HoldSlot {
    char name[33];
    char var[33];
    int32_t status; // 0 free, -1 held without estimates, else the saved lastest
    int32_t op;
    uint8_t fromstore;
    int32_t level;     // typelmac when made, for temporary names
    int32_t autolevel; // typelmac of the frame that restores it at its end, 0 none
};
HoldSlot holds[NHOLD];
bool holds_zeroed = false;

void zero_holds_once() {
    if (holds_zeroed) return;
    std::memset(holds, 0, sizeof holds);
    holds_zeroed = true;
}

int findhold(const char* name) {
    for (int i = 0; i < NHOLD; ++i)
        if (holds[i].status && !std::strcmp(holds[i].name, name)) return i;
    return -1;
}

// Slot i's ten types: 25 to 29, then 11, 10, 9, 15, and 5 with 2.
int slottype(int k, int i) {
    static const int base[10] = {49, 350, 651, 952, 1253, 1554, 1855, 2156, 2457, 2758};
    return base[k] + i;
}
const int holdfrom[10] = {ET_SCALAR, ET_MACRO,  ET_MATRIX, ET_MATROW, ET_MATCOL,
                          DM_MATCOL, DM_MATROW, DM_MATRIX, DM_SCALAR, ET_RECORD};

bool is_se(const void* it) {
    return !std::strncmp(dmname(it), "S_E_", 4);
}

// Moves (or copies) e() into slot i; 0 or 950.
int move_to_slot(int i, bool copy) {
    for (int k = 0; k < 10; ++k) {
        int from = holdfrom[k], to = slottype(k, i);
        std::vector<void*> list;
        for (void* it = dmnext(nullptr, nullptr, from, nullptr); it;
             it = dmnext(it, nullptr, from, nullptr))
            if (k < 5 || k == 9 || is_se(it)) list.push_back(it);
        if (k == 9)
            for (void* it = dmnext(nullptr, nullptr, DM_GMAC, nullptr); it;
                 it = dmnext(it, nullptr, DM_GMAC, nullptr))
                if (is_se(it)) list.push_back(it);
        for (void* it : list) {
            if (copy) {
                if (!dmsave(dmname(it), to, dmtag(it), it, dmsize(it))) return 950;
            } else {
                dmretype(it, to);
            }
        }
    }
    return 0;
}

void back_from_slot(int i) {
    for (int k = 0; k < 10; ++k) {
        int from = slottype(k, i);
        void* it = dmnext(nullptr, nullptr, from, nullptr);
        while (it) {
            void* next = dmnext(it, nullptr, from, nullptr);
            int to = holdfrom[k];
            if (k == 9 && is_se(it)) to = DM_GMAC;
            dmrm(dmfind0(dmname(it), to));
            dmretype(it, to);
            it = next;
        }
    }
}

void dropslot(int i) {
    if (holds[i].autolevel) estrestore = 0;
    for (int k = 0; k < 10; ++k) dmzap(slottype(k, i));
    if (holds[i].status != -1 && holds[i].var[0]) {
        int v = sysfindvar(holds[i].var);
        if (v) {
            char_dropvar(varname(v));
            putvarlab(v, "");
            movevar(v, nvar);
            --nvar;
            i_nvar = nvar;
        }
    }
    std::memset(&holds[i], 0, sizeof holds[i]);
}

bool istmpname(const char* n) {
    return n[0] == '_' && n[1] == '_' && std::strlen(n) == 8;
}

int estirestore(int i) {
    ab_est(1);
    HoldSlot h = holds[i];
    if (h.status != -1) {
        back_from_slot(i);
        int v = h.var[0] ? sysfindvar(h.var) : 0;
        if (v && typlist[v - 1] == KV_BYTE) {
            bool ok = true;
            for (int o = 1; o <= nobs && ok; ++o) {
                double x = korvu_data(v, o);
                ok = x == 0 || x == 1;
            }
            if (ok) marker_adopt(v);
        }
        lastest = h.status;
        lastest_op = h.op;
    }
    for (int k = 0; k < 10; ++k) dmzap(slottype(k, i));
    if (holds[i].autolevel) estrestore = 0;
    std::memset(&holds[i], 0, sizeof holds[i]);
    return 0;
}

int holdcmd() {
    int before = lastest, before_op = lastest_op;
    gettok(prsestd);
    std::string name = token;
    if (name.empty() || chkname(name.c_str(), 0)) return error(198);
    if (findhold(name.c_str()) >= 0) return error2(3, name.c_str());
    vable = ifable = oable = wgtable = 3;
    opable = 0;
    if (int rc = parse()) return rc;
    int copy = findopt("copy", 1, 0), restore = findopt("restore", 1, 0);
    int nullok = findopt("nullok", 1, 0), fromstore = findopt("estimates", 9, 0);
    int estsystem = findopt("estsystem", 9, 0);
    char var[64] = "";
    findargn("varname", 3, var, sizeof var, 1);
    if (int rc = chkopt()) return rc;
    if (!var[0]) snprintf(var, sizeof var, "%s", name.c_str());
    if (std::strlen(var) > 32) return error(198);
    {
        int v = korvu_findvar(var, 10, 1);
        if (v < 0) return -v;
    }
    if (!nullok && !lastest) return noest();
    if (restore && estrestore)
        return errtext(621, "already exist held estimates for automatic restore\n");
    int slot = -1;
    if (estsystem && !holds[300].status) slot = 300;
    for (int i = 0; slot < 0 && i < 300; ++i)
        if (!holds[i].status) slot = i;
    if (slot < 0) return error(1000);
    HoldSlot& h = holds[slot];
    const char* lab =
        fromstore ? "esample() from estimates store" : "esample() from _estimates hold";
    if (lastest) {
        if (estval_internal_to_dynamic()) return error(950);
        int m = esample_var();
        if (copy) {
            if (move_to_slot(slot, true)) {
                for (int k = 0; k < 10; ++k) dmzap(slottype(k, slot));
                return error(950);
            }
            if (m) {
                char tmp[16];
                mktmpvn(tmp);
                if (int rc = addvar(tmp, KV_BYTE)) {
                    for (int k = 0; k < 10; ++k) dmzap(slottype(k, slot));
                    return rc;
                }
                i_nvar = nvar;
                m = esample_var();
                for (int o = 1; o <= nobs; ++o) store(nvar, o, korvu_data(m, o));
                snprintf(varname(nvar), 33, "%s", var);
                putvarlab(nvar, lab);
            }
        } else {
            move_to_slot(slot, false);
            if (m) {
                snprintf(varname(m), 33, "%s", var);
                esamplename[0] = 0;
                putvarlab(m, lab);
            }
            estval_n = 0;
            lastest = lastest_op = 0;
        }
    }
    h.status = before ? before : -1;
    h.op = before_op;
    snprintf(h.name, sizeof h.name, "%s", name.c_str());
    snprintf(h.var, sizeof h.var, "%s", var);
    h.fromstore = static_cast<uint8_t>(fromstore);
    h.level = typelmac;
    if (restore) {
        h.autolevel = typelmac;
        estrestore = 1;
    }
    if (istmpname(h.name)) hastmp_estheld = 1;
    return 0;
}

} // namespace

int holdwords(const char* word) {
    zero_holds_once();
    if (cmdcmp(word, "hold", 4)) return holdcmd();
    if (cmdcmp(word, "unhold", 6)) {
        gettok(prsestd);
        std::string name = token;
        int i = findhold(name.c_str());
        if (i < 0) {
            errsay("estimates ");
            return error2(5, name.c_str());
        }
        gettok(prsestd);
        if (tokis(token, ",")) {
            gettok(prsestd);
            if (!cmdcmp(token, "not", 3)) return error(198);
            if (gettok(prsestd)[0]) return error(198);
            if (!holds[i].autolevel) {
                return errorf(198, "estimates %s not preserved with restore option\n",
                              name.c_str());
            }
            holds[i].autolevel = 0;
            estrestore = 0;
            return 0;
        }
        if (token[0]) return error(198);
        return estirestore(i);
    }
    if (cmdcmp(word, "drop", 4)) {
        std::vector<char> flag(NHOLD, 0);
        bool any = false;
        for (;;) {
            gettok(prsestd);
            if (!token[0]) break;
            any = true;
            if (tokis(token, "_all")) {
                for (int i = 0; i < NHOLD; ++i) flag[i] = holds[i].status != 0;
                continue;
            }
            int i = findhold(token);
            if (i < 0) {
                return errorf(111, "estimates %s not found\n", token);
            }
            flag[i] = 1;
        }
        if (!any) return error(198);
        for (int i = 0; i < NHOLD; ++i)
            if (flag[i]) dropslot(i);
        return 0;
    }
    if (cmdcmp(word, "dir", 3)) {
        vable = ifable = oable = wgtable = 3;
        opable = 0;
        if (int rc = parse()) return rc;
        int onlystore = findopt("estimates", 9, 0);
        if (int rc = chkopt()) return rc;
        retval_clear();
        std::string names, vars;
        for (int i = 0; i < NHOLD; ++i) {
            if (!holds[i].status || (onlystore && !holds[i].fromstore)) continue;
            c_outlev = 0;
            spoutf("%s\n", holds[i].name);
            if (names.size() + 34 < static_cast<size_t>(macrolen))
                names.append(names.empty() ? "" : " ").append(holds[i].name);
            if (vars.size() + 34 < static_cast<size_t>(macrolen))
                vars.append(vars.empty() ? "" : " ").append(holds[i].var);
        }
        retval_set_local("names", names.c_str());
        retval_set_local("varnames", vars.c_str());
        return 0;
    }
    if (cmdcmp(word, "clear", 5)) {
        if (int rc = gettok(prsestd)[0] ? error(198) : 0) return rc;
        zapesti();
        return 0;
    }
    return error(198);
}

void zapesti() {
    zero_holds_once();
    for (int i = 0; i < NHOLD; ++i)
        if (holds[i].status) dropslot(i);
    hastmp_estheld = 0;
}

int cleanesti_level(int32_t level) {
    if (!hastmp_estheld) return 0;
    bool left = false;
    for (int i = 0; i < NHOLD; ++i) {
        if (!holds[i].status || !istmpname(holds[i].name)) continue;
        if (holds[i].level >= level)
            dropslot(i);
        else
            left = true;
    }
    hastmp_estheld = left;
    return 0;
}

const char* estidir_one(int i) {
    if (i < 0 || i >= NHOLD || !holds[i].status) return "";
    return holds[i].name;
}

int estirestore_pending() {
    if (!estrestore) return 0;
    estrestore = 0;
    int best = -1;
    for (int i = 0; i < NHOLD; ++i)
        if (holds[i].status && holds[i].autolevel &&
            (best < 0 || holds[i].autolevel > holds[best].autolevel))
            best = i;
    return best < 0 ? 0 : estirestore(best);
}

// --- held returns ------------------------------------------------------------------------

namespace {

struct HRet {
    int32_t level;
};
HRet hret[10];

int hrettype(int k, int j) {
    static const int base[5] = {3453, 3443, 3463, 3473, 3483}; // 20 21 22 23 24
    return base[k] + j;
}

void drop_hret(void* item) {
    int j = dmtag(item);
    for (int k = 0; k < 5; ++k) dmzap(hrettype(k, j));
    dmrm(item);
}

} // namespace

int _returncmd(int) {
    gettok(prsestd);
    std::string w = token;
    const char* t = w.c_str();
    if (cmdcmp(t, "hold", 4)) {
        gettok(prsestd);
        std::string name = token;
        if (name.empty() || chkname(name.c_str(), 0)) return error(198);
        if (gettok(prsestd)[0]) return error(198);
        if (dmfind0(name.c_str(), DM_HELDRET)) {
            return errorf(110, "_return %s already exists\n", name.c_str());
        }
        bool used[10] = {};
        for (void* it = dmnext(nullptr, nullptr, DM_HELDRET, nullptr); it;
             it = dmnext(it, nullptr, DM_HELDRET, nullptr))
            if (dmtag(it) >= 0 && dmtag(it) < 10) used[dmtag(it)] = true;
        int j = 0;
        while (j < 10 && used[j]) ++j;
        if (j == 10) return errtext(1000, "too many _returns held\n");
        if (retval_internal_to_dynamic()) return error(950);
        if (!dmadd(name.c_str(), DM_HELDRET, j, 1)) return error(950);
        if (retval_flag & 2)
            for (int k = 0; k < 5; ++k) dmretypeall(RT_SCALAR + k, hrettype(k, j));
        retval_flag = 0;
        local_retval_n = 0;
        hret[j].level = typelmac;
        if (istmpname(name.c_str())) hastmp_hreturn = 1;
        return 0;
    }
    if (cmdcmp(t, "restore", 7)) {
        gettok(prsestd);
        std::string name = token;
        void* it = name.empty() ? nullptr : dmfind0(name.c_str(), DM_HELDRET);
        if (!it) {
            return errorf(111, "_return %s not found\n", name.c_str());
        }
        bool keep = false;
        gettok(prsestd);
        if (tokis(token, ",")) {
            gettok(prsestd);
            if (!cmdcmp(token, "hold", 4)) return error(198);
            keep = true;
            gettok(prsestd);
        }
        if (token[0]) return error(198);
        retval_clear();
        int j = dmtag(it);
        for (int k = 0; k < 5; ++k) {
            int from = hrettype(k, j);
            if (keep) {
                std::vector<void*> list;
                for (void* x = dmnext(nullptr, nullptr, from, nullptr); x;
                     x = dmnext(x, nullptr, from, nullptr))
                    list.push_back(x);
                for (auto p = list.rbegin(); p != list.rend(); ++p)
                    if (!dmsave(dmname(*p), RT_SCALAR + k, dmtag(*p), *p, dmsize(*p)))
                        return error(950);
            } else {
                dmretypeall(from, RT_SCALAR + k);
            }
        }
        if (!keep) dmrm(it);
        for (int k = 0; k < 3; ++k)
            if (dmnext(nullptr, nullptr, RT_SCALAR + k, nullptr)) retval_flag |= 2;
        return 0;
    }
    if (cmdcmp(t, "drop", 4)) {
        gettok(prsestd);
        std::string name = token;
        if (name.empty()) return error(198);
        if (gettok(prsestd)[0]) return error(198);
        if (name == "_all") {
            void* it = dmnext(nullptr, nullptr, DM_HELDRET, nullptr);
            while (it) {
                void* next = dmnext(it, nullptr, DM_HELDRET, nullptr);
                drop_hret(it);
                it = next;
            }
            return 0;
        }
        void* it = dmfind0(name.c_str(), DM_HELDRET);
        if (!it) {
            return errorf(111, "_return %s not found\n", name.c_str());
        }
        drop_hret(it);
        return 0;
    }
    if (cmdcmp(t, "dir", 3)) {
        if (gettok(prsestd)[0]) return error(198);
        std::vector<std::string> names;
        for (void* it = dmnext(nullptr, nullptr, DM_HELDRET, nullptr); it;
             it = dmnext(it, nullptr, DM_HELDRET, nullptr))
            names.push_back(dmname(it));
        c_outlev = 0;
        for (auto p = names.rbegin(); p != names.rend(); ++p) spoutf("%s\n", p->c_str());
        return 0;
    }
    return error(198);
}

int cleanhret_level(int32_t level) {
    void* it = dmnext(nullptr, nullptr, DM_HELDRET, nullptr);
    while (it) {
        void* next = dmnext(it, nullptr, DM_HELDRET, nullptr);
        int j = dmtag(it);
        if (istmpname(dmname(it)) && j >= 0 && j < 10 && hret[j].level >= level) drop_hret(it);
        it = next;
    }
    return 0;
}

} // namespace korvu
