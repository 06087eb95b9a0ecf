// Helpers shared by the table commands of this folder.
#pragma once
#include <string>
#include <vector>

namespace korvu {

// The observations a table command works on: a plain range when there is
// neither an `if` condition nor weights, otherwise a list (1-based) with the
// weights (analytic weights scaled to sum to the count).
struct Sample {
    bool all = true;
    int i0 = 1, i1 = 0;
    bool weighted = false;
    std::vector<int> obs;
    std::vector<double> w;
    size_t size() const {
        return all ? (i1 >= i0 ? static_cast<size_t>(i1 - i0 + 1) : 0) : obs.size();
    }
    int at(size_t k) const { return all ? i0 + static_cast<int>(k) : obs[k]; }
    double wt(size_t k) const { return weighted ? w[k] : 1.0; }
};
// 0, 1 on a break, or the code of a bad weight (message printed).
int tab_sample(Sample* s);

// Stores a rows x cols matrix (row-major) under `name` in the store of
// dictionary type `type` (the r() matrices, or user matrices) with the given
// row and column names. 0 or 950.
int tab_postmat(const char* name, int type, const std::vector<double>& m, int rows, int cols,
                const std::vector<std::string>& rn, const std::vector<std::string>& cn);

// Text padded on the left (right-justified) or right to width w, cut to w.
std::string rjust(const std::string& s, int w);
std::string ljust(const std::string& s, int w);

// A line of markup at the text level, and one of plain result text.
void tab_txt(const std::string& s);
void tab_res(const std::string& s);

} // namespace korvu
