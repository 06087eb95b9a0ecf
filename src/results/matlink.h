// What the result stores need from the matrix store: a dense double array
// with its row and column names. The matrix store fills these in; while a
// hook is null, the commands that need it say that matrices are not yet
// available.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace korvu {

struct DenseMat {
    int32_t rows = 0, cols = 0;
    std::vector<double> x; // row-major, rows * cols
    // Full names, "eq:name" or "name", time-series operators included.
    std::vector<std::string> rownames, colnames;
    bool symmetric_storage = false; // kept as a symmetric matrix, not a full one
    double& at(int i, int j) { return x[static_cast<size_t>(i) * cols + j]; }
    double at(int i, int j) const { return x[static_cast<size_t>(i) * cols + j]; }
};

struct MatLink {
    // Reads matrix `name` of dictionary type `type` (9 user matrices, 22 r,
    // 27 e, 5 the estimation record). 0, or 111 when absent (no message).
    int (*load)(const char* name, int type, DenseMat* out);
    // Writes (replacing) matrix `name` of type `type` with its names. 0 or 950.
    int (*save)(const char* name, int type, const DenseMat& m);
    // Removes matrix `name` of type `type` and its names.
    void (*drop)(const char* name, int type);
    // Rows and columns of a matrix item found in the dictionary: 0 or 1.
    int (*dims)(const void* item, int* rows, int* cols);
};
extern MatLink matlink;

} // namespace korvu
