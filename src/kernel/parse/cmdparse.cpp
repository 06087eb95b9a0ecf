#include "kernel/parse/cmdparse.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

#include "data/expr/expr.h"
#include "data/select/generate.h"
#include "data/vars/varlist.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/loop.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "output/spout.h"

namespace korvu {

int32_t i_nvar = 0;
uint8_t wprogtype, ifable, oable, vable, opable, byable, wable, uable, wgtable, rcpable, allowskip,
    lvxtra, v_or_o_req, vexists, wgtallowt;
int32_t dynmattype = 5;
int32_t byvar = 0;

int32_t lnvar = 0, nblist = 0;
static int32_t varlist_storage[5001];
int32_t* varlist_vr = varlist_storage;
int32_t blist[5];
int32_t nobs1 = 1, nobs2 = 0, nobss1 = 1, nobss2 = 0;
uint8_t orange = 0, ifclause = 0, weclause = 0, wgtold = 0, vrange = 0;
int32_t wgttype = 0, origwgttype = 0;
std::string wgtexptext;
char filesp[FNLEN];
char esamplename[33] = "";

void cmdinit() {
    ifable = oable = vable = wprogtype = allowskip = lvxtra = v_or_o_req = 0;
    c_outlev = 0;
    opable = byable = wable = uable = wgtable = rcpable = wgtallowt = 3;
    vexists = 1;
    dynmattype = 5;
}

void cmdinit_plus_byvar() {
    cmdinit();
    byvar = 0;
}

void save_cmd_state(CmdState* r) {
    *r = CmdState{i_nvar,  wprogtype, vable,      oable,    ifable,     rcpable, wgtable,
                  uable,   wable,     byable,     opable,   v_or_o_req, lvxtra,  allowskip,
                  vexists, wgtallowt, dynmattype, c_outlev, byvar};
}

void restore_cmd_state(const CmdState* r) {
    i_nvar = r->i_nvar, wprogtype = r->wprogtype, vable = r->vable, oable = r->oable;
    ifable = r->ifable, rcpable = r->rcpable, wgtable = r->wgtable, uable = r->uable;
    wable = r->wable, byable = r->byable, opable = r->opable, v_or_o_req = r->v_or_o_req;
    lvxtra = r->lvxtra, allowskip = r->allowskip, vexists = r->vexists;
    wgtallowt = r->wgtallowt, dynmattype = r->dynmattype, c_outlev = r->c_outlev;
    byvar = r->byvar;
}

static constexpr const char* keyword[] = {"with", "using", "if", "in", "%", "=", ","};

bool iskey(const char* tok) {
    if (!tok[0]) return true;
    if (tokisstr(tok)) return false;
    for (const char* k : keyword)
        if (!strcmp(tok, k)) return true;
    return false;
}

bool iskeyorb(const char* tok) {
    return iskey(tok) || (tok[0] == '[');
}

int pfixeq() {
    TokPos at;
    stattok(&at);
    gettok(prsestd);
    bool keep = !token[0] || tokis(token, ",") || tokis(token, "=");
    resettok(&at);
    if (!keep) pushtok("=");
    return 0;
}

// One bound of an `in` range: f, l, a positive number, or a negative one
// counting from the end.
static int inbound(int32_t* out) {
    gettok(prsenum);
    int32_t top = oable == 2 ? 2147483646 : nobs;
    if (!tokisstr(token) && (tokis(token, "f") || tokis(token, "F"))) return *out = 1, 0;
    if (!tokisstr(token) && (tokis(token, "l") || tokis(token, "L"))) return *out = top, 0;
    double v;
    if (!tokisstr(token) && !cnvstoz(token, &v) && v == static_cast<int64_t>(v) && v != 0 &&
        v > -2147483647.0 && v < 2147483647.0) {
        if (v > 0) return *out = static_cast<int32_t>(v), 0;
        if (oable != 2) return *out = nobs + 1 + static_cast<int32_t>(v), 0;
    }
    return errorf(198, "'%s' invalid obs no\n", token);
}

static int readin() {
    int32_t a, b;
    if (int rc = inbound(&a)) return rc;
    b = a;
    TokPos at;
    stattok(&at);
    gettok(prsestd);
    if (tokis(token, "/")) {
        if (int rc = inbound(&b)) return rc;
    } else {
        resettok(&at);
    }
    if (a < 1 || b < a || (oable != 2 && b > nobs)) {
        return errtext(198, "Obs. nos. out of range\n");
    }
    nobs1 = a, nobs2 = b;
    return 0;
}

static int readweight() {
    gettok(prsestd);
    if (tokis(token, "]")) return 0;
    if (wgtable == 3) return notalow("weights");
    if (wgttype) {
        return errtext(198, "too many weights\n");
    }
    std::string kind = token;
    int32_t t = 0;
    const char* name = nullptr;
    if (cmdcmp(token, "weight", 1))
        t = -1;
    else if (cmdcmp(token, "cellsize", 4))
        t = WGT_AW, name = "aweight";
    else if (cmdcmp(token, "frequency", 4))
        t = WGT_FW, name = "fweight";
    else if (cmdcmp(token, "fweight", 2))
        t = WGT_FW, name = "fweight";
    else if (cmdcmp(token, "aweight", 2))
        t = WGT_AW, name = "aweight";
    else if (cmdcmp(token, "pweight", 2))
        t = WGT_PW, name = "pweight";
    else if (cmdcmp(token, "iweight", 2))
        t = WGT_IW, name = "iweight";
    else {
        return errorf(198, "%s unknown weight type\n", kind.c_str());
    }
    if (t > 0 && !(wgtallowt & t)) return notalow(name);
    wgttype = origwgttype = t > 0 ? t : 0;
    weclause = 1;
    if (gtokis('=')) return 198;
    const char* from = wheretok();
    if (int rc = compexp(&wepgm, 0, 1, 0)) return rc;
    if (gtokis(']')) return error(198);
    // the expression's text, for estimators that record it
    std::string_view txt(from, static_cast<size_t>(wheretok() - from));
    txt = txt.substr(0, txt.rfind(']'));
    while (!txt.empty() && txt.front() == ' ') txt.remove_prefix(1);
    while (!txt.empty() && txt.back() == ' ') txt.remove_suffix(1);
    wgtexptext.assign(txt);
    if (t < 0) wgttype = 0; // kind left open until wgtdflt
    return 0;
}

int parse1() {
    wgtold = 0, wgttype = 0, origwgttype = 0;
    wgtexptext.clear();
    // every message below raises the level to 3 by itself and puts the
    // caller's level back, so the handler's level is never left changed
    if (ifable == 2) ifable = 0;
    if (byvar == 0) {
        nobs1 = nobss1 = 1, nobs2 = nobss2 = nobs, orange = 0;
    } else {
        if (byable == 3) return error(190);
        orange = 1;
    }
    ifclause = weclause = vrange = 0;
    noptn = 0;
    if (oable == 2) nobs2 = 2147483646;

    if (vable != 3) {
        if (int rc = ssvlist(vexists ? prsestd2 : prsestd, !vexists)) return rc;
        if (lnvar)
            vrange = 1;
        else if (vable == 1)
            return required("varlist");
    }

    bool haveif = false, havein = false, haveweq = false;
    for (;;) {
        gettok(prsestd);
        if (!token[0]) break;
        if (tokisstr(token)) {
            ungettok();
            break;
        }
        if (tokis(token, "if")) {
            if (ifable == 3) return notalow("if");
            if (haveif) {
                if (lvxtra) break;
                return error(198);
            }
            haveif = true;
            ifclause = 1;
            int32_t saved = i_nvar;
            if (oable == 2) i_nvar = nvar;
            int rc = compexp(&ifpgm, 0, 0, ifable == 4);
            i_nvar = saved;
            if (rc) return rc;
        } else if (tokis(token, "in")) {
            if (oable == 3) return notalow("in range");
            if (byvar) {
                return errtext(190, "'in' may not be combined with 'by'\n");
            }
            if (havein) return error(198);
            havein = true;
            if (int rc = readin()) return rc;
            orange = 1;
        } else if (tokis(token, "using")) {
            if (uable == 3) return notalow("using");
            if (int rc = gettokfn(filesp, sizeof filesp)) {
                if (rc == 7197 && uable == 2 && (!token[0] || tokis(token, ","))) {
                    snprintf(filesp, sizeof filesp, " ");
                    if (token[0]) ungettok();
                } else {
                    return error(rc);
                }
            }
        } else if (tokis(token, "=")) {
            if (wable == 3 && wgtable == 3) return notalow("=exp");
            if (haveweq) return error(198);
            haveweq = true;
            if (wgtable != 3) wgtold = 1, wprogtype = 0;
            weclause = 1;
            if (int rc = compexp(&wepgm, wprogtype, 0, 0)) return rc;
        } else if (tokis(token, ",")) {
            if (int rc = proption()) return rc;
        } else if (tokis(token, "[")) {
            if (int rc = readweight()) return rc;
        } else {
            ungettok();
            break;
        }
    }
    if (oable == 2) oable = 0;
    if (uable == 2) uable = 1;
    if (oable == 1 && !havein) return required("in range");
    if (v_or_o_req && !havein && !lnvar && !ifclause) return required("varlist or in range");
    if (uable == 1 && !filesp[0]) return required("using");
    if (wable == 1 && !weclause) return required("=exp");
    gettok(prsestd);
    if (token[0] && !lvxtra) {
        return errorf(198, "'%s' invalid\n", tokisstr(token) ? token + 1 : token);
    }
    if (token[0]) ungettok();
    if (wgtold && wgtable != 3) {
        if (vernum >= 300) return error(198);
        if (!runprog) spoutlev(1, "(please avoid =exp old-style weight syntax)\n");
    }
    return 0;
}

int parse() {
    // later by-groups reuse what the first group read: the list, the compiled
    // expressions and the option table, whose entries are taken afresh
    if (byvar == 2) {
        resetopt();
        return 0;
    }
    zapexp(&wepgm);
    zapexp(&ifpgm);
    filesp[0] = 0;
    return parse1();
}

int parse_ifinopts() {
    uint8_t sv = vable;
    vable = 3;
    int rc = parse1();
    vable = sv;
    return rc;
}

int wgtdflt(int dflt) {
    if (byvar == 2 || wgttype) return 0;
    wgttype = dflt;
    // a program running quietly says nothing
    if (weclause && !wgtold && !(runprog && s_outlev > 1)) {
        spoutlevf(1, "(%s weights assumed)\n", wgtkeyword(dflt));
    }
    return 0;
}

} // namespace korvu
