// Helpers shared by the table commands of this folder.
#pragma once
#include <string>
#include <vector>

namespace korvu {

// The selected observations (1-based) and, when weighted, their weights
// (analytic weights scaled to sum to the count). 0, 1 on a break, or the
// code of a bad weight (message printed).
int tab_sample(std::vector<int>& obs, std::vector<double>& w, bool* weighted);

// Stores a rows x cols matrix (row-major) under `name` in the store of
// dictionary type `type` (the r() matrices, or user matrices) with the given
// row and column names. 0 or 950.
int tab_postmat(const char* name, int type, const std::vector<double>& m, int rows, int cols,
                const std::vector<std::string>& rn, const std::vector<std::string>& cn);

// Text padded on the left (right-justified) or right to width w, cut to w.
std::string rjust(const std::string& s, int w);
std::string ljust(const std::string& s, int w);

} // namespace korvu
