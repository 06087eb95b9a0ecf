// Distribution functions, element by element under the colon rule, through
// the system's distribution library.
#include <cmath>

#include "lumo/builtins/bi.h"
#include "results/distrib/distrib.h"

namespace korvu {

#define BI_D1(nm, expr)                                                                            \
    static void bi_##nm(int n) {                                                                   \
        bi_mapn(n, 1, [](const double* v) { return expr; });                                       \
    }
#define BI_D2(nm, expr)                                                                            \
    static void bi_##nm(int n) {                                                                   \
        bi_mapn(n, 2, [](const double* v) { return expr; });                                       \
    }
#define BI_D3(nm, expr)                                                                            \
    static void bi_##nm(int n) {                                                                   \
        bi_mapn(n, 3, [](const double* v) { return expr; });                                       \
    }
#define BI_D4(nm, expr)                                                                            \
    static void bi_##nm(int n) {                                                                   \
        bi_mapn(n, 4, [](const double* v) { return expr; });                                       \
    }

BI_D1(normal, stnormal(v[0]))
BI_D1(invnormal, v[0] > 0 && v[0] < 1 ? inormal(v[0]) : misval)
BI_D1(lnnormal, stlnnormal(v[0]))
BI_D2(chi2, v[0] > 0 && v[1] >= 0 ? chi2cumm(v[0], v[1]) : (v[0] > 0 ? 0.0 : misval))
BI_D2(chi2tail, v[0] > 0 ? (v[1] >= 0 ? chi2tail(v[0], v[1]) : 1.0) : misval)
BI_D2(invchi2, v[0] > 0 && v[1] >= 0 && v[1] <= 1 ? invchi2cumm(v[0], v[1]) : misval)
BI_D2(invchi2tail, v[0] > 0 && v[1] >= 0 && v[1] <= 1 ? invchi2tail(v[0], v[1]) : misval)
BI_D2(ttail, v[0] > 0 ? ttail(v[0], v[1]) : misval)
BI_D2(invttail, v[0] > 0 && v[1] > 0 && v[1] < 1 ? invttail(v[0], v[1]) : misval)
BI_D2(tden, v[0] > 0 ? tden(v[0], v[1]) : misval)
BI_D2(gammap, v[0] > 0 && v[1] >= 0 ? gammap(v[0], v[1]) : misval)
BI_D2(invgammap, v[0] > 0 && v[1] >= 0 && v[1] <= 1 ? invgammap(v[0], v[1]) : misval)
BI_D2(dgammapda, v[0] > 0 && v[1] >= 0 ? gammap_da(v[0], v[1]) : misval)
BI_D2(dgammapdx, v[0] > 0 && v[1] >= 0 ? gammap_dx(v[0], v[1]) : misval)
BI_D2(dgammapdada, v[0] > 0 && v[1] >= 0 ? gammap_dada(v[0], v[1]) : misval)
BI_D2(dgammapdadx, v[0] > 0 && v[1] >= 0 ? gammap_dadx(v[0], v[1]) : misval)
BI_D2(dgammapdxdx, v[0] > 0 && v[1] >= 0 ? gammap_dxdx(v[0], v[1]) : misval)
BI_D3(F, v[0] > 0 && v[1] > 0 ? (v[2] >= 0 ? fcumm(v[0], v[1], v[2]) : 0.0) : misval)
BI_D3(Ftail, v[0] > 0 && v[1] > 0 ? (v[2] >= 0 ? ftail(v[0], v[1], v[2]) : 1.0) : misval)
BI_D3(Fden, v[0] > 0 && v[1] > 0 ? (v[2] >= 0 ? fden(v[0], v[1], v[2]) : 0.0) : misval)
BI_D3(invF, v[0] > 0 && v[1] > 0 && v[2] >= 0 && v[2] <= 1 ? invfcumm(v[0], v[1], v[2]) : misval)
BI_D3(invFtail,
      v[0] > 0 && v[1] > 0 && v[2] >= 0 && v[2] <= 1 ? invftail(v[0], v[1], v[2]) : misval)
BI_D3(ibeta, v[0] > 0 && v[1] > 0 ? (v[2] <= 0   ? 0.0
                                     : v[2] >= 1 ? 1.0
                                                 : ibeta(v[0], v[1], v[2]))
                                  : misval)
BI_D3(invibeta,
      v[0] > 0 && v[1] > 0 && v[2] >= 0 && v[2] <= 1 ? invibeta(v[0], v[1], v[2]) : misval)
BI_D3(betaden,
      v[0] > 0 && v[1] > 0 ? (v[2] < 0 || v[2] > 1 ? 0.0 : betaden(v[0], v[1], v[2])) : misval)
BI_D4(gammaden, v[0] > 0 && v[1] > 0 ? gammaden(v[0], v[1], v[2], v[3]) : misval)

// Binomial(n, k, p): the probability of k or more successes in n trials.
BI_D3(Binomial, v[0] >= 0 && v[0] == std::floor(v[0]) && v[2] >= 0 && v[2] <= 1
                    ? (v[1] <= 0     ? 1.0
                       : v[1] > v[0] ? 0.0
                                     : biprob(v[0], std::ceil(v[1]), v[2]))
                    : misval)
BI_D3(invbinomial, v[0] >= 0 && v[1] >= 0 && v[1] <= v[0] && v[2] > 0 && v[2] < 1
                       ? invbiprob(v[0], v[1], v[2])
                       : misval)

// Non-central and bivariate forms; the library gives missing outside the
// domain.
BI_D3(nchi2, nchi2(v[0], v[1], v[2]))
BI_D3(invnchi2, invnchi2(v[0], v[1], v[2]))
BI_D3(npnchi2, npnchi2(v[0], v[1], v[2]))
BI_D4(nibeta, nibeta(v[0], v[1], v[2], v[3]))
BI_D4(invnibeta, invnibeta(v[0], v[1], v[2], v[3]))
BI_D4(nbetaden, nbetaden(v[0], v[1], v[2], v[3]))
BI_D4(nFden, nFden(v[0], v[1], v[2], v[3]))
BI_D4(nFtail, nFtail(v[0], v[1], v[2], v[3]))
BI_D4(invnFtail, invnFtail(v[0], v[1], v[2], v[3]))
BI_D3(binormal, binormal(v[0], v[1], v[2]))

// normalden(z), normalden(x, s) = density of N(0, s^2), normalden(x, m, s).
static double nden(const double* v, int k) {
    const double x = v[0], m = k == 3 ? v[1] : 0, s = k == 1 ? 1 : v[k - 1];
    if (!(s > 0)) return misval;
    return normalden((x - m) / s) / s;
}
static double lnden(const double* v, int k) {
    const double x = v[0], m = k == 3 ? v[1] : 0, s = k == 1 ? 1 : v[k - 1];
    if (!(s > 0)) return misval;
    return lnnormalden((x - m) / s) - std::log(s);
}
static void bi_normalden(int n) {
    if (n == 1) return bi_mapn(n, 1, [](const double* v) { return nden(v, 1); });
    if (n == 2) return bi_mapn(n, 2, [](const double* v) { return nden(v, 2); });
    bi_mapn(n, 3, [](const double* v) { return nden(v, 3); });
}
static void bi_lnnormalden(int n) {
    if (n == 1) return bi_mapn(n, 1, [](const double* v) { return lnden(v, 1); });
    if (n == 2) return bi_mapn(n, 2, [](const double* v) { return lnden(v, 2); });
    bi_mapn(n, 3, [](const double* v) { return lnden(v, 3); });
}

void bi_link_dist(MBiFn* t) {
    t[bi_index("normal")] = bi_normal;
    t[bi_index("invnormal")] = bi_invnormal;
    t[bi_index("lnnormal")] = bi_lnnormal;
    t[bi_index("normalden")] = bi_normalden;
    t[bi_index("lnnormalden")] = bi_lnnormalden;
    t[bi_index("chi2")] = bi_chi2;
    t[bi_index("chi2tail")] = bi_chi2tail;
    t[bi_index("invchi2")] = bi_invchi2;
    t[bi_index("invchi2tail")] = bi_invchi2tail;
    t[bi_index("ttail")] = bi_ttail;
    t[bi_index("invttail")] = bi_invttail;
    t[bi_index("tden")] = bi_tden;
    t[bi_index("gammap")] = bi_gammap;
    t[bi_index("invgammap")] = bi_invgammap;
    t[bi_index("dgammapda")] = bi_dgammapda;
    t[bi_index("dgammapdx")] = bi_dgammapdx;
    t[bi_index("dgammapdada")] = bi_dgammapdada;
    t[bi_index("dgammapdadx")] = bi_dgammapdadx;
    t[bi_index("dgammapdxdx")] = bi_dgammapdxdx;
    t[bi_index("F")] = bi_F;
    t[bi_index("Ftail")] = bi_Ftail;
    t[bi_index("Fden")] = bi_Fden;
    t[bi_index("invF")] = bi_invF;
    t[bi_index("invFtail")] = bi_invFtail;
    t[bi_index("ibeta")] = bi_ibeta;
    t[bi_index("invibeta")] = bi_invibeta;
    t[bi_index("betaden")] = bi_betaden;
    t[bi_index("gammaden")] = bi_gammaden;
    t[bi_index("Binomial")] = bi_Binomial;
    t[bi_index("invbinomial")] = bi_invbinomial;
    t[bi_index("nchi2")] = bi_nchi2;
    t[bi_index("invnchi2")] = bi_invnchi2;
    t[bi_index("npnchi2")] = bi_npnchi2;
    t[bi_index("nibeta")] = bi_nibeta;
    t[bi_index("invnibeta")] = bi_invnibeta;
    t[bi_index("nbetaden")] = bi_nbetaden;
    t[bi_index("nFden")] = bi_nFden;
    t[bi_index("nFtail")] = bi_nFtail;
    t[bi_index("invnFtail")] = bi_invnFtail;
    t[bi_index("binormal")] = bi_binormal;
}

} // namespace korvu
