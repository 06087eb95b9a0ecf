// The e store: scalars, macros and matrices of the last estimation, the
// estimation record, and the e(sample) marker variable.
#include <cmath>
#include <cstring>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/labels/label.h"
#include "data/vars/char.h"
#include "data/vars/vartab.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/cmdparse.h"
#include "output/spout.h"
#include "results/estore.h"
#include "results/stores.h"

namespace korvu {

MatLink matlink = {};

namespace {

int tablefind(const char* name) {
    for (int i = 0; i < estval_n; ++i)
        if (!std::strcmp(estval[i].name, name)) return i;
    return -1;
}

bool namefits(const char* name) {
    return name && *name && std::strlen(name) <= static_cast<size_t>(dm_namelen);
}

// S_E_ items of the ordinary types: globals, scalars, matrices with stripes.
void drop_se_items() {
    dmzap_prefix(DM_GMAC, "S_E_");
    dmzap_prefix(DM_SCALAR, "S_E_");
    void* it = dmnext(nullptr, nullptr, DM_MATRIX, nullptr);
    while (it) {
        void* next = dmnext(it, nullptr, DM_MATRIX, nullptr);
        if (!std::strncmp(dmname(it), "S_E_", 4)) {
            std::string n = dmname(it);
            dmrm(dmfind0(n.c_str(), DM_MATCOL));
            dmrm(dmfind0(n.c_str(), DM_MATROW));
            dmrm(it);
        }
        it = next;
    }
}

} // namespace

// --- the marker ------------------------------------------------------------------

int esample_var() {
    if (!esamplename[0]) return 0;
    int v = sysfindvar(esamplename);
    if (v < 1 || v > nvar) {
        esamplename[0] = 0;
        return 0;
    }
    return v;
}

void marker_remove() {
    int v = esample_var();
    if (!v) return;
    char_dropvar(varname(v));
    putvarlab(v, "");
    movevar(v, nvar);
    --nvar;
    i_nvar = nvar;
    esamplename[0] = 0;
}

int marker_adopt(int v) {
    int old = esample_var();
    if (old && old != v) {
        marker_remove();
        if (v > old) --v;
    }
    char_dropvar(varname(v));
    putvarlab(v, "");
    snprintf(varname(v), 33, "%s", ESAMPLE_NAME);
    snprintf(esamplename, sizeof esamplename, "%s", ESAMPLE_NAME);
    movevar(v, nvar);
    return 0;
}

int marker_new(int* out) {
    int old = esample_var();
    if (old) marker_remove();
    char tmp[16];
    mktmpvn(tmp);
    if (int rc = addvar(tmp, KV_BYTE)) return rc;
    i_nvar = nvar;
    snprintf(varname(nvar), 33, "%s", ESAMPLE_NAME);
    snprintf(esamplename, sizeof esamplename, "%s", ESAMPLE_NAME);
    *out = nvar;
    return 0;
}

// --- e -------------------------------------------------------------------------------

void estval_clear() {
    lastest = lastest_op = 0;
    estval_n = 0;
    dmzap(ET_RECORD);
    for (int t = ET_SCALAR; t <= ET_MATCOL; ++t) dmzap(t);
    drop_se_items();
}

int ab_est(int flag) {
    estval_clear();
    if (flag & 0xff) marker_remove();
    return stopflag ? 1 : 950;
}

void estval_partial_clear_for_huber() {
    estval_n = 0;
    dmzap(ET_SCALAR);
    dmzap(ET_MACRO);
}

void estval_partial_clear_for_post() {
    lastest = lastest_op = 0;
    dmzap(ET_RECORD);
}

int estval_set_scalar(const char* name, double value) {
    if (!namefits(name)) return 198;
    if (estval_n < RETVAL_MAX) {
        RetvalEntry& e = estval[estval_n++];
        snprintf(e.name, sizeof e.name, "%s", name);
        e.value = value;
        return 0;
    }
    return dmsave(name, ET_SCALAR, 8, &value, sizeof value) ? 0 : 950;
}

void estval_erase(const char* name) {
    int i = tablefind(name);
    if (i >= 0) {
        for (int j = i; j + 1 < estval_n; ++j) estval[j] = estval[j + 1];
        --estval_n;
        return;
    }
    if (!namefits(name)) return;
    dmrm(dmfind0(name, ET_SCALAR));
    dmrm(dmfind0(name, ET_MACRO));
    if (void* m = dmfind0(name, ET_MATRIX)) {
        dmrm(m);
        dmrm(dmfind0(name, ET_MATROW));
        dmrm(dmfind0(name, ET_MATCOL));
    }
}

int estval_reset_scalar(const char* name, double value) {
    estval_erase(name);
    return estval_set_scalar(name, value);
}

int estval_set_local(const char* name, const char* text) {
    return retmac_save(name, ET_MACRO, text);
}

int estval_reset_local(const char* name, const char* text) {
    estval_erase(name);
    return retmac_save(name, ET_MACRO, text);
}

int estval_get_internal_scalar(int i, char* name, double* value) {
    if (i < 0 || i >= estval_n) return 0;
    snprintf(name, 33, "%s", estval[i].name);
    *value = estval[i].value;
    return 1;
}

int estval_internal_to_dynamic() {
    for (int i = 0; i < estval_n; ++i) {
        dmrm(dmfind0(estval[i].name, ET_SCALAR));
        if (!dmsave(estval[i].name, ET_SCALAR, 8, &estval[i].value, 8)) {
            for (int j = 0; j < i; ++j) dmrm(dmfind0(estval[j].name, ET_SCALAR));
            return 950;
        }
    }
    estval_n = 0;
    return 0;
}

double estval_get_double(const char* name) {
    if (estval_find(name) != RF_SCALAR) return misval;
    return retval_get_as_double();
}

void estuseshort(const char* name, char* buf, size_t size) {
    if (!size) return;
    buf[0] = 0;
    if (!namefits(name)) return;
    const char* v = static_cast<const char*>(dmfind0(name, ET_MACRO));
    if (v) snprintf(buf, size, "%s", v);
}

// e() entries that old code reads from globals.
static void pair_use(const char* ename, const char* gname, char* buf, size_t size) {
    estuseshort(ename, buf, size);
    if (buf[0] || !size) return;
    const char* g = macptr(gname);
    if (g) snprintf(buf, size < 245 ? size : 245, "%s", g);
}
static int pair_save(const char* ename, const char* gname, const char* text) {
    if (int rc = estval_reset_local(ename, text)) return rc;
    return macresave(gname, text);
}
int estval_save_vcetype(const char* text) {
    return pair_save("vcetype", "S_E_vce", text);
}
int estval_resave_vcetype(const char* text) {
    return pair_save("vcetype", "S_E_vce", text);
}
void estval_use_vcetype(char* buf, size_t size) {
    pair_use("vcetype", "S_E_vce", buf, size);
}
int estval_save_clustvar(const char* text) {
    return pair_save("clustvar", "S_E_cvn", text);
}
void estval_use_clustvar(char* buf, size_t size) {
    pair_use("clustvar", "S_E_cvn", buf, size);
}
void estval_erase_clustvar() {
    estval_erase("clustvar");
    macerase("S_E_cvn");
}
int estval_save_N_clust(int n) {
    char t[24];
    snprintf(t, sizeof t, "%d", n);
    if (int rc = estval_reset_scalar("N_clust", n)) return rc;
    return macresave("S_E_cn", t);
}
int estval_use_N_clust() {
    double v = estval_get_double("N_clust");
    if (v < misval) return static_cast<int>(v);
    const char* g = macptr("S_E_cn");
    return g ? std::atoi(g) : 0;
}
void estval_erase_N_clust() {
    estval_erase("N_clust");
    macerase("S_E_cn");
}

bool hasmatforretval(int type, char which) {
    if (type != ET_MATRIX) return false;
    return dmfind0(which == 'b' ? "_b" : "VCE", ET_RECORD) != nullptr;
}

// --- the checks of a posted variance matrix -----------------------------------------

bool issymmatrix(const DenseMat& V) {
    if (V.rows != V.cols) return false;
    for (int i = 0; i < V.rows; ++i)
        for (int j = 0; j < i; ++j) {
            double a = V.at(i, j), b = V.at(j, i);
            if (a == b) continue;
            double scale = std::fmax(std::fabs(a), std::fabs(b));
            if (std::fabs(a - b) > 1e-10 * scale) return false;
        }
    return true;
}

int vcheck(DenseMat& V, const char* label) {
    if (V.rows != V.cols) return 503;
    if (!issymmatrix(V)) {
        errsay("Warning:  variance matrix is nonsymmetric or highly singular\n");
        std::fill(V.x.begin(), V.x.end(), 0.0);
    }
    for (double x : V.x)
        if (x >= misval || std::isnan(x)) {
            return errorf(504, "%s:  matrix has missing values\n", label);
        }
    int k = V.rows;
    for (int i = 0; i < k; ++i)
        for (int j = i + 1; j < k; ++j)
            if (V.at(i, j) != V.at(j, i)) V.at(i, j) = V.at(j, i) = (V.at(i, j) + V.at(j, i)) / 2;
    for (int i = 0; i < k; ++i)
        for (int j = i + 1; j < k; ++j) {
            double di = V.at(i, i), dj = V.at(j, j);
            if (di == 0 || dj == 0) continue;
            double r = di == dj ? V.at(i, j) / di : V.at(i, j) / std::sqrt(di * dj);
            if (r >= -1 && r <= 1) continue;
            if (r < -1 && r >= -(1 + 1e-10)) {
                V.at(i, j) = V.at(j, i) = -std::sqrt(di * dj);
            } else if (r > 1 && r <= 1 + 1e-10) {
                V.at(i, j) = V.at(j, i) = std::sqrt(di * dj);
            } else {
                return 506;
            }
        }
    return 0;
}

} // namespace korvu
