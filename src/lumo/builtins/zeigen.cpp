// The eigensystem of a complex square matrix for _eigen_la: the routine
// zgeevx, with the same outputs as for a real matrix.
#include <complex>
#include <vector>
#define lapack_complex_float std::complex<float>
#define lapack_complex_double std::complex<double>
#include <lapacke.h>

#include "lumo/builtins/bimore.h"

namespace korvu {

void bi_zeigen_la(int n, int todo, MObj* a, MObj* x, MObj* l, MObj* rc, bool nobalance) {
    if (!bi_square(a)) return;
    const int64_t m = 2 * m_nel(a);
    for (int64_t i = 0; i < m; i++)
        if (m_rel(a)[i] >= misval) return m_xeqerr(3351);
    const int N = a->rows;
    MObj* vx = bi_new(MT_COMPLEX, todo ? N : 0, todo ? N : 0);
    MObj* vl = bi_new(MT_COMPLEX, 1, N);
    MObj* vr = bi_new(MT_REAL, 1, N);
    auto freeall = [&]() {
        if (vx) mo_freemat(vx);
        if (vl) mo_freemat(vl);
        if (vr) mo_freemat(vr);
    };
    if (!vx || !vl || !vr) return freeall();
    lapack_int info = 0;
    if (N > 0) {
        using cd = std::complex<double>;
        const size_t NN = static_cast<size_t>(N) * N;
        const cd* src = reinterpret_cast<const cd*>(m_rel(a));
        std::vector<cd> w(src, src + NN), ev(N), lv(NN), rv(NN);
        std::vector<double> scale(N), rce(N), rcv(N);
        lapack_int ilo, ihi;
        double abnrm;
        info = LAPACKE_zgeevx(LAPACK_ROW_MAJOR, nobalance ? 'N' : 'B', 'V', 'V', 'E', N, w.data(),
                              N, ev.data(), lv.data(), N, rv.data(), N, &ilo, &ihi, scale.data(),
                              &abnrm, rce.data(), rcv.data());
        if (info < 0) {
            freeall();
            return m_xeqerr(3930);
        }
        if (info > 0) {
            for (int64_t i = 0; i < 2 * m_nel(vx); i++) m_rel(vx)[i] = misval;
            for (int64_t i = 0; i < 2 * N; i++) m_rel(vl)[i] = misval;
            for (int64_t i = 0; i < N; i++) m_rel(vr)[i] = misval;
        } else {
            for (int j = 0; j < N; j++) {
                m_rel(vl)[2 * j] = ev[j].real();
                m_rel(vl)[2 * j + 1] = ev[j].imag();
                m_rel(vr)[j] = rce[j];
            }
            if (todo) {
                const std::vector<cd>& v = todo == 2 ? lv : rv;
                for (size_t i = 0; i < NN; i++) {
                    m_rel(vx)[2 * i] = v[i].real();
                    m_rel(vx)[2 * i + 1] = v[i].imag();
                }
            }
        }
    }
    MObj* keep = vx;
    vx = nullptr;
    if (!bi_output(x, keep)) return freeall();
    keep = vl;
    vl = nullptr;
    if (!bi_output(l, keep)) return freeall();
    keep = vr;
    vr = nullptr;
    if (!bi_output(rc, keep)) return;
    bi_realres(n, info);
}

} // namespace korvu
