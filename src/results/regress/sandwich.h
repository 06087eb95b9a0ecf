// The sandwich variance shared by the command `_robust` and the Lumo
// built-ins `_robust()` and `_svy()`: the score rows summed by primary
// sampling unit (an observation or a cluster), the middle matrix summed
// within strata, and V M V.
#pragma once
#include <string>
#include <vector>

#include "data/area/missing.h"

namespace korvu {

// One primary sampling unit: its summed score row, how many times it
// counts (a frequency weight without clusters), its stratum and the
// finite-population value of that stratum (misval for none).
struct SandPsu {
    std::vector<double> u;
    double m = 1;
    double fpc = misval;
    std::string stratum;
};

// The middle matrix M (p x p, by rows) from the units: without centring the
// sum of u u'; with centring, within each stratum h of n_h units, n_h /
// (n_h - 1) (1 - f_h) times the sum of the centred outer products, with f_h
// the sampling rate from the fpc (a rate at or below 1, else n_h over the
// stratum size). Gives 0, or the code with *msg the words (460 for a
// stratum of one unit, 198 for a bad fpc). *nstrata and *nunits count the
// strata and the units (their multiplicities summed).
int sandwich_meat(const std::vector<SandPsu>& psus, int p, bool centred, bool hasfpc,
                  std::vector<double>* M, int* nstrata, double* nunits, const char** msg);

// R = scale V M V, all p x p by rows; R symmetric.
void sandwich_vmv(const double* V, const std::vector<double>& M, int p, double scale, double* R);

} // namespace korvu
