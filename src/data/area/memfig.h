// The figures of `memory` and the table of `set memory`, `set maxvar` and
// `set matsize`.
#pragma once
#include <cstddef>
#include <cstdint>

namespace korvu {

// ---------------------------------------------------------------------------
// `memory` and the `set memory` table
// ---------------------------------------------------------------------------
struct MemoryFigures {
    // r() of `memory`
    double N_cur, N_curmax, k_cur, w_cur, M_total, M_data, M_dyn, size_ptr, k, width;
    double adosize, matsize, n_repart, n_shift, M_oh, M_matsize, M_dm;
    // the report
    uint64_t overhead, data, data_overhead, free, total; // details of set memory
    uint64_t maxvar_usage, matsize_usage, other, other_total, grand_total;
};
MemoryFigures memory_figures();
void memory_report(const MemoryFigures& f); // the printed report of `memory`
void memory_table();                        // "Current memory allocation"
// "%luM" for a whole number of megabytes, otherwise "%luk".
inline constexpr size_t MEMAMTLEN = 24; // format_mem_amt: "#M" or "#k"
char* format_mem_amt(uint64_t bytes, char* dst);
// "1,234,567"
char* commafy(uint64_t n, char* dst);
// The amount of `set memory [+|-]#[b|k|m|g]`: 0 with *out set, 198 for bad
// text, 912 when too large (or a negative relative result).
int memory_amount(const char* text, uint64_t current, uint64_t* out);
// Result of news_realloc as the return code of `set memory`.
int set_memory_rc(int realloc_rc);

} // namespace korvu
