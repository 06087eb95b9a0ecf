// The sandwich variance: the middle matrix by strata and V M V.
#include <map>
#include <utility>

#include "results/regress/sandwich.h"
#include "results/summarize.h"

namespace korvu {

int sandwich_meat(const std::vector<SandPsu>& psus, int p, bool centred, bool hasfpc,
                  std::vector<double>* Mout, int* nstrata, double* nunits, const char** msg) {
    struct Stratum {
        double n = 0, fpc = misval;
        std::vector<double> sum;
        std::vector<int> members;
    };
    std::map<std::string, Stratum> strata;
    for (int g = 0; g < static_cast<int>(psus.size()); ++g) {
        Stratum& s = strata[psus[g].stratum];
        if (s.sum.empty()) s.sum.assign(p, 0.0), s.fpc = hasfpc ? psus[g].fpc : misval;
        const double m = psus[g].m;
        s.n += m;
        for (int j = 0; j < p; ++j) s.sum[j] += m * psus[g].u[j];
        s.members.push_back(g);
    }
    std::vector<double> M(static_cast<size_t>(p) * p, 0.0), Me(M.size(), 0.0);
    double total = 0;
    for (auto& [name, s] : strata) {
        const double nh = s.n;
        total += nh;
        double fac = 1;
        if (centred) {
            if (nh < 2) {
                *msg = "stratum with only one PSU detected";
                return 460;
            }
            fac = nh / (nh - 1);
            if (hasfpc) {
                const double f = s.fpc;
                if (f < 0) {
                    *msg = "fpc must be >= 0";
                    return 198;
                }
                if (f > 1 && f < nh) {
                    *msg = "fpc must be >= the number of PSUs in each stratum";
                    return 198;
                }
                fac *= 1 - (f <= 1 ? f : nh / f);
            }
        }
        for (int g : s.members) {
            const double m = psus[g].m;
            for (int a = 0; a < p; ++a) {
                const double da = psus[g].u[a] - (centred ? s.sum[a] / nh : 0);
                for (int b = 0; b <= a; ++b) {
                    const double db = psus[g].u[b] - (centred ? s.sum[b] / nh : 0);
                    const size_t at = static_cast<size_t>(a) * p + b;
                    accumerr(&M[at], &Me[at], fac * m * da * db);
                }
            }
        }
    }
    for (int a = 0; a < p; ++a)
        for (int b = 0; b <= a; ++b) {
            const size_t at = static_cast<size_t>(a) * p + b;
            M[at] += Me[at];
            M[static_cast<size_t>(b) * p + a] = M[at];
        }
    *Mout = std::move(M);
    *nstrata = static_cast<int>(strata.size());
    *nunits = total;
    return 0;
}

void sandwich_vmv(const double* V, const std::vector<double>& M, int p, double scale, double* R) {
    const size_t P = static_cast<size_t>(p);
    std::vector<double> T(P * P);
    for (size_t i = 0; i < P; ++i)
        for (size_t j = 0; j < P; ++j) {
            double s = 0, e = 0;
            for (size_t q = 0; q < P; ++q) accumerr(&s, &e, V[i * P + q] * M[q * P + j]);
            T[i * P + j] = s + e;
        }
    for (size_t i = 0; i < P; ++i)
        for (size_t j = 0; j <= i; ++j) {
            double s = 0, e = 0;
            for (size_t q = 0; q < P; ++q) accumerr(&s, &e, T[i * P + q] * V[q * P + j]);
            const double v = scale < misval ? (s + e) * scale : 0;
            R[i * P + j] = R[j * P + i] = v;
        }
}

} // namespace korvu
